#!/usr/bin/env bash
# Refuses a built test program that imports XInput and would get Wine's own. That one starts threads, and a process that
# ends while they start can hang. Prints the programs that import it.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build="$KELVARO_ROOT/out/build/release"

# Paths from the build folder on. The benchmarks are no tests: scripts/bench.sh starts them.
testPrograms() {
    ninja -C "$build" -t targets all | sed -n -e '/: phony$/d' -e 's/^\(tests\/.*\.exe\): .*/\1/p' |
        grep -v '^tests/benchmark/' | sort -u
}

# hasOverride PROGRAM: whether CTest starts it with the stand-in before Wine's own library. What is not in the list has
# no test of CTest's.
hasOverride() {
    local line
    line="$(grep -F "$1|" "$build/test_programs.txt")" || return 1
    [[ "$line" =~ WINEDLLOVERRIDES=([a-z0-9_]+,)*xinput1_4=n,b ]]
}

result=0
count=0
while IFS= read -r program; do
    # Some programs are built only when they are asked for.
    [[ -f "$build/$program" ]] || continue
    if ! x86_64-w64-mingw32-objdump -p "$build/$program" | grep -i 'DLL Name: xinput1_4\.dll' >/dev/null; then
        continue
    fi
    count=$((count + 1))
    printf '   %s\n' "$program"
    if [[ ! -f "$build/${program%/*}/XINPUT1_4.dll" ]] || ! hasOverride "$program"; then
        printf '%s\n' "$program imports XInput without its stand-in: kelvaro_tests(... XINPUT ...) gives it one" >&2
        result=1
    fi
done < <(testPrograms)
# None at all is a fault of this check's.
((count > 0)) || fail "no built test program imports XInput"
exit "$result"
