#!/bin/bash
# What app_gui takes beside a minimal Qt widget program on the same platform plugin, the same emulated
# framebuffer and the same fonts: measure.sh BUILD_DIR. Sizes of the stripped files, memory once
# the picture stands, and time from the start of the program to its complete picture, the median of
# starts in turn. Ends with status 1 when a limit is missed.
# shellcheck disable=SC1091,SC2154  # failures is of figures.sh
set -eu

here=$(cd "$(dirname "$0")" && pwd)
build=${1:?usage: measure.sh BUILD_DIR}
rounds=${ROUNDS:-21}
strip=${STRIP:-strip}

. "$here/../../packaging/apt-packages.sh"
install_packages device_packages
. "$here/figures.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A task of start_probe on the virtual device: MODE TASK PROGRAM [VARIABLE...].
probe() {
    local mode=$1 task=$2 program=$3
    shift 3
    "$build/bin/footprint_device" "$mode" "$task" "$work/$mode$program${1:+stock}" "$program" "$@"
}

sizes "$build" "$strip"
for mode in 1920x1080 3840x2160; do
    printf '\n%s\n' "$mode"
    ours=$(probe "$mode" learn app_gui)
    theirs=$(probe "$mode" learn minimal_widget)
    stock=$(probe "$mode" learn minimal_widget QT_QPA_PLATFORM=linuxfb:fb=/dev/fb1)
    memory "$ours" "$theirs"
    memory_row "minimal_widget on Qt's linuxfb" "$stock"
    for ((round = 0; round < rounds; round++)); do
        probe "$mode" time app_gui >>"$work/$mode.ours"
        probe "$mode" time minimal_widget >>"$work/$mode.theirs"
        probe "$mode" time minimal_widget QT_QPA_PLATFORM=linuxfb:fb=/dev/fb1 >>"$work/$mode.stock"
    done
    start "$work/$mode.ours" "$work/$mode.theirs"
    start_row "minimal_widget on Qt's linuxfb" "$work/$mode.stock"
done
exit $((failures > 0))
