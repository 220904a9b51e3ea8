# shellcheck shell=bash
# What the proofs share. Each is a command: proof/NAME looks as long as every commit can afford, proof/NAME --full
# as long as a release deserves. Status 0: nothing was found. Status 77: it could not be run here; the last line
# says why. The last line on standard output is the finding in figures: "NAME: ...".
# shellcheck source=scripts/common.sh
source "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/common.sh"

proof=${0##*/}
full=0
for argument in "$@"; do
    case $argument in
    --full) full=1 ;;
    *) die "usage: proof/$proof [--full]" ;;
    esac
done

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
