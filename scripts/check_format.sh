#!/usr/bin/env bash
# Fails where a C++ source is not laid out as .clang-format says. Arguments: files; none means all.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

files=("$@")
[ $# != 0 ] || mapfile -t files < <(source_files cpp h)
clang-format --dry-run -Werror "${files[@]}"
say "${#files[@]} files"
