#!/usr/bin/env bash
# Builds the backend service with the thread sanitizer and runs its tests. Where the sanitizer cannot start (some kernels
# spread addresses further than GCC 12 copes with) it says that it did not run, and why.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

probe=build/thread-probe
mkdir -p build
printf '#include <thread>\nint main() { std::thread([] {}).join(); }\n' >"$probe.cpp"
if ! said=$({ g++ -fsanitize=thread "$probe.cpp" -o "$probe" && "$probe"; } 2>&1); then
    say "not run: a program built with the thread sanitizer does not start here:" "$said"
    exit 0
fi

build_preset tsan
privately ctest --preset tsan --parallel "$(nproc)" --label-exclude heavy
