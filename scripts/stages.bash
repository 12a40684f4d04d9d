# Sourced after setup.bash: runs stages in sequence, and records a log, the time and a summary line for each.

stages_failed=0
stages_summary=()
stages_failures=()

# run_stage LOGS NAME COMMAND [ARGUMENT...]: stores the output in LOGS/NAME.log and prints it if the command fails.
run_stage() {
    local log=$1/$2.log name=$2 begin=$SECONDS word=ok
    shift 2
    say "$name"
    mkdir -p "${log%/*}"
    if ! "$@" >"$log" 2>&1 </dev/null; then
        word="FAIL $log"
        stages_failed=$((stages_failed + 1))
        stages_failures+=("$(grep -aE -A3 '^(FAIL!|QFATAL|SUMMARY:|==ERROR)' "$log" | cut -c1-300 | head -n 20)")
        tail -n 40 "$log"
    fi
    stages_summary+=("$(printf '%-14s %4d s  %s' "$name" $((SECONDS - begin)) "$word")")
    printf '%s\n' "${stages_summary[-1]}"
}

# Prints the failures and the summary. Fails if a stage has failed.
sum_up() {
    say "summary"
    [ "$stages_failed" -eq 0 ] || printf '%s\n' "${stages_failures[@]}"
    printf '%s\n' "${stages_summary[@]}"
    printf '%d passed, %d failed\n' $((${#stages_summary[@]} - stages_failed)) "$stages_failed"
    [ "$stages_failed" -eq 0 ]
}
