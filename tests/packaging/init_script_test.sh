#!/bin/sh
# The init script, with a program that only waits in place of the process; under each shell that
# boards have:
#
#   init_script_test.sh packaging/init/app_gui
set -u

script=$1
failures=0

expect() { # WHAT COMMAND...
    what=$1
    shift
    if ! "$@"; then
        echo "not so: $what" >&2
        failures=$((failures + 1))
    fi
}

# wait_for COMMAND...: tries for 10 seconds.
wait_for() {
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        "$@" && return 0
        sleep 1
    done
    return 1
}

init() { APP_GUI_SETTINGS=$root/settings $shell "$script" "$@" >>"$root/said" 2>&1; }
runs() { [ "$(wc -l <"$root/runs")" -ge "$1" ]; }
is_mode() { [ "$(stat -c %a "$1")" = "$2" ]; }
is_dead() { ! kill -0 "$1" 2>/dev/null; }
answers() { # STATUS VERB
    init "$2"
    [ $? -eq "$1" ]
}

make_root() {
    root=$(mktemp -d)
    mkdir "$root/bin"
    cat >"$root/settings" <<END
PROGRAM=$root/bin/program
CONFIG_DIR=$root/config
IPC_DIR=$root/ipc
PID_FILE=$root/pid
LOG_FILE=$root/log
LOG_LIMIT=100
RESTART_DELAY=1
MARK=from_settings
END
    cat >"$root/bin/program" <<END
#!/bin/sh
echo "\$\$" >>$root/runs
echo "mark \$MARK, a line that makes the log long enough to be put aside before the next run"
exec sleep 1000
END
    chmod +x "$root/bin/program"
    : >"$root/runs"
}

test_life() {
    expect "an undescribed board starts nothing" answers 0 start
    expect "and tells so" answers 3 status
    mkdir -p "$root/config/capability_sets"

    expect "start succeeds" answers 0 start
    expect "the process runs" wait_for runs 1
    expect "status is 0" answers 0 status
    expect "the sockets' folder is private" is_mode "$root/ipc" 700
    expect "the settings' folder is made" [ -d "$root/config/app_parameters" ]
    expect "the environment comes from the settings" grep -q from_settings "$root/log"
    expect "a second start succeeds" answers 0 start
    expect "and starts nothing" [ "$(wc -l <"$root/runs")" -eq 1 ]

    kill -9 "$(tail -n 1 "$root/runs")"
    expect "a killed process runs again" wait_for runs 2
    kill -9 "$(tail -n 1 "$root/runs")"
    expect "and again" wait_for runs 3
    expect "a long log is put aside" [ -s "$root/log.1" ]

    expect "restart succeeds" answers 0 restart
    expect "the process runs anew" wait_for runs 4
    last=$(tail -n 1 "$root/runs")
    expect "stop succeeds" answers 0 stop
    expect "the process has ended" is_dead "$last"
    expect "status is 3" answers 3 status
    expect "no pid file is left" [ ! -e "$root/pid" ]
    expect "stop when stopped succeeds" answers 0 stop
}

test_foreign_things() {
    echo $$ >"$root/pid"
    expect "another process's number is not taken for the supervisor" answers 3 status
    expect "nor stopped" answers 0 stop
    rmdir "$root/ipc"
    mkdir "$root/elsewhere" && ln -s "$root/elsewhere" "$root/ipc"
    expect "a link in place of the sockets' folder is refused" answers 1 start
    expect "an unknown verb is refused" answers 2 dance
}

for shell in "sh" "busybox sh"; do
    command -v "${shell%% *}" >/dev/null || continue
    make_root
    before=$failures
    test_life
    test_foreign_things
    init stop
    if [ "$failures" -gt "$before" ]; then
        echo "under $shell it said:" >&2
        cat "$root/said" >&2
    fi
    rm -rf "$root"
done
[ "$failures" -eq 0 ]
