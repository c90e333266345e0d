# Roots: file systems of Debian releases, each made once and kept in the build folder. Sourced by package.sh and the tests.
# They take their packages from where this machine's apt takes its own, whatever mirror or proxy that is.

die() {
    printf 'loomkit: %s\n' "$*" >&2
    exit 1
}

# Says in one sentence why no root can be made or entered here, and fails then.
roots_are_possible() {
    [ "$(id -u)" = 0 ] || { echo "making a root needs root: run this with sudo"; return 1; }
    command -v mmdebstrap >/dev/null || { echo "making a root needs the Debian package mmdebstrap"; return 1; }
    unshare --mount true 2>/dev/null || { echo "entering a root needs mounts, which this machine doesn't allow"; return 1; }
    [ -n "$(apt_lines bookworm)" ] || { echo "this machine's apt knows no Debian archive: run apt-get update"; return 1; }
}

# The lines of sources.list for a release. Archives other than Debian's, and those of its updates, stay out.
apt_lines() { # RELEASE
    local host
    host=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' 2>/dev/null |
        awk -v host="$host" -v release="$1" '$1 == "Debian" && $2 == host && $3 == "main" {print "deb", $4, release, "main"}' |
        sort -u
}

# What this machine's apt is told about proxies and about the age of archives.
apt_options() {
    apt-config dump --no-empty --format '%F "%v";%n' | grep -E '^Acquire::(https?::|ftp::|Check-|Retries)' || true
}

# Makes a root unless it is there, complete and of the same packages. The variant extract unpacks packages and runs
# nothing of them, which is enough for a program and quick; apt installs them.
make_root() { # FOLDER RELEASE VARIANT PACKAGES
    local folder=$1 release=$2 variant=$3 packages=$4 options wish
    wish="$release $variant $packages"
    if [ "$(cat "$folder.made" 2>/dev/null)" = "$wish" ]; then
        return
    fi
    rm -rf --one-file-system "$folder" "$folder.made"
    mkdir -p "$(dirname "$folder")"
    options=$(mktemp)
    apt_options >"$options"
    # In a namespace of its own, so that no mount outlives it, not even when it is killed.
    if ! apt_lines "$release" | unshare --mount mmdebstrap --quiet --mode=root --variant="$variant" --include="$packages" \
        --aptopt="$options" "$release" "$folder" - >"$folder.log" 2>&1; then
        rm -rf --one-file-system "$folder" "$options"
        grep -E '^(E|W):' "$folder.log" | tail -n 3 >&2
        echo "no root of Debian $release could be made; the details are in $folder.log"
        return 1
    fi
    rm -f "$options"
    echo "$wish" >"$folder.made"
}

# Runs a command inside a root, which gets /proc and, in place of MOUNT, a folder of this machine that it can't write to.
# The command starts in that folder, and all mounts end with it.
in_root() { # ROOT FOLDER MOUNT COMMAND...
    # shellcheck disable=SC2016  # the inner shell expands them
    unshare --mount --fork sh -ec '
        root=$1 folder=$2 mount=$3
        shift 3
        mkdir -p "$root/proc" "$root/tmp" "$root$mount"
        mount -t proc proc "$root/proc"
        mount --bind "$folder" "$root$mount"
        mount -o remount,bind,ro "$root$mount"
        exec env -i HOME=/tmp XDG_CACHE_HOME=/tmp LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
            unshare --root="$root" --wd="$mount" "$@"
    ' in_root "$@"
}
