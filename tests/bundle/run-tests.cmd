@echo off
rem Runs all tests of Kelvaro; run-tests.cmd /help explains.
"%~dp0build\release\tests\bundle\run_tests.exe" /log "%~dp0run-tests.log" %*
