# shellcheck shell=bash
# What the proofs share. Each is a command: proof/NAME is the short form for every commit, proof/NAME --full the long
# form for a release. Status 0: nothing was found. Status 77: it could not be run here; the last line says why. The last
# line on standard output has the figures: "NAME: ...". A proof with several kinds lists them in `kinds` before it reads
# this file: proof/NAME [--full] [KIND...]; after that `kinds` has the wanted ones.
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

# either SHORT LONG: prints the one for this form of the proof.
either() { if ((full)); then say "$2"; else say "$1"; fi; }

found() { say "$proof: $*"; }

leave_out()
{
    say "$proof: left out, $*"
    exit 77
}

# bounded SECONDS COMMAND...: runs the command, kills its whole process group when the time is over, and limits its
# files to 4 GiB, so that a faulty run neither goes on for ever nor fills the disk.
bounded()
{
    local seconds=$1
    shift
    (ulimit -f 4194304 && exec timeout --kill-after=10 "$seconds" "$@")
}
