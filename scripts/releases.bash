# Sourced after setup.bash by what works in roots of other releases of Debian, made once in build/releases.

RELEASES=(bullseye bookworm trixie)
# One and the same for all that a script starts, whatever is committed meanwhile.
export VELODESK_COMMIT=${VELODESK_COMMIT:-$(git rev-parse HEAD)}

is_release() { case " ${RELEASES[*]} " in *" $1 "*) ;; *) return 1 ;; esac; }

# The one before it that we build for, if there is one.
release_before() {
    local before='' release
    for release in "${RELEASES[@]}"; do
        if [ "$release" = "$1" ]; then
            printf '%s' "$before"
            return
        fi
        before=$release
    done
}

# Where this machine has its own packages from; the same place has the other releases.
debian_archive() {
    # shellcheck disable=SC2016 # The names in it are apt's.
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI)' 'Created-By: Packages' | sed -n 's/^Debian //p' | head -n 1
}

# An empty Debian with apt. Further arguments go to mmdebstrap.
make_root() {
    local release=$1 root=$2
    shift 2
    as_root rm -rf --one-file-system "$root"
    mkdir -p "${root%/*}"
    # Old releases are not signed anew. A root that is lost with the power is made again.
    as_root mmdebstrap --variant=apt --aptopt='Acquire::Check-Valid-Until "false"' --dpkgopt=force-unsafe-io \
        --keyring=/usr/share/keyrings/debian-archive-keyring.gpg "$@" \
        "$release" "$root" "deb $(debian_archive) $release main"
}

# Sets $root to the root in which things are built for a release; makes it if it is not there.
release_root() {
    root=$PWD/build/releases/$1
    install_packages mmdebstrap gpgv debian-archive-keyring bubblewrap git
    mkdir -p "${root%/*}"
    # Whoever comes second waits until the first has made it.
    local lock
    exec {lock}>"$root.lock"
    flock "$lock"
    if [ ! -e "$root/complete" ]; then
        say "making a root of $1"
        make_root "$1" "$root" --include=git,ca-certificates >"$root.log" 2>&1 || {
            cat "$root.log"
            return 1
        }
        as_root touch "$root/complete"
    fi
    exec {lock}>&-
}

# Runs a command as root in a root: with processes, /dev and /run of its own, and nothing of this machine but its
# network and its clock. It ends with what has started it.
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

# Puts the last commit into a folder of a root, in place of the one that may stand there; what was built stays.
copy_commit() {
    as_root mkdir -p "$1$2"
    as_root find "$1$2" -mindepth 1 -maxdepth 1 ! -name build ! -name .cache -exec rm -rf --one-file-system {} +
    # A commit's files have its time, which says nothing about what was built from another one.
    as_root git -c safe.directory="$PWD" -C "$PWD" archive --format=tar "$VELODESK_COMMIT" |
        as_root tar --extract --touch --no-same-owner --directory "$1$2"
}

# Builds the packages of the last commit in a folder of $root, which is made anew; they are in build/packages there.
#   build_packages ARCHITECTURE FOLDER [OPTION OF BUBBLEWRAP...]
build_packages() {
    local architecture=$1 folder=$2
    shift 2
    as_root rm -rf --one-file-system "${root:?}$folder"
    copy_commit "$root" "$folder" || return
    # All times in the packages are that of the commit, so that anybody gets the same bytes from it.
    in_root "$root" --setenv SOURCE_DATE_EPOCH "$(git log -1 --format=%ct "$VELODESK_COMMIT")" \
        --setenv CCACHE_DIR /var/cache/ccache --chdir "$folder" "$@" -- packaging/build --here "$architecture"
}

# Copies the packages that were built in a folder of $root to build/packages, with the commit they are of.
#   take_packages RELEASE ARCHITECTURE FOLDER
take_packages() {
    local package
    mkdir -p build/packages
    for package in "$root$3/build/packages"/*.deb; do
        cp "$package" build/packages/
        printf '%s\n' "build/packages/${package##*/}"
    done
    printf '%s\n' "$VELODESK_COMMIT" >"build/packages/$1-$2.commit"
}
