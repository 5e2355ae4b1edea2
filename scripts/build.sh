# Sourced after common.sh: configures and builds a preset of CMakePresets.json.
# shellcheck shell=bash

# Without these ccache keeps nothing that was compiled with precompiled headers.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"

# buildPreset PRESET [TARGET...]: all targets when none is named. Quick when nothing has changed.
buildPreset() {
    local preset="$1" folder="$KELVARO_ROOT/out/build/$1"
    shift
    configurePreset "$preset" "$folder"
    say "Building preset $preset"
    if [[ -n "$*" ]]; then
        set -- --target "$@"
    fi
    cmake --build "$folder" "$@" || explainBuildFailure "$preset" "$folder"
}

# ./run.sh and ./package.sh build in the folder of ./test.sh, which exports KELVARO_WERROR=ON. They leave the option as it
# is there, since a change compiles everything again. After a failure it goes off, so that what a new compiler warns of
# stops ./test.sh only.
explainBuildFailure() {
    local preset="$1" folder="$2"
    if [[ "${KELVARO_WERROR:-}" == ON ]]; then
        cmake -DKELVARO_WERROR=OFF "$folder" >/dev/null 2>&1 || true
    elif warningsAreErrors "$folder"; then
        fail "the build of preset $preset failed (cmake -DKELVARO_WERROR=OFF ${folder#"$PWD"/} lets warnings pass)"
    fi
    fail "the build of preset $preset failed"
}

warningsAreErrors() {
    grep -qxF 'KELVARO_WERROR:BOOL=ON' "$1/CMakeCache.txt" 2>/dev/null
}

# Once configured, Ninja itself sees when a CMakeLists.txt has changed, but not when the presets have.
configurePreset() {
    local preset="$1" folder="$2" options=()
    if [[ "${KELVARO_WERROR:-}" == ON ]]; then
        options=(-DKELVARO_WERROR=ON)
    fi
    if [[ -f "$folder/build.ninja" && ! "$KELVARO_ROOT/CMakePresets.json" -nt "$folder/build.ninja" ]] &&
        configuredHere "$folder" && { ((${#options[@]} == 0)) || warningsAreErrors "$folder"; }; then
        return
    fi
    say "Configuring preset $preset"
    if [[ -f "$folder/CMakeCache.txt" ]] && ! configuredHere "$folder"; then
        options+=(--fresh)
    fi
    mkdir -p "$folder"
    (cd "$KELVARO_ROOT" && cmake "${options[@]}" --preset "$preset" >"$folder/configure.log" 2>&1) || {
        cat "$folder/configure.log" >&2
        fail "preset $preset cannot be configured"
    }
    # A configuration without changes leaves the file alone, and would be made again at each start.
    touch "$folder/build.ninja"
}

# False when the checkout was moved or copied together with its build folder: CMake refuses such a cache.
configuredHere() {
    grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$KELVARO_ROOT" "$1/CMakeCache.txt" 2>/dev/null
}
