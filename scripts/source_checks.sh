# Sourced after common.sh: compilers that only look at the product's sources.
# shellcheck shell=bash

# productSources: sets `sources` to the product's sources, by their path from the checkout, where this is to be called.
productSources() {
    mapfile -t sources < <(find app framework stats pages -name '*.cpp' | sort)
    ((${#sources[@]} > 0)) || fail "there is nothing to check"
}

# What of the build's own options makes the sources compile; see cmake/options.cmake. The preset release must be
# configured: it makes the header with the version.
# shellcheck disable=SC2034 # for the scripts that source this
productOptions=(-std=c++20 -DUNICODE -D_UNICODE -DNOMINMAX -D_WIN32_WINNT=0x0A00 "-I$KELVARO_ROOT"
    "-I$KELVARO_ROOT/out/build/release/generated")

# checkSources NAME COMPILER COMMAND...: gives each of `sources` to the command, as many at a time as there are processors. Prints
# what it says and fails when it says anything, or fails. What passed and has not changed since, neither in itself nor
# in a header of ours nor in the scripts nor in the compiler, is not checked again. To be called in the checkout.
checkSources() {
    local folder="$KELVARO_ROOT/out/checks/$1" compiler="$2" common file running=0 code=0
    shift 2
    mkdir -p "$folder"
    common="$(find app framework stats pages -name '*.h' -print0 | sort -z |
        xargs -0 cat scripts/*.sh cmake/options.cmake | cksum) $("$compiler" --version | head -1)"
    for file in "${sources[@]}"; do
        if ((running >= $(nproc))); then
            wait -n || code=1
            running=$((running - 1))
        fi
        checkSource "$folder/${file//\//_}" "$file $common $(cksum <"$file")" "$@" "$file" &
        running=$((running + 1))
    done
    while ((running > 0)); do
        wait -n || code=1
        running=$((running - 1))
    done
    return "$code"
}

# checkSource STAMP STATE COMMAND...
checkSource() {
    local stamp="$1" state="$2" output code=0
    shift 2
    if [[ -f "$stamp" && "$(<"$stamp")" == "$state" ]]; then
        return 0
    fi
    output="$("$@" 2>&1)" || code=$?
    if [[ -n "$output" ]] || ((code != 0)); then
        printf '%s\n' "$output" >&2
        return 1
    fi
    printf '%s\n' "$state" >"$stamp"
}
