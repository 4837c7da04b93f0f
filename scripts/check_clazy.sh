#!/usr/bin/env bash
# Fails where clazy finds a misuse of Qt, by all checks of its first two levels but these:
#   fully-qualified-moc-types   the lines of published fields would say each type twice
#   connect-not-normalized      clang-format sets the spaces that it finds fault with
#   strict-iterators            takes an iterator that becomes a const one for two that are mixed
# Names of one source may shadow those of another of its unit. It looks at what check_tidy.sh looks at, but for the service,
# which knows no Qt.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

cmake --preset tidy
units=$(scripts/tidyUnits.py build/tidy | grep -v '/units/server/')

check() {
    local unit=$1 said
    said=$(clazy-standalone -p build/tidy/units --extra-arg=-Wno-shadow \
        --checks=level0,level1,no-fully-qualified-moc-types,no-connect-not-normalized,no-strict-iterators "$unit" 2>&1) || true
    ! grep -qE '(warning|error):' <<<"$said" || { scripts/tidyUnits.py --names "$unit" <<<"$said" && return 1; }
}
export -f check

# shellcheck disable=SC2016
xargs -d '\n' -n 1 -P "$(nproc)" bash -c 'check "$1"' check <<<"$units"
say "$(wc -l <<<"$units") units"
