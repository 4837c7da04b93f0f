#!/usr/bin/env bash
# Builds with the address and undefined-behaviour sanitizers and runs the tests. Where the sanitizers cannot start (some
# kernels spread addresses further than GCC 12 copes with) it says that it did not run, and why.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

probe=build/sanitizer-probe
mkdir -p build
printf 'int main() { int *number = new int(0); int value = *number; delete number; return value; }\n' >"$probe.cpp"
if ! said=$({ g++ -fsanitize=address,undefined "$probe.cpp" -o "$probe" && "$probe"; } 2>&1); then
    say "not run: a program built with the sanitizers does not start here:" "$said"
    exit 0
fi

build_preset asan
privately ctest --preset asan --parallel "$(nproc)" --label-exclude heavy
