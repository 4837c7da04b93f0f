#!/usr/bin/env bash
# Fails where clang-tidy finds one of the mistakes that .clang-tidy names. What was clean before is looked at again only when
# it, any header or the settings changed. The tests are left out: they would double the time, and moc's output, which they
# include, keeps other names. So are the benchmarks, which this build does not know.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

cmake --preset tidy
units=$(scripts/tidyUnits.py build/tidy)
stamps=build/clang-tidy
mkdir -p "$stamps"
common=$({
    clang-tidy --version
    cat .clang-tidy server/.clang-tidy build/tidy/units/compile_commands.json
    source_files h | xargs cat
} | sha256sum | cut -c1-32)

# Two sources of a unit may include the same.
check() {
    local unit=$1 stamp
    stamp=$stamps/$({ printf '%s\n' "$common" "$unit"; cat "$unit"; } | sha256sum | cut -c1-32)
    [ ! -e "$stamp" ] || return 0
    clang-tidy --quiet --warnings-as-errors='*' --checks=-readability-duplicate-include -p build/tidy/units "$unit" 2>&1 |
        { grep -vE 'warnings? generated\.$' || true; } | scripts/tidyUnits.py --names "$unit"
    [ "${PIPESTATUS[0]}" = 0 ] || return 1
    touch "$stamp"
}
export -f check
export stamps common

# shellcheck disable=SC2016
xargs -d '\n' -n 1 -P "$(nproc)" bash -c 'check "$1"' check <<<"$units"
say "$(wc -l <<<"$units") units"
