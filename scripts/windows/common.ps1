# Dot-sourced by the scripts beside it. They are for Windows PowerShell 5.1 and PowerShell 7, and have ASCII characters
# only: 5.1 reads a file without a byte order mark in the ANSI code page.

Add-Type -Namespace Kelvaro -Name Native -MemberDefinition @'
[DllImport("user32.dll", CharSet = CharSet.Unicode)]
public static extern IntPtr FindWindow(string className, string title);
[DllImport("user32.dll", CharSet = CharSet.Unicode)]
public static extern bool PostMessage(IntPtr window, uint message, IntPtr wide, IntPtr narrow);
'@

# Prints what decides how windows, sound and paths behave on this machine, for whoever reads a failure.
function Show-Machine {
    $system = Get-CimInstance -ClassName Win32_OperatingSystem
    $user = New-Object Security.Principal.WindowsPrincipal ([Security.Principal.WindowsIdentity]::GetCurrent())
    $shell = @(Get-Process -Name explorer -ErrorAction SilentlyContinue)
    $sound = Get-Service -Name Audiosrv -ErrorAction SilentlyContinue
    Add-Type -AssemblyName System.Windows.Forms
    "Windows: $($system.Caption), $($system.Version)"
    "PowerShell: $($PSVersionTable.PSVersion), 64 bits: $([Environment]::Is64BitProcess)"
    "Administrator: $($user.IsInRole([Security.Principal.WindowsBuiltInRole]::Administrator))"
    "Session: $((Get-Process -Id $PID).SessionId), interactive: $([Environment]::UserInteractive)"
    "Screen: $([System.Windows.Forms.SystemInformation]::VirtualScreen)"
    "Shells (explorer.exe): $($shell.Count)"
    "Sound service: $(if ($sound) { $sound.Status } else { 'none' })"
    "Processors: $([Environment]::ProcessorCount)"
    "Temporary files: $env:TEMP"
}

# Makes the folder if it is not there, and returns its full path.
function New-Folder([string]$Folder) {
    $null = New-Item -ItemType Directory -Force -Path $Folder
    (Resolve-Path -LiteralPath $Folder).ProviderPath
}

# The path of the one file in the folder whose name matches the pattern.
function Get-OnlyFile([string]$Folder, [string]$Pattern) {
    $files = @(Get-ChildItem -LiteralPath $Folder -Filter $Pattern -File)
    if ($files.Count -ne 1) {
        throw "There are $($files.Count) files $Pattern in $Folder; there must be one."
    }
    $files[0].FullName
}

# Throws when the file is not the one that SHA256SUMS, beside it, names.
function Assert-Sum([string]$File) {
    $name = Split-Path -Leaf $File
    $sum = (Get-FileHash -LiteralPath $File -Algorithm SHA256).Hash
    $lines = @(Get-Content -LiteralPath (Join-Path (Split-Path -Parent $File) 'SHA256SUMS'))
    if ($lines -notcontains "$($sum.ToLowerInvariant())  $name") {
        throw "$name does not have the sum that SHA256SUMS names."
    }
}

# Runs KelvaroReport.exe, prints what it says, and returns that text. Throws unless its exit code is what its last line
# says: a machine on which not everything can be looked at, such as one without sound, is no fault.
function Invoke-Report([string]$Program, [string]$TextFile) {
    $report = Start-Process -FilePath $Program -NoNewWindow -Wait -PassThru -RedirectStandardOutput $TextFile
    $lines = @(Get-Content -LiteralPath $TextFile -Encoding UTF8)
    $lines | Out-Host
    if ($lines.Count -eq 0) {
        throw "$Program prints nothing; its exit code is $($report.ExitCode)."
    }
    $wanted = 'Everything could be looked at.'
    if ($report.ExitCode -eq 1) {
        $wanted = 'Not everything could be looked at: *'
    }
    if ($report.ExitCode -gt 1 -or $report.ExitCode -lt 0 -or $lines[-1] -notlike $wanted) {
        throw "$Program ends with code $($report.ExitCode) and the line: $($lines[-1])"
    }
    $lines -join "`n"
}

function Get-KelvaroWindow {
    [Kelvaro.Native]::FindWindow('PanelixWindow', 'Kelvaro')
}

# Starts Kelvaro.exe and returns its process when its window is there and some samples have been taken.
function Start-Kelvaro([string]$Program) {
    $process = Start-Process -FilePath $Program -PassThru
    # Reading the handle keeps it open: without it the exit code is not known after the end.
    $null = $process.Handle
    $patience = (Get-Date).AddSeconds(60)
    while ((Get-KelvaroWindow) -eq [IntPtr]::Zero -and -not $process.HasExited) {
        if ((Get-Date) -gt $patience) {
            Stop-Process -InputObject $process -Force
            throw "$Program has no window after 60 s."
        }
        Start-Sleep -Milliseconds 100
    }
    if ($process.WaitForExit(3000)) {
        throw "$Program ends by itself, with code $($process.ExitCode)."
    }
    $process
}

# Throws unless the process ends soon, with code 0. It has been told to.
function Wait-KelvaroEnd($Process) {
    if (-not $Process.WaitForExit(30000)) {
        Stop-Process -InputObject $Process -Force
        throw 'Kelvaro.exe still runs 30 s after it was told to end.'
    }
    if ($Process.ExitCode -ne 0) {
        throw "Kelvaro.exe ends with code $($Process.ExitCode)."
    }
}
