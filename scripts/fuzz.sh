#!/usr/bin/env bash
# Feeds the portable units with inputs that libFuzzer makes up.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=packages.sh
source "$KELVARO_ROOT/scripts/packages.sh"
# shellcheck source=build.sh
source "$KELVARO_ROOT/scripts/build.sh"

usage() {
    cat <<TEXT
Usage: scripts/fuzz.sh [--seconds N] [--keep] [TARGET...]

Builds the libFuzzer targets in tests/fuzz/ with clang, AddressSanitizer and UndefinedBehaviorSanitizer, and runs the
given ones, or all, two at a time. Each target checks what the code promises. It begins with the inputs in
tests/fuzz/corpus/TARGET and with what earlier runs found, which is in out/fuzz/TARGET/found.

  --seconds N   how long each target runs (default: 20)
  --keep        add those of the found inputs that reach more code to tests/fuzz/corpus

An input that breaks a promise is kept in out/fuzz/TARGET, and the command that repeats it is printed; the exit code is
then 1. The last line says how many inputs were tried.
TEXT
}

seconds=20
keep=0
targets=()
while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --seconds)
            [[ "${2:-}" =~ ^[1-9][0-9]{0,5}$ ]] || fail "--seconds takes a whole number from 1 on, not '${2:-}'"
            seconds="$2"
            shift
            ;;
        --keep) keep=1 ;;
        -*) fail "unknown option '$1'; --help lists the options" ;;
        *) targets+=("$1") ;;
    esac
    shift
done

cd "$KELVARO_ROOT"
programs=out/build/fuzz/tests/fuzz
results=out/fuzz
corpus=tests/fuzz/corpus

allTargets() {
    local file
    for file in tests/fuzz/*_fuzz.cpp; do
        basename "$file" _fuzz.cpp
    done
}

# runTarget TARGET: fails when an input broke a promise.
runTarget() {
    local target="$1" folder="$results/$1" log="$results/$1/log"
    mkdir -p "$folder/found"
    # A target that takes a second for one input, or 1 GiB, has failed as well.
    if "${fuzzer[@]}" "$programs/${target}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
        -print_final_stats=1 -artifact_prefix="$folder/" "$folder/found" "$corpus/$target" >"$log" 2>&1; then
        printf '   %-18s %10d inputs\n' "$target" "$(executions "$target")"
    else
        explainFailure "$target" "$log"
        return 1
    fi
}

executions() {
    local number
    number="$(sed -n 's/^stat::number_of_executed_units: *//p' "$results/$1/log")"
    printf '%d' "${number:-0}"
}

explainFailure() {
    local target="$1" log="$2" input
    input="$(sed -n 's/.*Test unit written to //p' "$log" | head -1)"
    {
        printf '   %s has failed:\n' "$target"
        grep -E '^Broken promise|runtime error|^==[0-9]+==ERROR|^SUMMARY' "$log" || tail -5 "$log"
        if [[ -n "$input" ]]; then
            printf '   To repeat it: %s %s\n' "$programs/${target}_fuzz" "$input"
        fi
    } >&2
}

keepFound() {
    local target="$1"
    "$programs/${target}_fuzz" -set_cover_merge=1 -use_counters=0 "$corpus/$target" "$results/$target/found" \
        >"$results/$target/keep.log" 2>&1 || fail "the inputs of $target cannot be merged ($results/$target/keep.log)"
}

# The sanitizers want their shadow memory where some kernels put a program that is laid out at random.
fuzzer=()
if setarch -R true 2>/dev/null; then
    fuzzer=(setarch -R)
fi
# Two at a time: xargs starts this script again for single targets.
if [[ "${KELVARO_FUZZ_TARGET:-}" == yes ]]; then
    runTarget "${targets[0]}"
    exit
fi

mapfile -t known < <(allTargets)
for target in "${targets[@]}"; do
    [[ -f "tests/fuzz/${target}_fuzz.cpp" ]] || fail "there is no target '$target', but: ${known[*]}"
done
if ((${#targets[@]} == 0)); then
    targets=("${known[@]}")
fi
ensurePackages "${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_CHECK_PACKAGES[@]}"
buildPreset fuzz "${targets[@]/%/_fuzz}"
say "Running ${#targets[@]} targets for $seconds seconds each"
code=0
printf '%s\0' "${targets[@]}" |
    KELVARO_FUZZ_TARGET=yes xargs -0 -n 1 -P 2 "$KELVARO_ROOT/scripts/fuzz.sh" --seconds "$seconds" || code=1
total=0
for target in "${targets[@]}"; do
    total=$((total + $(executions "$target")))
    if ((keep)); then
        keepFound "$target"
    fi
done
say "$total inputs tried"
exit "$code"
