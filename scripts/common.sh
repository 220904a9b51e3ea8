# shellcheck shell=bash
# What the scripts share. It changes to the project folder. Scripts need no terminal; they write the output of long
# commands to log files and print how long each step took.
set -euo pipefail
unset CDPATH
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
export LC_ALL=C
unset CMAKE_GENERATOR

say() { printf '%s\n' "$*"; }

die()
{
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# For checks that cannot be run here: status 77, and why.
leave_out()
{
    say "${0##*/}: left out, $*"
    exit 77
}

# step NAME LOG COMMAND...: runs the command with its output in the file LOG. Prints one line if it succeeds, else the
# end of the output; returns the command's status.
step()
{
    local name=$1 log=$2 began=$SECONDS status=0
    shift 2
    mkdir -p "$(dirname -- "$log")"
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if ((status == 0)); then
        printf '   %-44s %4d s\n' "$name" $((SECONDS - began))
    else
        tail -n 80 "$log" >&2
        printf '%s: %s failed with status %d, its whole output is in %s\n' "${0##*/}" "$name" "$status" "$log" >&2
    fi
    return "$status"
}

# The day of the newest heading of CHANGELOG.md in seconds since 1970: the time of all files of a release.
release_time() { date -u -d "$(sed -nE 's/^## [0-9.]+ \(([0-9-]+)\)$/\1/p' CHANGELOG.md | head -n 1)" +%s; }

# The version, from CMakeLists.txt.
project_version() { sed -nE 's/^project\(vx_sac VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt; }
