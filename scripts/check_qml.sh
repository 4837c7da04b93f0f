#!/usr/bin/env bash
# Fails where qmllint finds fault with a QML file.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

build_preset dev quorvel_ui
cmake -D BUILD_FOLDER=build/dev -P tests/ui/qmllint.cmake
