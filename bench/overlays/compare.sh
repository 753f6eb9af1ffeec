#!/bin/bash
# What the display's overlays cost beside ffmpeg's filters that draw the same and beside a plain
# copy of the frame: compare.sh BUILD_DIR. Each figure is the median of rounds in which both sides
# run in turn, in processor time, the user's and the kernel's. Ends with status 1 when a limit is
# missed.
# shellcheck disable=SC1091,SC2317  # judge calls functions by name
set -eu

here=$(cd "$(dirname "$0")" && pwd)
bench=${1:?usage: compare.sh BUILD_DIR}/bin/overlays_bench
rounds=${ROUNDS:-3}
frames=200
rate=25
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf

. "$here/../../packaging/apt-packages.sh"
# shellcheck disable=SC2034  # used by name
peer_packages=(ffmpeg fonts-dejavu-core)
install_packages peer_packages

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/fonts"
cp "$font" "$work/fonts/"

ours() { "$bench" "$1" "$work/fonts" | cut -d' ' -f1; }

# 64 texts at the places and of the size of ours: STYLE TEXT.
drawtext_graph() {
    local i x y
    for ((i = 0; i < 64; i++)); do
        x=$(((i / 4 % 4) * 480 + 3)) y=$(((i / 16) * 270 + i % 4 * 67 + 2))
        [ "$i" -eq 0 ] || printf ','
        printf "drawtext=fontfile=%s:fontsize=24:fontcolor=white:x=%d:y=%d:%stext='%s'" \
            "$font" "$x" "$y" "$1" "$2"
    done
}
clock='2026-01-01 %{pts\:hms}'
fixed='2026-01-01 00\:00\:00.000'
outline='borderw=1:bordercolor=black@0.5:'
box='box=1:boxcolor=black@0.5:'
drawtext_graph '' "$clock" >"$work/tick_plain"
drawtext_graph "$box" "$clock" >"$work/tick_box"
drawtext_graph "$outline" "$clock" >"$work/tick_outline"
drawtext_graph '' "$fixed" >"$work/idle_plain"
drawtext_graph "$outline" "$fixed" >"$work/idle_outline"

# A full HD input of one colour, whose frame is made once and handed on again and again.
colour() { echo "color=$1:s=1920x1080:r=$rate,format=rgba"; }

# Milliseconds of processor time of a run: ARGUMENT...
ffmpeg_time() {
    ffmpeg -hide_banner -nostdin -nostats -benchmark -threads 1 -filter_threads 1 \
        -filter_complex_threads 1 -f lavfi -i "$(colour black@0)" "$@" \
        -frames:v "$frames" -f null - 2>&1 |
        sed -n 's/.*utime=\([0-9.]*\)s stime=\([0-9.]*\)s.*/\1 \2/p' |
        awk '{print ($1 + $2) * 1000}'
}

# Milliseconds a frame that a filter takes: those of a run with it less those of one without.
per_frame() { awk "BEGIN {print ($1 - $2) / $frames}"; }
drawtext_cost() { per_frame "$(ffmpeg_time -filter_script:v "$work/$1")" "$(ffmpeg_time)"; }
overlay_cost() {
    local over=(-f lavfi -i "$(colour white@0.5)" -filter_complex)
    per_frame "$(ffmpeg_time "${over[@]}" '[0:v][1:v]overlay=format=rgb')" \
        "$(ffmpeg_time "${over[@]}" '[1:v]nullsink;[0:v]null')"
}
second_of_drawtext() {
    awk "BEGIN {print $(ffmpeg_time -filter_script:v "$work/$1") / $frames * $rate}"
}
nothing() { echo 1; }

median() { sort -g | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }

failures=0
# One line of the table: TITLE LIMIT OUR_CASE PEER PEER_ARGUMENT.
judge() {
    local round mine theirs
    : >"$work/ratios"
    for ((round = 0; round < rounds; round++)); do
        mine=$(ours "$3")
        theirs=$("$4" "$5")
        awk "BEGIN {print $mine / $theirs}" >>"$work/ratios"
    done
    local ratio verdict=pass
    ratio=$(median <"$work/ratios")
    if awk "BEGIN {exit !($ratio > $2)}"; then
        verdict=FAIL
        failures=$((failures + 1))
    fi
    printf '%-56s %8.4f  limit %5.2f  %s\n' "$1" "$ratio" "$2" "$verdict"
}

judge 'tick of 64 clocks / drawtext' 0.30 tick_plain drawtext_cost tick_plain
judge '  in boxes' 0.30 tick_box drawtext_cost tick_box
judge '  with outlines' 0.30 tick_outline drawtext_cost tick_outline
judge 'scroll step of 16 turned texts / full-frame overlay' 0.20 scroll overlay_cost ''
judge 'refresh, 16 borders and 16 texts / copy' 2.70 refresh nothing ''
judge 'the 81 places of 16 borders and 16 texts / copy' 0.80 change nothing ''
judge 'idle second with 64 texts / second of drawtext' 0.01 idle_plain second_of_drawtext idle_plain
judge '  with outlines' 0.01 idle_outline second_of_drawtext idle_outline
exit $((failures > 0))
