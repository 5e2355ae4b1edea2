@echo off
rem Runs all tests of Kelvaro; run-tests.cmd /help explains.
setlocal
"%~dp0build\release\tests\bundle\run_tests.exe" /log "%~dp0run-tests.log" %*
set code=%errorlevel%
rem Started by a click, the window would close before anybody has read it.
if "%~1"=="" pause
exit /b %code%
