# shellcheck shell=bash
# What the trials in a bare Debian 12 root share, to be read behind common.sh. A trial calls bare_arguments with its
# arguments, then fresh_root and bring_project as often as it likes, and runs commands by inside.
# Needs root, and a few GB in FOLDER, which must lie outside the project.
PATH=$PATH:/usr/sbin:/sbin

suite=bookworm
from=commit
folder=
root=
fresh=
inner=
trash=

# bare_arguments [--tree] [FOLDER]: see the trials for what they mean.
bare_arguments()
{
    local argument lock
    for argument in "$@"; do
        case $argument in
        --tree) from=tree ;;
        -*) die "unknown switch '$argument'" ;;
        *) folder=$argument ;;
        esac
    done
    ((EUID == 0)) || die "must be run as root: it makes a root folder and enters it"
    scripts/setup bare

    if [[ -n $folder ]]; then
        folder=$(cd -- "$OLDPWD" && realpath -m -- "$folder")
        trash=$folder/root
    else
        folder=$(mktemp -d /var/tmp/vx-bare.XXXXXX)
        trash=$folder
    fi
    [[ $folder/ != "$(pwd -P)"/* ]] || die "$folder lies inside the project"
    mkdir -p -- "$folder"
    exec {lock}>"$folder/lock"
    flock --nonblock "$lock" || die "another trial is at work in $folder"
    root=$folder/root
    fresh=$folder/$suite-minbase.tar
    trap clean_up EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
}

# Ends what still runs inside. What was mounted lives in a name space of its own and goes with it.
clean_up()
{
    [[ -z $inner ]] || { kill -KILL "$inner" && sleep 1; } 2>/dev/null || true
    rm -rf --one-file-system -- "$trash"
}

mirror_of_apt()
{
    # shellcheck disable=SC2016 # the names are apt's
    apt-get indextargets --format '$(RELEASE) $(REPO_URI)' 'Created-By: Packages' 'Component: main' |
        awk -v suite="$suite" '$1 == suite { print $2; exit }'
}

make_fresh_root()
{
    local mirror include=()
    mirror=$(mirror_of_apt)
    [[ -n $mirror ]] || die "apt's sources name no mirror that carries $suite"
    [[ $mirror != https:* ]] || include=(--include=ca-certificates)
    step "bare root made" "$folder/debootstrap.log" \
        debootstrap --variant=minbase "${include[@]}" "$suite" "$root" "$mirror"
    tar -C "$root" -cf "$fresh.part" . && mv -- "$fresh.part" "$fresh"
}

# The root anew: from the tar file of an earlier one, where there is one.
fresh_root()
{
    rm -rf --one-file-system -- "$root"
    if [[ -f $fresh ]]; then
        mkdir -p "$root"
        tar -C "$root" -xf "$fresh"
    else
        make_fresh_root
    fi
    cp -L /etc/resolv.conf "$root/etc/resolv.conf"
    local tool
    for tool in c++ gcc cmake make git; do
        ! inside sh -c "command -v $tool" >/dev/null || die "the root is not bare, it has $tool"
    done
}

# Runs a command inside the root, with /proc and terminals of its own. All of it ends with the command, or with us.
inside()
{
    local status=0
    # shellcheck disable=SC2016 # the inner shell expands them
    env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        unshare --mount --pid --fork --kill-child /bin/sh -ec '
            mount -t proc proc "$0/proc"
            mount -t devpts -o newinstance,ptmxmode=0666 devpts "$0/dev/pts"
            mount -t tmpfs tmpfs "$0/dev/shm"
            exec chroot "$0" "$@"' "$root" "$@" </dev/null &
    inner=$!
    wait "$inner" || status=$?
    inner=
    return "$status"
}

# The project's files to /opt/vx_sac.
bring_project()
{
    mkdir -p "$root/opt/vx_sac"
    if [[ $from == tree ]]; then
        tar --exclude=./build --exclude=./.git -cf - . | tar -C "$root/opt/vx_sac" --no-same-owner -xf -
    else
        local git=(git -c safe.directory="$PWD")
        [[ -z $("${git[@]}" status --porcelain) ]] || say "Note: what is not committed is not tried (see --tree)."
        "${git[@]}" archive HEAD | tar -C "$root/opt/vx_sac" -xf -
    fi
}
