# shellcheck shell=bash
# Completions of the programs for bash. Each program's name leads here, see packaging/install.cmake.

# Names of files and folders that begin with what is typed; the rest of a folder's name is typed on. Files that
# programs of this kind write are no recordings. _vx_names KIND: recordings, traces or folders.
_vx_names()
{
    local name
    COMPREPLY=()
    while IFS= read -r name; do
        if [[ ! -d $name ]]; then
            case $1 in
            folders) continue ;;
            recordings) [[ ${name,,} != *.@(sac|vxl|qcc|ini) ]] || continue ;;
            traces) [[ ${name,,} == *.sac ]] || continue ;;
            esac
        fi
        COMPREPLY+=("$name")
    done < <(compgen -f -- "$2")
    compopt -o filenames 2>/dev/null
}

# A value is glued to its letter: first the letter is offered, then letter and value. The letter stays as typed.
_vx_sac_switch()
{
    local typed=$1 letter=${1:0:2} values=() value
    case ${letter^^} in
    -)
        COMPREPLY=(-D -L -N -P -Q -R -S -T -V)
        compopt -o nospace 2>/dev/null
        return
        ;;
    -N) values=(0 1 A I) ;;
    -P) values=(0 1 2 3 4) ;;
    -D | -L | -Q | -V) values=(Y N + -) ;;
    esac
    for value in "${values[@]}"; do
        [[ ${letter^^}$value == "${typed^^}"* ]] && COMPREPLY+=("$letter$value")
    done
}

# The input first, then the output path, and no third name.
_vx_sac()
{
    local typed=${COMP_WORDS[COMP_CWORD]} word names=0
    COMPREPLY=()
    if [[ $typed == -* ]]; then
        _vx_sac_switch "$typed"
        return
    fi
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || names=$((names + 1))
    done
    case $names in
    0) _vx_names recordings "$typed" ;;
    1) _vx_names folders "$typed" ;;
    esac
}

# The long options that a program's help text tells of, and the names that follow them.
_vx_tool()
{
    local program=$1 typed=$2 kind=traces
    COMPREPLY=()
    if [[ $typed == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(command "$program" --help 2>/dev/null |
            grep -oE -- '(^|[ ,[])--[a-z][a-z-]*' | tr -d ' ,[' | sort -u)" -- "$typed")
        return
    fi
    [[ $program != vx_@(mkrec|batch|array) ]] || kind=recordings
    _vx_names "$kind" "$typed"
}

complete -F _vx_sac vx_sac
complete -F _vx_tool vx_ls vx_plot vx_batch vx_array vx_mkrec
