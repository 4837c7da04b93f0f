#!/usr/bin/env bash
# Builds with the address and undefined-behaviour sanitizers and runs the tests. Where they cannot start it says that it did
# not run, and why.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

end_unless_it_starts "the sanitizers" g++ -fsanitize=address,undefined <<'END'
int main() { int *number = new int(0); int value = *number; delete number; return value; }
END

build_preset asan
privately ctest --preset asan --parallel "$(nproc)" --label-exclude heavy
