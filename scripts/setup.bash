# Sourced by run, test, bench/run and .ci/run: says what it installs, and builds with progress.

PACKAGES_BUILD=(g++ cmake ninja-build ccache pkg-config qtbase5-dev libssl-dev libsystemd-dev libx11-dev)
PACKAGES_TEST=(xvfb openbox xcompmgr libxtst-dev libsm-dev libice-dev bubblewrap dbus strace
    fonts-noto-cjk fonts-noto-core xdg-user-dirs librsvg2-bin optipng python3-minimal)

# Window managers, a Wayland session and locales, for ./test --deep.
PACKAGES_DESKTOPS=(kwin-x11 xfwm4 mutter marco mate-settings-daemon-common icewm weston xwayland qtwayland5 locales
    xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils)
PACKAGES_FUZZ=(clang libclang-rt-14-dev)
PACKAGES_BENCH=(libbenchmark-dev libspdlog-dev)
PACKAGES_PACKAGING=(binutils dpkg-dev file git)
PACKAGES_PACKAGE_TEST=(lintian mmdebstrap)
PACKAGES_EMULATION=(qemu-user-static)
# The cross compiler, and the libraries of the other architecture.
PACKAGES_ARM64=(crossbuild-essential-arm64 qtbase5-dev:arm64 libssl-dev:arm64 libsystemd-dev:arm64 libx11-dev:arm64
    libxtst-dev:arm64 libsm-dev:arm64 libice-dev:arm64)
PACKAGES_ANALYSIS=(clang-format clang-tidy clazy shellcheck)

say() { printf '== %s\n' "$*"; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_packages() {
    local missing=() package
    for package in "$@"; do
        # A line for each architecture that has it.
        if ! dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed; then
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

# Lets packages of another architecture be installed beside the machine's own.
enable_architecture() {
    if [ "$(dpkg --print-architecture)" != "$1" ] && ! dpkg --print-foreign-architectures | grep -qx "$1"; then
        say "enabling packages for $1"
        as_root dpkg --add-architecture "$1"
    fi
}

# Configures where that was not done yet, and builds what has changed.
build() {
    local preset=$1
    shift
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "configuring $preset"
        cmake --preset "$preset"
    fi
    say "building $preset"
    cmake --build --preset "$preset" "$@"
}
