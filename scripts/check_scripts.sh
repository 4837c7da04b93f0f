#!/usr/bin/env bash
# Fails where shellcheck finds fault with one of the repository's scripts.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

mapfile -t files < <({
    source_files sh
    printf '%s\n' run test demo bench .ci/run
} | sort -u)
shellcheck --external-sources "${files[@]}"
say "${#files[@]} files"
