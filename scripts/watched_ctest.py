#!/usr/bin/env python3
"""Runs CTest, and keeps what a test hangs in that is about to run out of time.

Usage: scripts/watched_ctest.py BUILD-FOLDER CTEST-OPTION...

Shortly before a program of BUILD-FOLDER/test_programs.txt reaches its TIMEOUT, where CTest ends it, a file in
out/timeouts/ says what it hangs in: who holds its output open, what runs in the same Wine prefix, and the stacks of all
threads of these, by gdb or eu-stack where there is one, and by winedbg. They are looked at and go on. The exit code is
CTest's.

KELVARO_TIMEOUTS         another folder than out/timeouts
KELVARO_TIMEOUT_MARGIN   seconds before the TIMEOUT, in place of 30
"""

import bisect
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WINE = ROOT / "scripts" / "wine.sh"
MARGIN_S = float(os.environ.get("KELVARO_TIMEOUT_MARGIN", "30"))
PERIOD_S = min(5.0, MARGIN_S / 5)
DEBUGGER_LIMIT_S = 10
# At most so many processes are looked at by a debugger: CTest does not wait.
MOST_STACKS = 6
PROC = Path("/proc")
# Wine's own, which serve all tests.
SYSTEM = {
    "explorer.exe",
    "plugplay.exe",
    "rpcss.exe",
    "services.exe",
    "svchost.exe",
    "wine_session.exe",
    "winedevice.exe",
    "wineserver",
    "wineserver64",
}


def read_limits(build):
    """Seconds that each test program may run, by its name."""
    limits = {}
    for line in (build / "test_programs.txt").read_text().splitlines():
        path, _, *properties = line.split("|")
        values = [value for name, value in zip(properties[::2], properties[1::2]) if name == "TIMEOUT"]
        limits[os.path.basename(path)] = float(values[-1])
    return limits


class Process:
    """One of this user's processes, as /proc shows it. Everything is empty once it is gone."""

    def __init__(self, number):
        self.number = number
        self.folder = PROC / str(number)

    def text(self, name):
        try:
            return (self.folder / name).read_bytes().decode(errors="replace")
        except OSError:
            return ""

    def arguments(self):
        return self.text("cmdline").rstrip("\0").split("\0")

    def program(self):
        """The name of the program's file; Wine's processes have its path, as Windows or this system writes it."""
        return re.split(r"[/\\]", self.arguments()[0])[-1]

    def handles(self):
        """What is open, by number."""
        try:
            return {int(handle): os.readlink(self.folder / "fd" / handle) for handle in os.listdir(self.folder / "fd")}
        except OSError:
            return {}

    def parent(self):
        fields = self.text("stat").rpartition(")")[2].split()
        return int(fields[1]) if fields else 0

    def is_in_prefix(self, prefix):
        try:
            # Not Wine's server: it runs as long as anything does.
            wine = re.search(r"/wine(64)?(-preloader)?$", os.readlink(self.folder / "exe"))
        except OSError:
            return False
        return wine is not None and f"WINEPREFIX={prefix}" in self.text("environ").split("\0")


def own_processes():
    user = os.getuid()
    for entry in PROC.iterdir():
        try:
            if entry.name.isdigit() and entry.stat().st_uid == user:
                yield Process(int(entry.name))
        except OSError:
            pass


def output_pipes(ctest):
    """The pipes that CTest reads: each running test has one."""
    pipes = set()
    for handle, target in ctest.handles().items():
        flags = re.search(r"^flags:\s*(\d+)", ctest.text(f"fdinfo/{handle}"), re.MULTILINE)
        if handle > 2 and target.startswith("pipe:") and flags and int(flags[1], 8) & os.O_ACCMODE == os.O_RDONLY:
            pipes.add(target)
    return pipes


def holders_of(pipe, ctest):
    return [
        process
        for process in own_processes()
        if process.number not in (ctest.number, os.getpid()) and pipe in process.handles().values()
    ]


def run_debugger(command):
    try:
        done = subprocess.run(
            command,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            timeout=DEBUGGER_LIMIT_S,
            # No server is asked for symbols.
            env=os.environ | {"DEBUGINFOD_URLS": ""},
        )
        return done.stdout.decode(errors="replace")
    except (OSError, subprocess.TimeoutExpired) as error:
        return f"{error}\n"


def stacks_of(process):
    if shutil.which("gdb"):
        return run_debugger(
            ["gdb", "-nx", "-batch", "-p", str(process.number), "-ex", "thread apply all backtrace 40"]
        )
    if shutil.which("eu-stack"):
        return run_debugger(["eu-stack", "-p", str(process.number)])
    return "no stacks of the host's functions: neither gdb nor eu-stack is installed\n"


def functions_of(process):
    """Addresses and names of a Windows program's functions, the lowest first. What ships has them in another file."""
    shipped = ROOT / "out" / "release" / "symbols" / f"{process.program()}.debug"
    program = Path(process.arguments()[0].replace("\\", "/").removeprefix("Z:"))
    for file in (shipped, program):
        if file.is_file():
            lines = run_debugger(["x86_64-w64-mingw32-nm", "-C", "-n", str(file)]).splitlines()
            fields = [line.split(maxsplit=2) for line in lines]
            return [(int(field[0], 16), field[2]) for field in fields if len(field) == 3 and field[1] in "tT"]
    return []


def with_names(backtrace, functions):
    """winedbg knows no names in the programs that the tests start: they have no lines."""
    lines = []
    for line in backtrace.splitlines():
        frame = re.match(r"^(?:=>| +)\d+ 0x([0-9a-f]+) in (\S+) \(\+0x[0-9a-f]+\)", line)
        if frame and functions.get(frame[2]):
            known = functions[frame[2]]
            after = bisect.bisect_right(known, int(frame[1], 16), key=lambda function: function[0])
            line += f"  {known[max(after - 1, 0)][1]}"
        lines.append(line)
    return "\n".join(lines) + "\n"


def wine_stacks_of(suspects, folder):
    """The stacks of all threads of these Windows programs: the host's debuggers do not see them. Wine has numbers of
    its own for processes and threads, so what runs the same program is in it as well."""
    functions = {p.program().removesuffix(".exe"): functions_of(p) for p in suspects}
    command_file = folder / "winedbg.txt"
    commands = {}
    backtraces = None
    for line in run_debugger([WINE, "winedbg", "--command", "info threads"]).splitlines():
        process = re.match(r"^([0-9a-f]{8}) (\S+)\.exe$", line)
        thread = re.match(r"^\s+([0-9a-f]{8})\s", line)
        if process:
            backtraces = commands.setdefault(process[1], []) if process[2] in functions else None
        elif thread and backtraces is not None:
            backtraces.append(f"bt 0x{thread[1]}")
    text = ""
    for number, backtraces in commands.items():
        command_file.write_text("\n".join([f"attach 0x{number}", *backtraces, "detach", "quit", ""]))
        windows_path = "Z:" + str(command_file).replace("/", "\\")
        backtrace = run_debugger([WINE, "winedbg", "--file", windows_path])
        text += f"Wine's process {number}\n{with_names(backtrace, functions)}"
    command_file.unlink(missing_ok=True)
    return text


def describe(process):
    handles = process.handles()
    lines = [
        f"{process.number}  parent {process.parent()}  {' '.join(process.arguments())}",
        *(f"    handle {handle}: {handles[handle]}" for handle in sorted(handles) if handle <= 2),
    ]
    try:
        tasks = sorted(os.listdir(process.folder / "task"))
    except OSError:
        tasks = []
    for task in tasks:
        state = re.search(r"^State:\s*(.*)", process.text(f"task/{task}/status"), re.MULTILINE)
        lines.append(
            f"    thread {task} {process.text(f'task/{task}/comm').strip()}: {state[1] if state else 'gone'}, "
            f"waits in {process.text(f'task/{task}/wchan')}"
        )
    return "\n".join(lines) + "\n"


def report(file, age, limit, holders, other_tests):
    """Writes what is known, the quickest first: CTest ends the test when its time is over."""
    prefix = os.environ.get("WINEPREFIX", "")
    numbers = {process.number for process in holders}
    in_prefix = [p for p in own_processes() if p.is_in_prefix(prefix) and p.number not in numbers | other_tests]
    children = [p for p in own_processes() if p.parent() in numbers and p.number not in numbers]
    with open(file, "w", encoding="utf-8") as out:
        print(f"Running for {age:.0f} s of {limit:.0f} s\n\nWho holds its output open", file=out)
        for process in holders:
            print(describe(process), file=out)
        print("Their children on the host", file=out)
        for process in children:
            print(describe(process), file=out)
        print("What else runs in the Wine prefix, but for other tests: Wine's own programs and children of tests", file=out)
        for process in in_prefix:
            print(describe(process), file=out)
        out.flush()
        suspects = [p for p in holders + children + in_prefix if p.program() not in SYSTEM][:MOST_STACKS]
        for process in suspects:
            print(f"Stacks of {process.number} {process.program()}\n{stacks_of(process)}", file=out, flush=True)
        windows_programs = [p for p in suspects if p.program().endswith(".exe")]
        if windows_programs:
            print(f"Stacks as Wine sees them\n{wine_stacks_of(windows_programs, file.parent)}", file=out)


class Watch:
    """Remembers how long each test runs."""

    def __init__(self, build, ctest, folder):
        self.limits = read_limits(build)
        self.ctest = ctest
        self.folder = folder
        self.since = {}
        self.reported = set()

    def look(self):
        now = time.monotonic()
        pipes = output_pipes(self.ctest)
        self.since = {pipe: self.since.get(pipe, now) for pipe in pipes}
        soon = min(self.limits.values()) - MARGIN_S
        for pipe in pipes - self.reported:
            age = now - self.since[pipe]
            if age >= soon:
                self.look_at(pipe, age)

    def look_at(self, pipe, age):
        holders = holders_of(pipe, self.ctest)
        # A program that is gone may have left a child that holds its output.
        limit = max((self.limits[p.program()] for p in holders if p.program() in self.limits),
                    default=min(self.limits.values()))
        if not holders or age < limit - MARGIN_S:
            return
        self.reported.add(pipe)
        others = {
            process.number
            for process in own_processes()
            if any(other in process.handles().values() for other in self.since if other != pipe)
        }
        self.folder.mkdir(parents=True, exist_ok=True)
        file = self.folder / f"{name_of(holders)}.txt"
        report(file, age, limit, holders, others)
        print(f"-- A test is about to run out of time: {os.path.relpath(file, ROOT)}", flush=True)


def name_of(holders):
    """What the file is called: the test's name where a holder was told it."""
    for process in holders:
        for argument in process.arguments():
            if argument.startswith("--gtest_filter="):
                return re.sub(r"[^A-Za-z0-9_.]+", "_", argument.partition("=")[2])[:120]
    return f"{holders[0].program()}-{holders[0].number}"


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    folder = Path(os.environ.get("KELVARO_TIMEOUTS", ROOT / "out" / "timeouts")).resolve()
    # A Ctrl+C reaches CTest as well, which ends its tests.
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    ctest = subprocess.Popen(["ctest", *sys.argv[2:]], preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
    watch = Watch(Path(sys.argv[1]), Process(ctest.pid), folder)
    while True:
        try:
            sys.exit(ctest.wait(PERIOD_S))
        except subprocess.TimeoutExpired:
            try:
                watch.look()
            except OSError as error:
                # The tests go on without it.
                print(f"-- Nobody can say what a test hangs in: {error}", flush=True)


main()
