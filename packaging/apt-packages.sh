# Debian packages that building, testing and showing the project needs; for `run`, `test` and scripts to
# source. install_packages NAME... installs the missing ones of the lists it is given.
# shellcheck shell=bash

# Compiler, tools and libraries.
# shellcheck disable=SC2034  # used by name
build_packages=(
    g++ cmake ninja-build pkg-config
    qt6-base-dev qt6-base-private-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools
    libnanomsg-dev nlohmann-json3-dev libcli11-dev
)

# What the virtual device runs with: its sandboxes, fonts for Latin and Chinese texts, the `ip`
# command of the network queries.
# shellcheck disable=SC2034
device_packages=(bubblewrap proot fonts-dejavu-core fonts-droid-fallback iproute2)

# shellcheck disable=SC2034
test_packages=(libgtest-dev libgmock-dev binutils busybox groff-base nanomsg-utils python3 python3-jsonschema)

# libFuzzer and its sanitizers. Those of --sanitize come with g++.
# shellcheck disable=SC2034
fuzz_packages=(clang libclang-rt-dev)

# The Debian packages and their check.
# shellcheck disable=SC2034
deb_packages=(debhelper dpkg-dev lintian)
# shellcheck disable=SC2034
check_package_packages=(mmdebstrap util-linux)

# Cross building for each architecture, and running its tests.
# shellcheck disable=SC2034
cross_armhf_packages=(g++-arm-linux-gnueabihf qemu-user)
# shellcheck disable=SC2034
cross_arm64_packages=(g++-aarch64-linux-gnu qemu-user)

# What scripts/make-sysroot works with, and what it unpacks for the board's architecture: to build with,
# to run the tests and the process with.
# shellcheck disable=SC2034
make_sysroot_packages=(mmdebstrap)
# shellcheck disable=SC2034
sysroot_packages=(
    libc6-dev libstdc++-12-dev libc-bin tzdata
    qt6-base-dev qt6-base-private-dev qt6-qpa-plugins
    libnanomsg-dev nlohmann-json3-dev libcli11-dev libgtest-dev libgmock-dev
    fontconfig-config fonts-dejavu-core fonts-droid-fallback iproute2
)

# The boards that ./test --board emulates, beside the cross building.
# shellcheck disable=SC2034
board_packages=(qemu-system-arm device-tree-compiler)

package_is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Runs a command as root, without questions.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo -n "$@"
    fi
}

install_packages() {
    local list package
    local -a missing=()
    for list in "$@"; do
        local -n packages=$list
        for package in "${packages[@]}"; do
            package_is_installed "$package" || missing+=("$package")
        done
        unset -n packages
    done
    [ "${#missing[@]}" -gt 0 ] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "These Debian packages, or what they hold, are needed: ${missing[*]}" >&2
        return 0
    fi
    echo "Installing: ${missing[*]}"
    if ! { as_root apt-get update -q && as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"; } </dev/null; then
        echo "Install these packages first: apt-get install ${missing[*]}" >&2
        return 1
    fi
}
