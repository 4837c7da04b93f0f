#!/usr/bin/env bash
# Gives each fuzz target made-up inputs for SECONDS (20 unless told otherwise) and fails when one crashes, stalls or takes
# too much memory. Writes to build/fuzz/ only. Where clang's fuzzer cannot start it says that it did not run, and why.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

seconds=${1:-20}
[[ $# -le 1 && $seconds =~ ^[1-9][0-9]*$ ]] || fail "usage: scripts/fuzz.sh [SECONDS]"

end_unless_it_starts "clang's fuzzer" clang++ -fsanitize=fuzzer,address,undefined <<'END'
#include <cstddef>
#include <cstdint>
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *, std::size_t) { return 0; }
END

build_preset fuzz

export seconds
work=build/fuzz/fuzzing
export work

fuzz() {
    local target=$1 inputs=$2 status=0
    local log=$work/$target.log corpus=$work/$target.corpus crashes=$work/$target.crashes
    rm -rf "$corpus" "$crashes"
    mkdir -p "$corpus" "$crashes"
    cp -r "$inputs/." "$corpus"
    # The target ends by itself; `timeout` is for one that hangs where the fuzzer does not see it.
    timeout --kill-after=10 $((seconds + 60)) "build/fuzz/tests/$target" "$corpus" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$crashes/" >"$log" 2>&1 || status=$?
    if [ "$status" = 0 ]; then
        sed -n "s/^stat::number_of_executed_units: */$target: no crash; executions: /p" "$log"
        return
    fi
    grep -v '^#' "$log" | tail -n 40
    printf '%s FAILED (%s); all it said is in %s. Replay with:\n' "$target" "$status" "$log"
    find "$crashes" -type f -printf "  build/fuzz/tests/$target %p\n"
    return 1
}
export -f fuzz

mkdir -p "$work"
# shellcheck disable=SC2016
xargs -n 2 -P "$(nproc)" bash -c 'fuzz "$1" "$2"' fuzz <build/fuzz/fuzz_targets.txt
