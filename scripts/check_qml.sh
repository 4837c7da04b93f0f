#!/usr/bin/env bash
# Fails where qmllint finds fault with a QML file.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

build_preset dev all_qmllint
