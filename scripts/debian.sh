#!/usr/bin/env bash
# Runs a command in a clean Debian of its own.
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<TEXT
Usage: scripts/debian.sh [--new] VERSION COMMAND...

Runs the command in a root folder with nothing but Debian VERSION (12 or bookworm, 13 or trixie) in it, where the
checkout's last commit lies as it comes from a clone. For example: scripts/debian.sh 13 ./test.sh --all

The root is made at the first start (debootstrap; some 300 MiB, and 4 GiB after a whole test run) and kept with all that
the commands leave in it, packages and builds included. --new makes it anew. It lies in KELVARO_DEBIAN_ROOTS, or in
kelvaro/debian below XDG_CACHE_HOME (~/.cache). The package server is the one that this machine takes its Debian from,
if it does, and its proxies are used. Must be run by root. The exit code is the command's.
TEXT
}

# proc, dev and so on are mounted in a name space of the command's own: they are to be seen nowhere else, and they are
# gone with its last process, however it ends. So nothing can be removed through them from outside.

new=0
while (($# > 0)); do
    case "$1" in
        -h | --help) usage && exit 0 ;;
        --new) new=1 ;;
        -*) fail "unknown option '$1'; --help lists the options" ;;
        *) break ;;
    esac
    shift
done
(($# >= 2)) || fail "a version and a command are needed; --help says more"
case "$1" in
    12 | bookworm) suite=bookworm ;;
    13 | trixie) suite=trixie ;;
    *) fail "there is no '$1' here, but 12 or bookworm, and 13 or trixie" ;;
esac
shift
(($(id -u) == 0)) || fail "only root can make and enter a root folder"

roots="${KELVARO_DEBIAN_ROOTS:-${XDG_CACHE_HOME:-$HOME/.cache}/kelvaro/debian}"
[[ "$roots" == /* ]] || fail "KELVARO_DEBIAN_ROOTS must be a whole path, from / on, and not '$roots'"
root="$roots/$suite"
# Beside the root: written before it is begun, so that no other folder is removed, and again when it is finished.
state="$roots/$suite.state"

# Prints where apt takes this machine's Debian from, if it does.
findMirror() {
    # shellcheck disable=SC2016 # apt-get expands it
    apt-get indextargets --format '$(ORIGIN) $(LABEL) $(REPO_URI)' 'Identifier: Packages' 2>/dev/null |
        sed -n '/^Debian Debian http/ { s/^Debian Debian //p; q }' || true
}

# aptProxy http|https
aptProxy() {
    local value=''
    eval "$(apt-config shell value "Acquire::$1::Proxy" 2>/dev/null)"
    [[ "$value" == DIRECT ]] || printf '%s' "$value"
}

makeRoot() {
    local arguments=(--variant=minbase "$suite" "$root") mirror
    command -v debootstrap >/dev/null || fail "debootstrap is not installed (Debian: apt-get install debootstrap)"
    mirror="$(findMirror)"
    if [[ -n "$mirror" ]]; then
        arguments+=("$mirror")
    fi
    removeRoot
    say "Making $root"
    printf 'unfinished\n' >"$state"
    debootstrap "${arguments[@]}" >"$roots/$suite.log" 2>&1 || fail "debootstrap has failed ($roots/$suite.log)"
    apt-config dump 2>/dev/null | grep -E '^Acquire::(https?::Proxy(::[^ ]+)? |Check-)' \
        >"$root/etc/apt/apt.conf.d/90host" || true
    printf 'finished\n' >"$state"
}

# Never through a mount, and only what was made here.
removeRoot() {
    if [[ -e "$root" || -L "$root" ]]; then
        [[ -d "$root" && ! -L "$root" && -f "$state" ]] || fail "$root is there and was not made by this script"
        ! grep -qF " ${root// /\\040}/" /proc/self/mountinfo ||
            fail "something is mounted below $root: unmount it first"
        rm -rf --one-file-system "$root"
    fi
}

# The checkout's last commit, in a clone that keeps what was built before.
updateClone() {
    local clone="$root/root/kelvaro"
    [[ -z "$(git -C "$KELVARO_ROOT" status --porcelain)" ]] ||
        say "Note: the checkout has changes that are not committed; they are not taken along"
    if [[ ! -d "$clone/.git" ]]; then
        git clone -q --no-hardlinks "$KELVARO_ROOT" "$clone"
        return
    fi
    git -C "$clone" fetch -q "$KELVARO_ROOT" HEAD
    git -C "$clone" checkout -q -B main FETCH_HEAD --force
    git -C "$clone" clean -qfd
}

# What the command's name space begins with: its words are the root and the command.
# shellcheck disable=SC2016 # another shell expands it
inside='
    set -e
    root="$1"
    shift
    mount -t proc proc "$root/proc"
    mount -t sysfs -o ro sys "$root/sys"
    mount -t tmpfs -o mode=755 dev "$root/dev"
    mkdir "$root/dev/pts" "$root/dev/shm"
    for device in null zero full random urandom tty; do
        touch "$root/dev/$device"
        mount --bind "/dev/$device" "$root/dev/$device"
    done
    ln -s /proc/self/fd "$root/dev/fd"
    ln -s fd/0 "$root/dev/stdin"
    ln -s fd/1 "$root/dev/stdout"
    ln -s fd/2 "$root/dev/stderr"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    ln -s pts/ptmx "$root/dev/ptmx"
    mount -t tmpfs -o mode=1777 shm "$root/dev/shm"
    chroot "$root" /bin/sh -c "cd /root/kelvaro && exec \"\$@\"" sh "$@"
'

mkdir -p "$roots"
# As it stands in the list of mounts.
root="$(realpath "$roots")/$suite"
# The command keeps the lock as long as it runs.
exec {lock}>"$roots/$suite.lock"
flock -n "$lock" || fail "another command runs in $root"
if ((new)) || [[ ! -d "$root" || ! -f "$state" || "$(<"$state")" != finished ]]; then
    makeRoot
fi
updateClone
cp -L /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || true
httpProxy="${http_proxy:-$(aptProxy http)}"
httpsProxy="${https_proxy:-$(aptProxy https)}"

code=0
env -i HOME=/root LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM:-dumb}" \
    ${httpProxy:+http_proxy="$httpProxy"} ${httpsProxy:+https_proxy="$httpsProxy"} ${no_proxy:+no_proxy="$no_proxy"} \
    unshare --mount --propagation private --pid --fork --kill-child --ipc \
    /bin/bash -c "$inside" debian.sh "$root" "$@" <&0 &
pid=$!
# The processes of a name space end with the first one, which takes no other signal from outside.
# shellcheck disable=SC2317 # the trap calls it
endCommand() {
    kill -KILL "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
}
trapSignals
trap endCommand EXIT
wait "$pid" || code=$?
exit "$code"
