# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# What ./test --fuzz does: builds the fuzzers with clang and runs them. To be sourced behind common.sh, from the project's root.

# In the build folder stay, by fuzzer: inputs that reached new code, for the next run to start with, and findings.
fuzz_folder=build-fuzz

fuzzer_names() {
    local folder
    for folder in fuzz/corpus/*/; do basename "$folder"; done
}

links_fuzzers() { # whether clang is here with the runtime of its fuzzer and its sanitizers
    have clang++ &&
        echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char *, unsigned long) { return 0; }' |
        clang++ -x c++ - -fsanitize=fuzzer,address,undefined -o /dev/null 2>/dev/null
}

require_fuzz_tools() {
    require_tools
    # llvm-symbolizer names the functions in the report of a finding.
    links_fuzzers || install_packages clang libclang-rt-dev llvm
    links_fuzzers || die "clang++ cannot build fuzzers here"
}

stat_of() { # stat_of NAME LOG: a figure from the end of a fuzzer's run
    awk -v name="stat::$1:" '$1 == name { print $2 }' "$2"
}

# run_fuzzer NAME SECONDS: prints a line of figures; fails on a finding
run_fuzzer() {
    local name=$1 seconds=$2 work=$PWD/$fuzz_folder/fuzz-runs/$1 options=() log status=0 result=ok cover slow
    mkdir -p "$work/corpus" "$work/findings"
    log=$work/log
    [ ! -f "fuzz/$name.dict" ] || options+=("-dict=fuzz/$name.dict")
    # What earlier runs found is run again first.
    find "$work/findings" -name 'slow-unit-*' -delete
    "$fuzz_folder/fuzz/fuzz_$name" "-max_total_time=$seconds" -timeout=10 -report_slow_units=2 -rss_limit_mb=2048 \
        -print_final_stats=1 "-artifact_prefix=$work/findings/" "${options[@]}" \
        "$work/corpus" "fuzz/corpus/$name" "$work/findings" >"$log" 2>&1 || status=$?
    cover=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1 | tr -d 'covft:') || true
    slow=$(find "$work/findings" -name 'slow-unit-*' | wc -l)
    [ "$slow" = 0 ] || result="ok, but $slow slow inputs"
    [ $status = 0 ] || result=FINDING
    # shellcheck disable=SC2086 # two figures
    printf '%-10s %12s %10s %8s %8s  %s\n' "$name" "$(stat_of number_of_executed_units "$log")" \
        "$(stat_of average_exec_per_sec "$log")" ${cover:-- -} "$result"
    [ $status != 0 ] || return 0
    grep -m 1 -E 'does not hold:|ERROR:|runtime error:' "$log" || tail -n 3 "$log"
    grep -oE "Test unit written to .*" "$log" | tail -n 1 || true
    echo "  report: $log"
    return 1
}

# fuzz SECONDS [NAME...]: runs each fuzzer, or those named, for that long
fuzz() {
    local seconds=${1:-} name names=() failed=0
    [[ "$seconds" =~ ^[1-9][0-9]*$ ]] || die "--fuzz takes the number of seconds that each fuzzer runs, not \"$seconds\""
    shift
    mapfile -t names < <(fuzzer_names)
    for name in "$@"; do
        [[ " ${names[*]} " == *" $name "* ]] || die "There is no fuzzer \"$name\"; there are: ${names[*]}"
    done
    [ $# = 0 ] || names=("$@")
    require_fuzz_tools
    build "$fuzz_folder" "${names[*]/#/fuzz_}" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DQUILLARY_FUZZ=ON -DQUILLARY_ASSERTIONS=ON -DBUILD_TESTING=OFF
    say "Fuzzing, $seconds seconds each"
    printf '%-10s %12s %10s %8s %8s  %s\n' fuzzer executions a-second edges features result
    for name in "${names[@]}"; do run_fuzzer "$name" "$seconds" || failed=1; done
    [ $failed = 0 ] || die "There are findings"
    say "No findings"
}
