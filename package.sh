#!/usr/bin/env bash
# Makes the release files of Kelvaro.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
# shellcheck source=scripts/common.sh
source "$here/scripts/common.sh"
# shellcheck source=scripts/packages.sh
source "$here/scripts/packages.sh"
# shellcheck source=scripts/build.sh
source "$here/scripts/build.sh"
# shellcheck source=scripts/release_files.sh
source "$here/scripts/release_files.sh"

usage() {
    cat <<TEXT
Usage: ./package.sh [--tests] [--output FOLDER] [--release-url URL] [--home-url URL]
                    [--sign-with CERTIFICATE [--password-file FILE] [--timestamp URL]]

Installs the packages that are missing (Debian 12 or 13), builds the programs that are shipped, and puts into
out/package/:

  KelvaroSetup-VERSION-x64.exe  the installer
  Kelvaro-VERSION-x64.zip       the programs without installation
  Kelvaro-VERSION-symbols.zip   their symbols, for a debugger
  SHA256SUMS                    of these; check them with: sha256sum -c SHA256SUMS
  winget/                       the manifest for the Windows package manager

The version is that of project(...) in CMakeLists.txt. The same commit makes the same bytes, unless they are signed: the
files' time is the commit's, or SOURCE_DATE_EPOCH.

  --tests                  pack the tests for Windows as well: KelvaroTests-VERSION-x64.zip; builds all of them
  --output FOLDER          instead of out/package; like there, the same version's release files are replaced, and all
                           other files stay
  --release-url URL        the folder that the installer will be downloaded from, for the winget manifest; also
                           KELVARO_RELEASE_URL. By default one at example.com, which nobody can download from.
  --home-url URL           where users find help: Windows' list of apps shows it; also KELVARO_HOME_URL. By default none.
  --sign-with CERTIFICATE  sign programs, installer and uninstaller with this PKCS#12 file, certificate and key; also
                           KELVARO_SIGN_CERTIFICATE
  --password-file FILE     its first line is the certificate's password; also KELVARO_SIGN_PASSWORD_FILE
  --timestamp URL          have the signatures' time confirmed by this server (RFC 3161), so that they outlive the
                           certificate; needs the network; also KELVARO_SIGN_TIMESTAMP
  --help                   print this
TEXT
}

parseOptions() {
    while (($# > 0)); do
        case "$1" in
            -h | --help) usage && exit 0 ;;
            --tests) tests=1 ;;
            --output | --release-url | --home-url | --sign-with | --password-file | --timestamp)
                [[ -n "${2:-}" ]] || fail "$1 needs a value"
                setOption "$1" "$2"
                shift
                ;;
            *) fail "unknown option '$1'; --help lists the options" ;;
        esac
        shift
    done
}

# The scripts that do the work see them as variables.
setOption() {
    case "$1" in
        --output) package="$(realpath -m -- "$2")" ;;
        --release-url) export KELVARO_RELEASE_URL="$2" ;;
        --home-url) export KELVARO_HOME_URL="$2" ;;
        --sign-with) export KELVARO_SIGN_CERTIFICATE="$2" ;;
        --password-file) export KELVARO_SIGN_PASSWORD_FILE="$2" ;;
        --timestamp) export KELVARO_SIGN_TIMESTAMP="$2" ;;
    esac
}

# NSIS would not find a relative name: it changes the folder.
checkSigning() {
    signing || return 0
    [[ -f "$KELVARO_SIGN_CERTIFICATE" ]] || fail "there is no certificate $KELVARO_SIGN_CERTIFICATE"
    KELVARO_SIGN_CERTIFICATE="$(realpath "$KELVARO_SIGN_CERTIFICATE")"
    if [[ -n "${KELVARO_SIGN_PASSWORD_FILE:-}" ]]; then
        [[ -f "$KELVARO_SIGN_PASSWORD_FILE" ]] || fail "there is no password file $KELVARO_SIGN_PASSWORD_FILE"
        KELVARO_SIGN_PASSWORD_FILE="$(realpath "$KELVARO_SIGN_PASSWORD_FILE")"
    fi
    export KELVARO_SIGN_CERTIFICATE KELVARO_SIGN_PASSWORD_FILE
}

package="$here/out/package"
tests=0
version=''
programs=()
parseOptions "$@"
checkSigning
refuseOtherSums "$package"
makeOutFolder
ensurePackages "${KELVARO_RUN_PACKAGES[@]}" "${KELVARO_PACKAGE_PACKAGES[@]}"
if signing; then
    ensurePackages "${KELVARO_SIGN_PACKAGES[@]}"
fi
setReleaseTime
if ((tests)); then
    # All programs of the build are packed; those of the installer's tests are not built otherwise.
    buildPreset release all installer_tests
else
    buildPreset release programs
fi
readPrograms "$here/out/build/release/programs.txt"
grep -qF "## [$version]" "$here/CHANGELOG.md" || fail "CHANGELOG.md has no section [$version], the version that is packed"
if [[ -n "$(git -C "$here" status --porcelain 2>/dev/null)" ]]; then
    say "Note: the checkout has changes that are not committed; they are in the files"
fi

say "Packing version $version into ${package#"$here"/}"
mkdir -p "$package"
removeRelease "$package" "$version"
makeStage
stageFiles "${programs[@]}"
for program in "${programs[@]}"; do
    signFile "$STAGE/files/$program.exe"
done
makeSetup "$version" "$package/KelvaroSetup-$version-x64.exe"
makeZip "$package/Kelvaro-$version-x64.zip" "$STAGE/files" "Kelvaro-$version"
makeZip "$package/Kelvaro-$version-symbols.zip" "$STAGE/symbols" "Kelvaro-$version-symbols"
giveReleaseTime "$package/Kelvaro-$version-x64.zip" "$package/Kelvaro-$version-symbols.zip"
makeWinget "$version" "$package/KelvaroSetup-$version-x64.exe" "$package/winget"
if ((tests)); then
    "$here/scripts/test_bundle.sh" --output "$package"
fi
makeSums "$package" "$version"
(cd "$package" && releaseNames "$version" | xargs -d '\n' stat -c '   %n, %s bytes' | sort)
