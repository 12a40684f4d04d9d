# Sourced by run, test and the scripts of scripts, bench and packaging: installs packages, and builds and tests with
# progress messages.

# The compiler, ccache, and Build-Depends of debian/control without debhelper, which only packages need.
mapfile -t PACKAGES_BUILD < <(printf '%s\n' g++ ccache &&
    sed -n '/^Build-Depends:/,/^[^ ]/s/^ \([a-z0-9.+-]*\).*/\1/p' debian/control | grep -v '^debhelper')
# The packages to run the assistant: the sandbox and the buses of the stand-ins, and its fonts and commands.
PACKAGES_TOUR=(libxtst-dev bubblewrap dbus fonts-noto-cjk qttranslations5-l10n xdg-user-dirs)
PACKAGES_DISPLAY=(xvfb openbox xcompmgr)
PACKAGES_TEST=("${PACKAGES_TOUR[@]}" "${PACKAGES_DISPLAY[@]}" libsm-dev libice-dev strace fonts-noto-core librsvg2-bin
    optipng python3 at-spi2-core)

# Window managers, a Wayland session, two monitors and locales, for ./test --deep.
PACKAGES_DESKTOPS=(kwin-x11 xfwm4 mutter marco mate-settings-daemon-common icewm weston xwayland qtwayland5 locales
    xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils)
PACKAGES_FUZZ=(clang libclang-rt-14-dev)
PACKAGES_BENCH=(libbenchmark-dev)
PACKAGES_EMULATION=(qemu-user-static mount)
# The cross compiler and the libraries for arm64.
PACKAGES_ARM64=(crossbuild-essential-arm64 qtbase5-dev:arm64 libssl-dev:arm64 libsystemd-dev:arm64 libx11-dev:arm64
    libxtst-dev:arm64 libsm-dev:arm64 libice-dev:arm64)
PACKAGES_ANALYSIS=(clang-format clang-tidy clazy shellcheck)

# All files that the scripts write are in the working copy, including the compiler cache and temporary files.
export CCACHE_DIR=${CCACHE_DIR-$PWD/.cache/ccache}
export TMPDIR=$PWD/build/tmp
mkdir -p "$TMPDIR"

# Prints the comment at the head of the script that has sourced this file. The script has changed the directory once, to
# the top of the working copy.
head_comment() { (cd "${OLDPWD-.}" && sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"); }

# Prints the help and ends the script if that was requested.
explain() {
    case ${1-} in
        --help | -h)
            head_comment
            exit 0
            ;;
    esac
}

# Prints the help and ends a script that was called with wrong arguments.
misused() {
    head_comment >&2
    exit 2
}

say() { printf '== %s\n' "$*"; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_packages() {
    local missing=() package architecture native
    native=$(dpkg --print-architecture)
    for package in "$@"; do
        architecture=$native
        [ "${package%:*}" = "$package" ] || architecture=${package#*:}
        # dpkg-query prints one line per installed architecture. Only the line of the requested architecture counts.
        if ! dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null |
            grep -qxE "($architecture|all) installed"; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    say "installing: ${missing[*]}"
    as_root apt-get update -q
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-remove --no-install-recommends "${missing[@]}"
}

# Enables the installation of packages of another architecture.
enable_architecture() {
    if [ "$(dpkg --print-architecture)" != "$1" ] && ! dpkg --print-foreign-architectures | grep -qx "$1"; then
        say "enabling packages for $1"
        as_root dpkg --add-architecture "$1"
    fi
}

# Makes ccache accept precompiled headers.
export CCACHE_SLOPPINESS=pch_defines,time_macros

# Returns whether a configured build has a setting in CMake's notation, NAME:TYPE=VALUE.
configured() { grep -qsx "$2" "build/$1/CMakeCache.txt"; }

# Configures build/CONFIGURATION with its preset, and prints CMake's output on failure. Further arguments go to CMake.
configure() {
    local configuration=$1
    shift
    say "configuring $configuration"
    mkdir -p "build/$configuration"
    local arguments=(--preset "$configuration")
    # Presets need CMake 3.21. With CMake 3.18 of Debian 11, uses the settings of the preset "base" instead.
    if ! cmake --list-presets >/dev/null 2>&1; then
        arguments=(-S . -B "build/$configuration" -G Ninja
            "-DCMAKE_PROJECT_velodesk_INCLUDE_BEFORE=$PWD/cmake/configurations/$configuration.cmake")
    fi
    if ! cmake "${arguments[@]}" "$@" >"build/$configuration/configure.log" 2>&1; then
        cat "build/$configuration/configure.log"
        return 1
    fi
}

# Configures a build if needed, and builds the changes. Further arguments go to the build tool.
build() {
    local configuration=$1
    shift
    if [ ! -f "build/$configuration/build.ninja" ]; then
        configure "$configuration" || return
    elif configured "$configuration" BUILD_TESTING:BOOL=OFF &&
        ! grep -q BUILD_TESTING "cmake/configurations/$configuration.cmake"; then
        # ./run has configured this build without the tests.
        configure "$configuration" -DBUILD_TESTING=ON -DVELODESK_BUILD_TOUR=ON || return
    fi
    say "building $configuration"
    cmake --build "build/$configuration" "$@"
}

# Builds the targets that ./run needs.
build_tour() {
    if [ ! -f build/release/build.ninja ]; then
        configure release -DBUILD_TESTING=OFF -DVELODESK_BUILD_TOUR=ON || return
    elif configured release VELODESK_BUILD_TOUR:BOOL=OFF; then
        configure release -DVELODESK_BUILD_TOUR=ON || return
    fi
    say "building the assistant, the stand-ins and the tour"
    cmake --build build/release --target Velodesk standin-daemon standin-engine tour
}

# Runs the tests of a configuration in parallel. Arguments go to CTest.
run_tests() {
    local configuration=$1
    shift
    (cd "build/$configuration" && ctest --parallel "$(nproc)" --output-on-failure "$@")
}
