#!/usr/bin/env bash
# Fails where clang-tidy finds one of the mistakes that .clang-tidy names. A file that was clean before is looked at
# again only when it, any header or the settings changed, so a second run costs nothing. The tests are left out: they
# would double the time, and moc's output, which they include, keeps other names. So are the benchmarks, which this
# build does not compile.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

build_preset dev
stamps=build/clang-tidy
mkdir -p "$stamps"
common=$({
    clang-tidy --version
    cat .clang-tidy server/.clang-tidy build/dev/compile_commands.json
    source_files h | xargs cat
} | sha256sum | cut -c1-32)

check() {
    local file=$1 stamp
    stamp=$stamps/$({ printf '%s\n' "$common" "$file"; cat "$file"; } | sha256sum | cut -c1-32)
    [ ! -e "$stamp" ] || return 0
    clang-tidy --quiet --warnings-as-errors='*' -p build/dev "$file" 2>&1 | { grep -v 'warnings generated\.$' || true; }
    [ "${PIPESTATUS[0]}" = 0 ] || return 1
    touch "$stamp"
}
export -f check
export stamps common

mapfile -t files < <(source_files cpp | grep -vE '^(tests|benchmarks)/')
# shellcheck disable=SC2016
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'check "$1"' check
say "${#files[@]} files"
