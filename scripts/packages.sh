# Sourced after common.sh: installs the Debian packages that a script needs.
# shellcheck shell=bash disable=SC2034 # the lists are for the scripts that source this

# What a build and a run need.
KELVARO_RUN_PACKAGES=(
    cmake
    ninja-build
    ccache
    g++-mingw-w64-x86-64-posix
    googletest
    wine64
    xvfb
    fonts-liberation
)

# What the checks and tests need besides.
KELVARO_TEST_PACKAGES=(
    g++
    clang-format
    clang-tidy
    python3
)

# What ./package.sh needs besides a build, and what it needs to sign.
KELVARO_PACKAGE_PACKAGES=(
    git
    nsis
    zip
)
KELVARO_SIGN_PACKAGES=(
    osslsigncode
)

# What the slow checks of ./test.sh --all need besides.
KELVARO_CHECK_PACKAGES=(
    clang
    libclang-rt-dev
    cppcheck
    shellcheck
)

# What scripts/coverage.sh needs besides.
KELVARO_COVERAGE_PACKAGES=(
    gcovr
)

# What the checks of the release files need besides all that.
KELVARO_PACKAGE_TEST_PACKAGES=(
    openssl
    python3-yaml
    unzip
)

# What packing the tests for Windows, and unpacking them, needs.
KELVARO_BUNDLE_PACKAGES=(
    ninja-build
    g++-mingw-w64-x86-64-posix
    zip
    unzip
)

# Prints those of the given packages that are not installed, on one line.
missingPackages() {
    local installed package absent=()
    # A package that dpkg has never heard of makes it fail; the others are listed all the same. The first letter says
    # what is wanted of a package (`h`: it is held), the second what it is.
    installed="$(dpkg-query -W -f='${Package} ${db:Status-Abbrev}\n' "$@" 2>/dev/null || true)"
    for package in "$@"; do
        if ! grep -q "^$package .i" <<<"$installed"; then
            absent+=("$package")
        fi
    done
    printf '%s' "${absent[*]}"
}

# Sets `asRoot` to the words that run a command as root; empty when this is root already.
findRoot() {
    local missing="$1"
    asRoot=()
    if (($(id -u) == 0)); then
        return
    fi
    command -v sudo >/dev/null ||
        fail "these packages are missing and there is neither root nor sudo to install them: $missing"
    asRoot=(sudo)
    # Without a terminal sudo must not ask.
    if [[ ! -t 0 ]]; then
        asRoot=(sudo -n)
        sudo -n true 2>/dev/null ||
            fail "these packages are missing and sudo wants a password; install them first: $missing"
    fi
}

# Installs what is missing of the given packages; quick when nothing is.
ensurePackages() {
    local missing log="$KELVARO_ROOT/out/apt.log" asRoot
    missing="$(missingPackages "$@")"
    if [[ -z "$missing" ]]; then
        return
    fi
    command -v apt-get >/dev/null ||
        fail "these packages are missing and there is no apt-get to install them: $missing"
    findRoot "$missing"
    say "Installing packages: $missing"
    makeOutFolder
    # Its words are read below, so it speaks English.
    local apt=(env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get -o DPkg::Lock::Timeout=300 -o Acquire::Retries=2)
    # An unreachable server is only a warning of `update`: whether it matters shows when the packages are asked for.
    "${asRoot[@]}" "${apt[@]}" update >"$log" 2>&1 </dev/null || true
    local words
    read -ra words <<<"$missing"
    if ! "${asRoot[@]}" "${apt[@]}" install -y --no-install-recommends "${words[@]}" </dev/null 2>&1 |
        tee -a "$log" | showAptProgress; then
        explainAptFailure "$log" "$missing"
    fi
    missing="$(missingPackages "$@")"
    [[ -z "$missing" ]] || fail "apt-get said nothing of a failure, but these packages are still missing: $missing"
}

# How much is to be fetched, and one line per package that is fetched and that is set up.
showAptProgress() {
    sed -un \
        -e 's/^Need to get /   &/p' \
        -e 's/^Get:[0-9]* [^ ]* [^ ]* [^ ]* \([^ ]*\) .*\(\[.*\]\)$/   Fetching \1 \2/p' \
        -e 's/^Setting up /   &/p'
}

explainAptFailure() {
    local log="$1" missing="$2"
    if grep -Eq 'Could not resolve|Could not connect|Unable to connect|Failed to fetch|Temporary failure' "$log"; then
        fail "the package server cannot be reached (no network?), so these packages cannot be installed: $missing"
    fi
    fail "apt-get could not install: $missing (${log#"$KELVARO_ROOT"/}: $(grep '^E:' "$log" | head -1))"
}
