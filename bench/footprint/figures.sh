# The tables and verdicts of measure.sh; to be sourced.
# shellcheck shell=bash

largest_start_ratio=2.0
largest_memory_ratio=1.5
failures=0

# A ratio and its limit: TITLE RATIO LIMIT.
judge() {
    local verdict=pass
    if awk "BEGIN {exit !($2 > $3)}"; then
        verdict=FAIL
        failures=$((failures + 1))
    fi
    printf '  %-52s %6.2f  limit %.1f  %s\n' "$1" "$2" "$3" "$verdict"
}

# Bytes of a build's files without symbols: BUILD_DIR STRIP.
sizes() {
    local file stripped total=0 bytes
    stripped=$(mktemp)
    echo 'stripped, bytes'
    for file in bin/app_gui lib/librecord_codec.so.1 lib/libcommand_protocol.so.1 \
        lib/libstream_guard.so.1 bin/minimal_widget; do
        "$2" -o "$stripped" "$1/$file"
        bytes=$(stat -c %s "$stripped")
        [ "$file" = bin/minimal_widget ] || total=$((total + bytes))
        printf '  %-32s %9d\n' "${file##*/}" "$bytes"
    done
    printf '  %-32s %9d\n' 'app_gui with its libraries' "$total"
    rm "$stripped"
}

# KiB beyond the mapped framebuffer and one frame of painting memory, of start_probe's figures.
beyond() {
    local resident anonymous file shared device frame
    read -r resident anonymous file shared device frame <<<"$1"
    echo $((resident - device - frame))
}

# PROGRAM FIGURES.
memory_row() {
    local resident anonymous file shared device frame
    read -r resident anonymous file shared device frame <<<"$2"
    printf '  %-32s %8d %8d %8d %8d %8d %8d %8d\n' \
        "$1" "$resident" "$anonymous" "$file" "$shared" "$device" "$frame" "$(beyond "$2")"
}

# OUR_FIGURES THEIR_FIGURES.
memory() {
    printf '  %-32s %8s %8s %8s %8s %8s %8s %8s\n' 'resident memory, KiB' \
        all anon file shared mapping painting beyond
    memory_row app_gui "$1"
    memory_row minimal_widget "$2"
    judge 'memory beyond the frame buffers, ratio' \
        "$(awk "BEGIN {print $(beyond "$1") / $(beyond "$2")}")" "$largest_memory_ratio"
}

# The median of a column: FILE COLUMN.
median() {
    awk -v column="$2" '{print $column}' "$1" | sort -g |
        awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'
}

# PROGRAM FILE.
start_row() { printf '  %-32s %8.1f %8.1f\n' "$1" "$(median "$2" 1)" "$(median "$2" 2)"; }

# OUR_FILE THEIR_FILE, a start a line.
start() {
    printf '  %-32s %8s %8s\n' 'start to complete picture, ms' elapsed CPU
    start_row app_gui "$1"
    start_row minimal_widget "$2"
    judge 'start, ratio' "$(awk "BEGIN {print $(median "$1" 1) / $(median "$2" 1)}")" \
        "$largest_start_ratio"
}
