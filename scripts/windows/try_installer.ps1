<#
.SYNOPSIS
Installs Kelvaro silently, runs what is installed, uninstalls it, and compares the machine before and after.
.DESCRIPTION
As administrator, on a machine that can be thrown away and that Kelvaro is not installed on. Does so twice: into the
usual folder, and by /D= into one with blanks in its name. The exit code is 0 when everything is right.
.PARAMETER Package
What ./package.sh has made: the installer, the portable archive, and SHA256SUMS.
.PARAMETER Results
Holds afterwards, for each of the two: what the report said, and what the machine held before, with Kelvaro, and after.
#>
param(
    [Parameter(Mandatory = $true)][string]$Package,
    [Parameter(Mandatory = $true)][string]$Results
)
$ErrorActionPreference = 'Stop'
Set-StrictMode -Version 2.0
. "$PSScriptRoot\common.ps1"

$uninstallKey = 'Software\Microsoft\Windows\CurrentVersion\Uninstall'
$runKey = 'Software\Microsoft\Windows\CurrentVersion\Run'
$dumpsKey = 'Software\Microsoft\Windows\Windows Error Reporting\LocalDumps'

# A line for the key, and for all that is in it and below.
function Get-KeyLines($Key, [string]$Name) {
    "key $Name"
    foreach ($value in $Key.GetValueNames() | Sort-Object) {
        $data = $Key.GetValue($value, $null, 'DoNotExpandEnvironmentNames') -join ' '
        "value $Name\$value = $($Key.GetValueKind($value)) $data"
    }
    foreach ($subkey in $Key.GetSubKeyNames() | Sort-Object) {
        $opened = $Key.OpenSubKey($subkey)
        Get-KeyLines $opened "$Name\$subkey"
        $opened.Close()
    }
}

# Those of both registries, the 64-bit and the 32-bit programs' one. Of other programs' uninstall keys the names only:
# some of these programs renew themselves at any time.
function Get-RegistryLines {
    foreach ($hive in 'LocalMachine', 'CurrentUser') {
        foreach ($view in 'Registry64', 'Registry32') {
            $root = [Microsoft.Win32.RegistryKey]::OpenBaseKey($hive, $view)
            foreach ($path in 'Software\Kelvaro', $runKey, $dumpsKey, "$uninstallKey\Kelvaro") {
                $key = $root.OpenSubKey($path)
                if ($null -ne $key) {
                    Get-KeyLines $key "$hive $view $path"
                    $key.Close()
                }
            }
            $key = $root.OpenSubKey($uninstallKey)
            if ($null -ne $key) {
                $key.GetSubKeyNames() | Sort-Object | ForEach-Object { "key $hive $view $uninstallKey\$_" }
                $key.Close()
            }
            $root.Close()
        }
    }
}

# What is in a folder that the system knows by this name; nothing when this user does not have it.
function Get-Entries([string]$Place, [switch]$Recurse) {
    $folder = [Environment]::GetFolderPath($Place)
    if ($folder) {
        Get-ChildItem -LiteralPath $folder -Force -Recurse:$Recurse
    }
}

# The names in the folders that programs are put into and on the desktops, and everything in the Start menus and in
# folders of Kelvaro's.
function Get-FileLines {
    foreach ($place in 'ProgramFiles', 'ProgramFilesX86', 'CommonDesktopDirectory', 'DesktopDirectory') {
        foreach ($entry in Get-Entries $place) {
            "file $($entry.FullName)"
            if ($entry.PSIsContainer -and $entry.Name -like '*Kelvaro*') {
                Get-ChildItem -LiteralPath $entry.FullName -Force -Recurse | ForEach-Object { "file $($_.FullName)" }
            }
        }
    }
    foreach ($place in 'CommonPrograms', 'Programs') {
        Get-Entries $place -Recurse | ForEach-Object { "file $($_.FullName)" }
    }
}

# What an installation can leave on the machine, one line for each key, value, file and folder; also as a text file.
function Get-Snapshot([string]$File) {
    $lines = @(Get-RegistryLines) + @(Get-FileLines)
    Set-Content -LiteralPath $File -Value $lines -Encoding UTF8
    $lines
}

function Assert-Line([string[]]$Lines, [string]$Wanted) {
    if ($Lines -cnotcontains $Wanted) {
        throw "The installation lacks this: $Wanted"
    }
}

# What the shortcut of this name in the Start menu starts.
function Get-Target([string]$Name) {
    $menu = [Environment]::GetFolderPath('CommonPrograms')
    (New-Object -ComObject WScript.Shell).CreateShortcut("$menu\Kelvaro\$Name.lnk").TargetPath
}

function Assert-Installed([string[]]$Lines, [string]$Folder) {
    $ours = "LocalMachine Registry64 $uninstallKey\Kelvaro"
    Assert-Line $Lines "value LocalMachine Registry64 Software\Kelvaro\InstallDir = String $Folder"
    Assert-Line $Lines "value $ours\DisplayName = String Kelvaro"
    Assert-Line $Lines "value $ours\DisplayVersion = String $version"
    Assert-Line $Lines "value $ours\InstallLocation = String $Folder"
    Assert-Line $Lines "key LocalMachine Registry64 $dumpsKey\Kelvaro.exe"
    if ((Get-Target 'Kelvaro') -ne "$Folder\Kelvaro.exe") {
        throw "The shortcut in the Start menu starts '$(Get-Target 'Kelvaro')'."
    }
    if ((Get-Target 'Kelvaro report') -ne "$Folder\KelvaroReport.exe") {
        throw "The report's shortcut in the Start menu starts '$(Get-Target 'Kelvaro report')'."
    }
    # The files are those of the portable archive, and the uninstaller.
    Assert-Line $Lines "file $Folder\Uninstall.exe"
    $portable = @(Get-ChildItem -LiteralPath "$Results\portable\Kelvaro-$version" -File)
    $installed = @(Get-ChildItem -LiteralPath $Folder -Force -Recurse)
    if ($installed.Count -ne $portable.Count + 1) {
        throw "There are $($installed.Count) files in $Folder, and $($portable.Count) in the portable archive."
    }
    foreach ($file in $portable) {
        $sum = (Get-FileHash -LiteralPath $file.FullName).Hash
        if ((Get-FileHash -LiteralPath "$Folder\$($file.Name)").Hash -ne $sum) {
            throw "$($file.Name) is installed with other contents than those of the portable archive."
        }
    }
}

# As Windows does it, by the command that is registered. The uninstaller goes on in a copy of itself.
function Invoke-Uninstaller([string]$Folder) {
    $command = (Get-ItemProperty -LiteralPath "HKLM:\$uninstallKey\Kelvaro").QuietUninstallString
    if ($command -ne "`"$Folder\Uninstall.exe`" /S") {
        throw "The command that uninstalls silently is: $command"
    }
    Start-Process -FilePath "$Folder\Uninstall.exe" -ArgumentList '/S' -Wait
    $patience = (Get-Date).AddSeconds(60)
    while ((Test-Path -LiteralPath $Folder) -and (Get-Date) -lt $patience) {
        Start-Sleep -Milliseconds 200
    }
}

# The switches are passed on as they are: /D= takes the rest of the line, blanks included and without quotes.
function Test-Installation([string]$Name, [string]$Switches, [string]$Folder) {
    "== ${Name}: $Switches"
    $before = @(Get-Snapshot "$Results\$Name-before.txt")
    $installer = Start-Process -FilePath $setup -ArgumentList $Switches -Wait -PassThru
    if ($installer.ExitCode -ne 0) {
        throw "The installer ends with code $($installer.ExitCode)."
    }
    # A start entry of the user's own, which has to go as well.
    Set-ItemProperty -LiteralPath "HKCU:\$runKey" -Name Kelvaro -Value "`"$Folder\Kelvaro.exe`" -delay15"
    $installed = @(Get-Snapshot "$Results\$Name-installed.txt")
    Assert-Installed $installed $Folder
    $report = Invoke-Report "$Folder\KelvaroReport.exe" "$Results\$Name-report.txt"
    if (-not $report.Contains($version)) {
        throw "The report does not name version $version."
    }
    # In desktop mode, the uninstaller ends it.
    $kelvaro = Start-Kelvaro "$Folder\Kelvaro.exe"
    Invoke-Uninstaller $Folder
    Wait-KelvaroEnd $kelvaro
    $after = @(Get-Snapshot "$Results\$Name-after.txt")
    $differences = @(Compare-Object -ReferenceObject $before -DifferenceObject $after -CaseSensitive)
    foreach ($difference in $differences) {
        "$($difference.SideIndicator) $($difference.InputObject)"
    }
    if ($differences.Count -ne 0) {
        throw "$($differences.Count) things are not what they were before (=> new, <= gone)."
    }
    "Nothing is left: $($after.Count) keys, values and files are what they were"
}

if (-not [Environment]::Is64BitProcess) {
    throw 'A 32-bit PowerShell sees other folders than the installer.'
}
if (Test-Path -LiteralPath "HKLM:\$uninstallKey\Kelvaro") {
    throw 'Kelvaro is installed already: uninstall it first.'
}
$Results = New-Folder $Results
Show-Machine
$setup = Get-OnlyFile $Package 'KelvaroSetup-*-x64.exe'
Assert-Sum $setup
$version = (Split-Path -Leaf $setup) -replace '^KelvaroSetup-(.*)-x64\.exe$', '$1'
$archive = "$(Split-Path -Parent $setup)\Kelvaro-$version-x64.zip"
Assert-Sum $archive
Expand-Archive -LiteralPath $archive -DestinationPath "$Results\portable" -Force

# A new user's registry may lack this key.
if (-not (Test-Path -LiteralPath "HKCU:\$runKey")) {
    $null = New-Item -Path "HKCU:\$runKey"
}
$programs = [Environment]::GetFolderPath('ProgramFiles')
Test-Installation 'usual' '/S' "$programs\Kelvaro"
Test-Installation 'elsewhere' "/S /D=$programs\Kelvaro in another folder" "$programs\Kelvaro in another folder"
'Everything is right.'
exit 0
