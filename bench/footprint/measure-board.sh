#!/bin/bash
# The figures of measure.sh on an emulated ARM board with the kernel's own framebuffer:
# measure-board.sh arm64|armhf BUILD_DIR SYSROOT. BUILD_DIR is a cross build with the benchmarks.
# The emulator translates every instruction: its milliseconds are no board's, only the ratio counts.
# shellcheck disable=SC1091,SC2154  # failures is of figures.sh
set -eu

here=$(cd "$(dirname "$0")" && pwd)
usage='usage: measure-board.sh arm64|armhf BUILD_DIR SYSROOT'
arch=${1:?$usage} build=${2:?$usage} sysroot=${3:?$usage}
rounds=${ROUNDS:-11}
declare -A triplet=([arm64]=aarch64-linux-gnu [armhf]=arm-linux-gnueabihf)

. "$here/../../packaging/apt-packages.sh"
install_packages device_packages board_packages
. "$here/figures.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$here/board.py" "$arch" "$build" "$sysroot" "$here/../../build/board" "$rounds" "$work"
sizes "$build" "${triplet[$arch]}-strip"
for mode in 1920x1080 3840x2160; do
    printf '\n%s\n' "$mode"
    memory "$(cat "$work/$mode.app_gui.memory")" "$(cat "$work/$mode.minimal_widget.memory")"
    start "$work/$mode.app_gui.starts" "$work/$mode.minimal_widget.starts"
done
exit $((failures > 0))
