# Sourced after setup.bash by scripts that use root file systems of other Debian releases. These are created once in
# build/releases.

RELEASES=(bullseye bookworm trixie forky)

is_release() { case " ${RELEASES[*]} " in *" $1 "*) ;; *) return 1 ;; esac; }

# Sets $release and $architecture to the arguments or their defaults, $results to the folder of the packages and $root
# to the root file system in which they are built. There are no packages for forky until it is released.
package_root() {
    release=${1-$(. /etc/os-release && echo "$VERSION_CODENAME")} architecture=${2-amd64}
    results=$PWD/build/packages/$release-$architecture
    root=$results/root
    is_release "$release" && [ "$release" != forky ] || misused
    [ "$architecture" = amd64 ] || [ "$architecture" = arm64 ] || misused
}

# Prints the mirror from which this machine gets its packages. It contains the other releases too.
debian_archive() {
    # shellcheck disable=SC2016 # apt-get expands the names.
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI)' 'Created-By: Packages' | sed -n 's/^Debian //p' | head -n 1
}

# Creates a minimal Debian with apt. Further arguments go to mmdebstrap.
make_root() {
    local release=$1 root=$2
    shift 2
    as_root rm -rf --one-file-system "$root"
    mkdir -p "${root%/*}"
    # Accepts the expired signatures of old releases. Does not flush files to disk, because they can be created again.
    as_root mmdebstrap --variant=apt --aptopt='Acquire::Check-Valid-Until "false"' --dpkgopt=force-unsafe-io \
        --keyring=/usr/share/keyrings/debian-archive-keyring.gpg "$@" \
        "$release" "$root" "deb $(debian_archive) $release main"
}

# Sets $root to the root file system of a release, and creates it if it does not exist.
release_root() {
    root=$PWD/build/releases/$1
    install_packages mmdebstrap gpgv debian-archive-keyring bubblewrap git
    mkdir -p "${root%/*}"
    # If another process is creating it, wait until it is complete.
    local lock
    exec {lock}>"$root.lock"
    flock "$lock"
    if [ ! -e "$root/complete" ]; then
        say "creating a root file system of $1"
        make_root "$1" "$root" --include=git,ca-certificates >"$root.log" 2>&1 || {
            cat "$root.log"
            return 1
        }
        as_root touch "$root/complete"
    fi
    exec {lock}>&-
}

# Runs a command as root in a root file system with its own processes, /dev and /run. It shares only the network and the
# clock with this machine, and ends with the process that started it.
#   in_root ROOT [OPTION OF BUBBLEWRAP...] -- COMMAND [ARGUMENT...]
in_root() {
    local options=(--bind "$1" / --dev /dev --proc /proc --ro-bind /sys /sys --bind "$1/tmp" /tmp --tmpfs /run
        --ro-bind "$(readlink -f /etc/resolv.conf)" /etc/resolv.conf --cap-add ALL --unshare-pid --die-with-parent
        --clearenv --setenv PATH /usr/sbin:/usr/bin:/sbin:/bin --setenv HOME /root --setenv LC_ALL C.UTF-8
        --setenv DEBIAN_FRONTEND noninteractive)
    shift
    while [ "$1" != -- ]; do
        options+=("$1")
        shift
    done
    shift
    as_root bwrap "${options[@]}" "$@"
}

# Copies the last commit into a folder of a root file system. Removes older sources from it, but keeps their build.
copy_commit() {
    as_root mkdir -p "$1$2"
    as_root find "$1$2" -mindepth 1 -maxdepth 1 ! -name build ! -name .cache -exec rm -rf --one-file-system {} +
    # Sets the current time, because the time of the commit may be older than a build of another commit.
    as_root git -c safe.directory="$PWD" -C "$PWD" archive --format=tar HEAD |
        as_root tar --extract --touch --no-same-owner --directory "$1$2"
}
