<#
.SYNOPSIS
Builds the preset windows with the MinGW-w64, CMake and Ninja of this machine, and starts what was built.
.DESCRIPTION
The exit code is 0 when everything is right.
.PARAMETER Results
Holds afterwards what KelvaroReport.exe said.
#>
param(
    [Parameter(Mandatory = $true)][string]$Results
)
$ErrorActionPreference = 'Stop'
Set-StrictMode -Version 2.0
. "$PSScriptRoot\common.ps1"

# Runs a program of the PATH; throws when it fails.
function Invoke-Tool([string]$Name, [string[]]$Arguments) {
    & $Name $Arguments | Out-Host
    if ($LASTEXITCODE -ne 0) {
        throw "$Name $Arguments ends with code $LASTEXITCODE."
    }
}

$Results = New-Folder $Results
Show-Machine | Tee-Object -FilePath "$Results\machine.txt"
# Hosted machines have another compiler in the PATH as well.
if (Test-Path -LiteralPath 'C:\mingw64\bin\g++.exe') {
    $env:Path = "C:\mingw64\bin;$env:Path"
}
foreach ($tool in 'cmake', 'ninja', 'g++', 'windres') {
    $found = Get-Command -Name $tool -CommandType Application -ErrorAction SilentlyContinue | Select-Object -First 1
    if ($null -eq $found) {
        throw "There is no $tool in the PATH."
    }
    "${tool}: $($found.Source)"
    Invoke-Tool $tool @('--version')
}
$target = & g++ -dumpmachine
if ($target -ne 'x86_64-w64-mingw32') {
    throw "The compiler's target is $target and not x86_64-w64-mingw32."
}

Push-Location (Join-Path $PSScriptRoot '..\..')
Invoke-Tool cmake @('--preset', 'windows')
Invoke-Tool cmake @('--build', '--preset', 'windows')
$output = (Resolve-Path -LiteralPath 'out\release').ProviderPath
Pop-Location

# Without the compiler's folder: the programs must not need its libraries.
$env:Path = [Environment]::SystemDirectory
$null = Invoke-Report "$output\KelvaroReport.exe" "$Results\report.txt"
$kelvaro = Start-Kelvaro "$output\Kelvaro.exe"
# WM_COMMAND with the command of Exit in the icon's menu; see framework/core/command_codes.h.
if (-not [Kelvaro.Native]::PostMessage((Get-KelvaroWindow), 0x0111, [IntPtr]0x8003, [IntPtr]::Zero)) {
    throw 'Kelvaro.exe cannot be told to end.'
}
Wait-KelvaroEnd $kelvaro
'Everything is right.'
exit 0
