# shellcheck shell=bash
# What the proofs share. Each is a command: proof/NAME looks as long as every commit can afford, proof/NAME --full
# as long as a release deserves. Status 0: nothing was found. Status 77: it could not be run here; the last line
# says why. The last line on standard output is the finding in figures: "NAME: ...". A proof of several kinds names
# them in the list `kinds` before it reads this file: proof/NAME [--full] [KIND...]. Those asked for stand there then.
# shellcheck source=scripts/common.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/common.sh"

proof=${0##*/}
[[ -v kinds ]] || kinds=()
full=0
asked=()
for argument in "$@"; do
    if [[ $argument == --full ]]; then
        full=1
    elif [[ " ${kinds[*]} " == *" $argument "* ]]; then
        asked+=("$argument")
    else
        die "usage: proof/$proof [--full]${kinds:+ [KIND...], KIND being one of: ${kinds[*]}}"
    fi
done
((${#asked[@]} == 0)) || kinds=("${asked[@]}")

# By depth of the look: either QUICK FULL.
either() { if ((full)); then say "$2"; else say "$1"; fi; }

found() { say "$proof: $*"; }

leave_out()
{
    say "$proof: left out, $*"
    exit 77
}

# bounded SECONDS COMMAND...: the command with its whole process group killed when the time is over, and no file
# of it longer than 4 GiB: what runs wild here must neither stay nor fill the disk.
bounded()
{
    local seconds=$1
    shift
    (ulimit -f 4194304 && exec timeout --kill-after=10 "$seconds" "$@")
}
