#!/usr/bin/env bash
# Builds the backend service with the thread sanitizer and runs its tests. Where it cannot start it says that it did
# not run, and why.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

end_unless_it_starts "the thread sanitizer" g++ -fsanitize=thread <<'END'
#include <thread>
int main() { std::thread([] {}).join(); }
END

build_preset tsan
privately ctest --preset tsan --parallel "$(nproc)" --label-exclude heavy
