#!/usr/bin/env bash
# Runs shellcheck over all scripts.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<TEXT
Usage: scripts/shellcheck.sh

Checks every file of the checkout that begins as a shell script, and everything in scripts/ that is sourced. What is
not followed stands with its reason in the script.
TEXT
}

case "${1:-}" in
    '') ;;
    -h | --help) usage && exit 0 ;;
    *) fail "unknown option '$1'; --help lists the options" ;;
esac

cd "$KELVARO_ROOT"
mapfile -t files < <(find . \( -path ./out -o -path ./.git \) -prune -o -type f -print | sort)
scripts=()
for file in "${files[@]}"; do
    read -r -n 64 firstLine <"$file" || true
    if [[ "$firstLine" =~ ^#!.*(bash|[/ ]sh)$ || "$file" == ./scripts/*.sh ]]; then
        scripts+=("$file")
    fi
done
((${#scripts[@]} > 0)) || fail "there is nothing to check"
shellcheck --external-sources "${scripts[@]}"
printf '   %s\n' "${#scripts[@]} scripts"
