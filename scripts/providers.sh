#!/usr/bin/env bash
# Puts the OpenID provider that tests sign in by, with the npm packages it is made of, into build/providers.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$0")/common.sh"

# Node.js of some sources brings npm with it and refuses Debian's.
command -v npm >/dev/null || ensure_packages npm

from=tests/server/providers to=build/providers
mkdir -p "$to"
cp "$from"/package.json "$from"/package-lock.json "$from"/*.js "$to"
if ! cmp -s "$to/package-lock.json" "$to/installed.json"; then
    (cd "$to" && npm ci --ignore-scripts --no-audit --no-fund)
    cp "$to/package-lock.json" "$to/installed.json"
fi
