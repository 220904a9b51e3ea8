# shellcheck shell=bash
# What vx_batch and vx_array share: which runs there are, what becomes of one of them, the table of all.
#
# An output folder holds
#   NAME-KEY/        one input's finished run: what vx_sac wrote, its console text (run.out, run.err), run.status
#   settings         switches, station file and program of all these runs
#   work/KEY.N/      a run that is going on, or was interrupted
#   summary.tsv      the table
# KEY is made from the input's full path. A run happens in a folder of its own under work and is moved to its
# place when all of it is on the disk. A run that was interrupted is therefore never taken for a finished one, and
# one that a lost node goes on with cannot reach what is done in its stead.
set -euo pipefail
unset CDPATH
export LC_ALL=C

share=$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")
tool=${0##*/}
path_most=131 # of vx_sac's paths
key_length=16

die()
{
    printf '%s: %s\n' "$tool" "$*" >&2
    exit 2
}

note() { printf '%s: %s\n' "$tool" "$*" >&2; }

# The project's version, put beside this file by the build; in the source tree CMakeLists.txt tells it.
version_of_project()
{
    if [[ -r $share/version ]]; then
        cat -- "$share/version"
    else
        sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$share/../../CMakeLists.txt"
    fi
}

# A name that neither vx_sac nor another tool takes for a switch.
plain_name()
{
    case $1 in
    -* | \?*) printf './%s' "$1" ;;
    *) printf '%s' "$1" ;;
    esac
}

is_count() { [[ $1 =~ ^[1-9][0-9]{0,8}$ ]]; }

need()
{
    local tool
    for tool in "$@"; do
        type -P "$tool" >/dev/null || die "$tool is needed and not installed"
    done
}

check_switches()
{
    local switch
    for switch in "$@"; do
        [[ $switch == -* && $switch != *$'\n'* ]] || die "'$switch' is no switch of vx_sac"
    done
}

sum_of()
{
    local sum
    sum=$(sha256sum <"$1")
    printf '%s' "${sum%% *}"
}

# ---- the program and its settings --------------------------------------------------------------------------------

# The converter: the one asked for, else the one beside the tools, else that of the PATH, else the project's.
find_program()
{
    local bin=$1 asked=$2 path
    for path in "$asked" "$bin/vx_sac" "$(type -P vx_sac || true)" "$share/../../build/release/vx_sac"; do
        if [[ -f $path && -x $path ]]; then
            realpath -- "$path"
            return
        fi
        [[ -z $asked ]] || die "there is no program $asked"
    done
    die "no vx_sac found (name it with --program)"
}

# Does it run here, and does it take these switches? An empty input is told by status 1.
try_program()
{
    local program=$1 dir status=0
    shift
    dir=$(mktemp -d)
    : >"$dir/empty"
    "$program" "$dir/empty" "$dir" "$@" >"$dir/console" 2>&1 </dev/null || status=$?
    rm -r -- "$dir"
    ((status != 2)) || die "vx_sac does not take these switches: $*"
    ((status == 1)) || die "$program does not work here (status $status for an empty input instead of 1)"
}

# The station file that vx_sac will read; nothing when there is none.
station_file()
{
    local path
    if [[ ${VXU-} == =* ]]; then
        path=${VXU#=}
    elif [[ -e vxu.ini ]]; then
        path=vxu.ini
    else
        path=${1%/*}/vxu.ini
    fi
    [[ ! -f $path ]] || printf '%s' "$path"
}

settings_text()
{
    local program=$1 ini
    shift
    ini=$(station_file "$program")
    printf 'program\t%s\n' "$program"
    printf 'program_sum\t%s\n' "$(sum_of "$program")"
    printf 'station_sum\t%s\n' "$(if [[ -n $ini ]]; then sum_of "$ini"; else echo none; fi)"
    (($# == 0)) || printf 'switch\t%s\n' "$@"
}

lines_of() { sed -n "s/^$2\t//p" <<<"$1"; }

# Writes the settings of a new output folder; of an old one, sees to it that results of one kind come in.
settle_settings()
{
    local out=$1 before now
    shift
    now=$(settings_text "$@")
    if [[ -e $out/settings ]]; then
        before=$(cat -- "$out/settings")
        [[ $(lines_of "$before" switch) == "$(lines_of "$now" switch)" ]] ||
            die "$out was begun with other switches ($(lines_of "$before" switch | paste -sd ' ')); take another folder"
        [[ $(lines_of "$before" station_sum) == "$(lines_of "$now" station_sum)" ]] ||
            die "$out was begun with another station file (vxu.ini); take another folder"
        [[ $(lines_of "$before" program_sum) == "$(lines_of "$now" program_sum)" ]] ||
            note "$out was begun with another build of vx_sac; what is done there stays as it is"
    fi
    printf '%s\n' "$now" >"$out/settings.part"
    mv -T -- "$out/settings.part" "$out/settings"
}

make_output_folder()
{
    local out=$1 room=$((path_most - 1 - 6 - key_length - 6)) # "/", "/work/", key, ".12345"
    ((${#out} <= room)) || die "the output path is too long: vx_sac leaves room for $room characters"
    [[ ! -d $out || -d $out/work || -z $(find "$out" -mindepth 1 -maxdepth 1 -print -quit) ]] ||
        die "$out holds other files; take a new or an empty folder"
    mkdir -p -- "$out/work" || die "cannot make the folder $out"
}

# ---- the inputs --------------------------------------------------------------------------------------------------

# Names of inputs, each ended by NUL: folders (of arguments and lists) give all files in and below them.
expand_inputs()
{
    local out=$1 name
    shift
    for name in "$@"; do
        [[ -n $name ]] || continue
        name=$(plain_name "$name")
        if [[ -d $name ]]; then
            [[ $(realpath -m -- "$out")/ != "$(realpath -- "$name")"/* ]] ||
                die "the output folder lies inside the input folder $name"
            find -L "$name" -type f -print0 | sort -z
        else
            printf '%s\0' "$name"
        fi
    done
}

# From names on standard input to lines of a plan: "NAME-KEY<TAB>input". The same file given twice is one input.
# shellcheck disable=SC2016 # the names are Perl's
make_plan()
{
    perl -0 -MDigest::SHA=sha256_hex -MFile::Spec -ne '
        chomp;
        die "a name with a line end: $_\n" if /\n/;
        my $full = File::Spec->rel2abs($_);
        next if $seen{$full}++;
        my ($base) = $full =~ m{([^/]*)$};
        $base =~ s/[^A-Za-z0-9._+-]/_/g;
        $base =~ s/^[.-]/_/;
        my $name = substr($base, 0, 40) . "-" . substr(sha256_hex($full), 0, '"$key_length"');
        die "two inputs would share the folder $name\n" if $taken{$name}++;
        print "$name\t$_\n";'
}

# plan_inputs OUT LIST INPUT...: all inputs of the arguments and of the list (empty: none; "-": standard input), as
# a plan in the new file $plan, which goes with the script.
plan_inputs()
{
    local out=$1 list=$2 names=()
    shift 2
    names=("$@")
    if [[ -n $list ]]; then
        [[ $list != - ]] || list=/dev/stdin
        mapfile -t -O ${#names[@]} names <"$list" || die "cannot read the list $list"
    fi
    plan=$(mktemp)
    trap 'rm -f -- "$plan" "$plan.names"' EXIT
    expand_inputs "$out" "${names[@]}" >"$plan.names" || die "not all inputs could be found"
    make_plan <"$plan.names" >"$plan" || die "the inputs cannot be planned"
    [[ -s $plan ]] || die "no inputs"
}

# ---- one run -----------------------------------------------------------------------------------------------------

# Fills the array `run` with what run.status says; false when there is none.
declare -A run
read_status()
{
    local key value
    run=()
    [[ -f $1/run.status ]] || return 1
    while IFS= read -r value; do
        key=${value%%$'\t'*}
        run[$key]=${value#*$'\t'}
    done <"$1/run.status"
}

# Not converted, or changed since; and with 1 as third argument, whatever failed.
is_to_be_run()
{
    local out=$1 line=$2 again=$3
    read_status "$out/${line%%$'\t'*}" || return 0
    ((again)) || return 1
    ((run[status] != 0)) || [[ ${run[of]} != "$(state_of "${line#*$'\t'}")" ]]
}

# Bytes and time of change.
state_of() { stat -L -c '%s %.9Y' -- "$1" 2>/dev/null || echo '0 0'; }

# A signal, or no start: such a run says nothing about the input.
was_interrupted() { (($1 == 126 || $1 == 127 || ($1 > 128 && $1 < 255))); }

# First renamed, so that nobody who may still write there can finish it.
discard()
{
    local dead
    while dead=$1/work/dead.$RANDOM && [[ -e $dead ]]; do :; done
    mv -T -- "$2" "$dead" && rm -rf -- "$dead"
}

# What could not be removed when it was discarded.
discard_the_dead() { rm -rf -- "$1"/work/dead.* || note "cannot remove all of $1/work/dead.*"; }

# What interrupted runs of this input left.
discard_left_overs()
{
    local old
    for old in "$1/work/$2".*; do
        [[ ! -d $old ]] || discard "$1" "$old" || true
    done
}

make_work_folder()
{
    local try
    for try in 1 2 3 4 5 6 7 8 9; do
        work=$1/work/$2.$RANDOM
        ! mkdir -- "$work" 2>/dev/null || return 0
    done
    note "cannot make a folder in $1/work (tried $try times)"
    return 1
}

micros() { printf '%s' "${EPOCHREALTIME/./}"; }

# What is written down of a run: status_text WORK INPUT STATE STATUS MICROS PROGRAM_SUM
status_text()
{
    printf 'input\t%s\n' "$2"
    printf 'of\t%s\n' "$3"
    printf 'status\t%d\n' "$4"
    printf 'traces\t%d\n' "$(find "$1" -type f -name '*.sac' -printf x | wc -c)"
    printf 'read\t%s\n' "${3%% *}"
    printf 'written\t%s\n' "$(find "$1" -type f ! -name run.out ! -name run.err -printf '%s\n' |
        awk '{ sum += $1 } END { printf "%.0f", sum }')"
    printf 'seconds\t%d.%03d\n' $(($5 / 1000000)) $(($5 / 1000 % 1000))
    printf 'program_sum\t%s\n' "$6"
}

# From work to its place. What is there by now is replaced only when that was asked for; somebody else's run of the
# same input is as good as this one.
publish()
{
    local out=$1 name=$2 again=$3
    sync -f -- "$work" || { note "not everything of $name reached the disk"; return 1; }
    # Taken over, it must not throw away what came in its stead.
    ((again == 0)) || [[ ! -d $work || ! -e $out/$name ]] || discard "$out" "$out/$name"
    mv -T -- "$work" "$out/$name" 2>/dev/null || [[ -f $out/$name/run.status ]] ||
        { note "the run of $name was taken over"; return 1; }
}

# run_input OUT AGAIN LINE: one line of a plan, from nothing to its folder. True when vx_sac ended with 0.
run_input()
{
    local out=$1 again=$2 name=${3%%$'\t'*} input=${3#*$'\t'} work text program switches status=0 began state
    is_to_be_run "$out" "$3" "$again" || { ((run[status] == 0)); return; }
    text=$(cat -- "$out/settings") || return
    program=$(lines_of "$text" program)
    mapfile -t switches < <(lines_of "$text" switch)
    discard_left_overs "$out" "${name: -key_length}"
    make_work_folder "$out" "${name: -key_length}" || return
    state=$(state_of "$input")
    began=$(micros)
    "$program" "$input" "$work" "${switches[@]}" >"$work/run.out" 2>"$work/run.err" </dev/null || status=$?
    text=$(status_text "$work" "$input" "$state" "$status" $(($(micros) - began)) "$(lines_of "$text" program_sum)")
    { printf '%s\n' "$text" >"$work/run.status.part" && mv -T -- "$work/run.status.part" "$work/run.status"; } ||
        { note "cannot write down how the run of $input ended"; return 1; }
    was_interrupted "$status" || publish "$out" "$name" "$again" || return
    return "$status"
}

# ---- the table ---------------------------------------------------------------------------------------------------

meaning_of()
{
    case $1 in
    0) echo "converted to the end" ;;
    1) echo "the input is empty" ;;
    2) echo "mistake on the command line" ;;
    10) echo "the output path does not exist" ;;
    20) echo "a file could not be opened" ;;
    21) echo "a file could not be read" ;;
    22) echo "a file could not be written" ;;
    23) echo "no free name was left for a trace" ;;
    40 | 255) echo "out of memory" ;;
    126 | 127) echo "the program could not be started; to be done again" ;;
    *)
        if (($1 > 128)); then
            echo "ended by signal $(($1 - 128)); to be done again"
        elif (($1 > 32)); then
            # shellcheck disable=SC2059 # a character by its code
            echo "a packet had no home, its type begins with $(printf "\\x$(printf %x "$1")")"
        else
            echo "unknown"
        fi
        ;;
    esac
}

# Fills `run` for a line of the plan, and says in meaning what is to be thought of it.
judge()
{
    local out=$1 name=${2%%$'\t'*} input=${2#*$'\t'} folder=$1/${2%%$'\t'*} left
    if ! read_status "$folder"; then
        folder=-
        for left in "$out/work/${name: -key_length}".*; do
            [[ ! -d $left ]] || folder=$left
        done
        read_status "$folder" || run=([status]=- [traces]=- [read]=- [written]=- [seconds]=-)
    fi
    run[folder]=$folder
    if [[ ${run[status]} == - ]]; then
        meaning="not finished; to be done again"
    else
        meaning=${meanings[${run[status]}]:=$(meaning_of "${run[status]}")}
    fi
    [[ ${run[status]} == 0 ]] || return 0
    if [[ ${run[of]} != "$(state_of "$input")" ]]; then
        meaning="the input has changed since"
    else
        good=$((good + 1))
        [[ ${run[traces]} != 0 ]] || meaning+="; it held no traces"
    fi
}

# Tabs and backslashes of a name would spoil the table.
escaped()
{
    local text=${1//\\/\\\\}
    printf '%s' "${text//$'\t'/\\t}"
}

# summarize OUT PLAN: OUT/summary.tsv, and the same for people. True when every input is converted.
summarize()
{
    local out=$1 plan=$2 line meaning all=0 good=0 meanings=()
    printf 'input\tstatus\tmeaning\ttraces\tbytes_read\tbytes_written\tseconds\tfolder\n' >"$out/summary.part"
    printf '%6s %8s %14s %14s %10s  %s\n' status traces "bytes read" "bytes written" seconds input
    while IFS= read -r line; do
        all=$((all + 1))
        judge "$out" "$line"
        printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$(escaped "${line#*$'\t'}")" "${run[status]}" "$meaning" \
            "${run[traces]}" "${run[read]}" "${run[written]}" "${run[seconds]}" "$(escaped "${run[folder]}")" >&3
        [[ $meaning == "${meanings[0]-}" ]] && meaning= || meaning=": $meaning"
        printf '%6s %8s %14s %14s %10s  %s%s\n' "${run[status]}" "${run[traces]}" "${run[read]}" "${run[written]}" \
            "${run[seconds]}" "${line#*$'\t'}" "$meaning"
    done <"$plan" 3>>"$out/summary.part"
    mv -T -- "$out/summary.part" "$out/summary.tsv"
    printf '%d of %d inputs converted to the end, %d not; the table is %s\n' "$good" "$all" $((all - good)) \
        "$out/summary.tsv"
    ((good == all))
}

# Lines of the plan that are still to be run.
pending_of()
{
    local out=$1 plan=$2 again=$3 line
    while IFS= read -r line; do
        ! is_to_be_run "$out" "$line" "$again" || printf '%s\n' "$line"
    done <"$plan"
}
