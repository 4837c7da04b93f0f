# shellcheck shell=bash
# What ./run, ./test, ./bench and ./demo share. Sourced, never run; the caller has `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# Qt and Python want UTF-8; a bare container has no locale at all.
if [ "$(locale charmap 2>/dev/null || true)" != UTF-8 ]; then
    export LC_ALL=C.UTF-8
fi

say() {
    printf '%s\n' "$*"
}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# source_files ENDING...: the repository's files with these endings, one a line; nothing of build/.
source_files() {
    local ending names=()
    for ending in "$@"; do
        names+=(-o -name "*.$ending")
    done
    find . -path ./build -prune -o -path ./.git -prune -o -type f \( "${names[@]:1}" \) -print |
        sed 's|^\./||' | sort
}

# packages_for PURPOSE...: names from scripts/packages, one a line.
packages_for() {
    local purpose
    for purpose in "$@"; do
        awk -v wanted="[$purpose]" '
            /^\[/ { reading = ($1 == wanted); found = found || reading; next }
            reading && NF && !/^#/ { print $1 }
            END { if (!found) { print "scripts/packages has no " wanted > "/dev/stderr"; exit 1 } }
        ' scripts/packages
    done
}

# missing_packages PURPOSE...: those that are not installed, one a line.
missing_packages() {
    local wanted installed
    wanted=$(packages_for "$@" | sort -u)
    # dpkg-query fails when it does not know one of the names; what it knows is printed all the same.
    # shellcheck disable=SC2086,SC2016
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' $wanted 2>/dev/null |
        sed -n 's/^installed //p' | sort -u || true)
    comm -23 <(printf '%s\n' "$wanted") <(printf '%s\n' "$installed")
}

# ensure_packages PURPOSE...: installs what is missing, as root or by sudo; else says what to type.
ensure_packages() {
    if ! command -v dpkg-query >/dev/null; then
        say "This is no Debian: nothing is installed by itself. scripts/packages names what is needed."
        return
    fi
    local missing
    missing=$(missing_packages "$@" | tr '\n' ' ')
    missing=${missing% }
    [ -n "$missing" ] || return 0

    local install="apt-get install -y --no-install-recommends $missing"
    local as_root=()
    if [ "$(id -u)" != 0 ]; then
        # Without a terminal sudo cannot ask for a password.
        if command -v sudo >/dev/null && { [ -t 0 ] || sudo -n true 2>/dev/null; }; then
            as_root=(sudo)
        else
            fail "Missing packages: $missing" $'\n'"Install them as root:" $'\n'"  apt-get update && $install"
        fi
    fi

    say "Installing: $missing"
    mkdir -p build
    local log=build/packages.log apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o Acquire::Retries=3)
    # shellcheck disable=SC2086
    if ! { "${apt[@]}" update && "${apt[@]}" install --no-install-recommends $missing; } >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        fail "apt-get failed; all it said is in $log."
    fi
}

# build_preset PRESET [TARGET...]: configures once, then builds; ninja configures again when a CMake file changed.
build_preset() {
    local preset=$1
    shift
    local targets=()
    [ $# = 0 ] || targets=(--target "$@")
    if [ ! -e "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
        cmake --preset "$preset"
    fi
    cmake --build --preset "$preset" "${targets[@]}"
}

# end_unless_it_starts WHAT COMMAND...: makes a program of the source on standard input with COMMAND, which takes both file
# names behind it, and starts it. Where that does not work (some kernels spread addresses further than GCC 12 copes with) it
# says that nothing was run, and why, and ends the script.
end_unless_it_starts() {
    local what=$1 folder said
    shift
    folder=$(mktemp -d)
    cat >"$folder/probe.cpp"
    if said=$({ "$@" "$folder/probe.cpp" -o "$folder/probe" && "$folder/probe" -runs=1; } 2>&1); then
        rm -r "$folder"
        return
    fi
    rm -r "$folder"
    say "not run: a program built with $what does not start here:" "$said"
    exit 0
}

# privately COMMAND...: runs it where it sees no processes but its own. A Quorvel at work in a test or in the demo closes
# every Steam and Discord that it sees: it must not see those of whoever works here. Whatever is left goes with the end.
privately() {
    local walls
    for walls in --pid "--user --map-current-user --pid"; do
        # shellcheck disable=SC2086
        if unshare $walls --fork --mount-proc --kill-child true 2>/dev/null; then
            # A shell is the first process, so that Ctrl-C reaches the command and orphans are taken in.
            # shellcheck disable=SC2016,SC2086
            unshare $walls --fork --mount-proc --kill-child bash -c '"$@"; exit $?' privately "$@"
            return
        fi
    done
    say "No process namespace is to be had here: applications on the blocklist that run on this machine may be closed."
    "$@"
}

stages=()
failed_stages=0

# stage NAME COMMAND...: runs it, tells how long it took and remembers how it ended. Always returns 0, and must not
# be part of a condition: bash would then ignore `set -e` inside the command too.
stage() {
    local name=$1 began=$SECONDS status verdict=ok
    shift
    printf '\n== %s\n' "$name"
    set +e
    (
        set -e
        "$@"
    )
    status=$?
    set -e
    if [ $status != 0 ]; then
        verdict="FAILED ($status)"
        failed_stages=$((failed_stages + 1))
    fi
    stages+=("$(printf '%-32s %5d s  %s' "$name" $((SECONDS - began)) "$verdict")")
    printf -- '-- %s\n' "${stages[-1]}"
}

# finish_stages: the closing table, then the end: with 1 when a stage failed.
finish_stages() {
    printf '\nStages:\n'
    printf '  %s\n' "${stages[@]}"
    [ $failed_stages = 0 ] || exit 1
    exit 0
}

# stop_if_failed: what follows makes no sense when a stage has failed.
stop_if_failed() {
    [ $failed_stages = 0 ] || finish_stages
}
