<#
.SYNOPSIS
Unpacks KelvaroTests-VERSION-x64.zip and runs all of its tests, on a machine that can be thrown away.
.DESCRIPTION
As administrator. The exit code is that of run-tests.cmd: 0 nothing failed, 1 something did, 2 the tests could not run.
.PARAMETER Package
What ./package.sh --tests has made: the archive, and SHA256SUMS.
.PARAMETER Folder
Is emptied first. Holds afterwards: machine.txt, output.txt (a line for each suite, and the total), and the unpacked
tests with run-tests.log (the output of what failed) and, in folders differing_pictures, the pictures that differ.
#>
param(
    [Parameter(Mandatory = $true)][string]$Package,
    [Parameter(Mandatory = $true)][string]$Folder
)
$ErrorActionPreference = 'Stop'
Set-StrictMode -Version 2.0
. "$PSScriptRoot\common.ps1"

if (Test-Path -LiteralPath $Folder) {
    Remove-Item -LiteralPath $Folder -Recurse -Force
}
$Folder = New-Folder $Folder
Show-Machine | Tee-Object -FilePath "$Folder\machine.txt"
$archive = Get-OnlyFile $Package 'KelvaroTests-*-x64.zip'
Assert-Sum $archive
Expand-Archive -LiteralPath $archive -DestinationPath $Folder
$runner = @(Get-ChildItem -Path "$Folder\KelvaroTests-*\run-tests.cmd")
if ($runner.Count -ne 1) {
    throw "$archive has $($runner.Count) files run-tests.cmd; there must be one."
}

# The standard error is not redirected: Windows PowerShell would make each of its lines an error of this script.
& $runner[0].FullName /yes | Tee-Object -FilePath "$Folder\output.txt"
$code = $LASTEXITCODE
switch ($code) {
    0 { 'Nothing failed.' }
    1 { 'Tests failed: their names stand above, their output in run-tests.log.' }
    default { "The tests could not run, or not to their end: exit code $code." }
}
exit $code
