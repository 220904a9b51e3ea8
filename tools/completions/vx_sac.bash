# shellcheck shell=bash
# Completions of the programs for bash. Each program's name leads here, see packaging/install.cmake.

# Names of files and folders that begin with what is typed; the rest of a folder's name is typed on. Files that
# programs of this kind write are no recordings. _vx_names KIND: recordings, traces, pictures, files or folders.
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
            pictures) [[ ${name,,} == *.@(png|pdf) ]] || continue ;;
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

# The options of a program and the names of their values, from the table in its help text: "-o DIR", "--json -".
_vx_options()
{
    command "$1" --help 2>/dev/null | awk '/^ +-/ {
        sub(/^ +/, "")
        sub(/  .*/, "")
        n = split($0, words, /[ ,]+/)
        value = "-"
        for (i = n; i > 0; i--) if (words[i] !~ /^-/) value = words[i]
        for (i = 1; i <= n; i++) if (words[i] ~ /^-/) print words[i], value
    }'
}

# The value of an option, by its name in the help text.
_vx_value()
{
    case $1 in
    DIR | DIRECTORY | FOLDER) _vx_names folders "$2" ;;
    FILE | LIST) _vx_names files "$2" ;;
    esac
}

# What comes as name number $2, counted from 0, of a program.
_vx_name()
{
    case $1$2 in
    vx_plot0) _vx_names pictures "$3" ;;
    vx_ls* | vx_plot*) _vx_names traces "$3" ;;
    vx_array0) _vx_names files "$3" ;;
    vx_array1) _vx_names folders "$3" ;;
    vx_mkrec0 | vx_batch* | vx_check*) _vx_names recordings "$3" ;;
    esac
}

# A program with options, values and names. After "--" come names, or the switches that vx_batch, vx_array and vx_check
# give to vx_sac.
_vx_tool()
{
    local program=${1##*/} typed=${COMP_WORDS[COMP_CWORD]} option meaning word due="" names=0 only_names=""
    local -A value=()
    COMPREPLY=()
    while read -r option meaning; do value[$option]=${meaning#-}; done < <(_vx_options "$1")
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $word == = && -n $due ]]; then
            continue
        elif [[ -n $due ]]; then
            due=""
        elif [[ -n $only_names || $word != -?* ]]; then
            names=$((names + 1))
        elif [[ $word == -- ]]; then
            only_names=yes
        else
            due=${value[$word]-}
        fi
    done
    if [[ -n $only_names && $program == vx_@(batch|array|check) ]]; then
        [[ $typed != -* ]] || _vx_sac_switch "$typed"
    elif [[ -n $due ]]; then
        _vx_value "$due" "${typed#=}"
    elif [[ $typed == -* && -z $only_names ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${!value[*]}" -- "$typed")
    else
        _vx_name "$program" "$names" "$typed"
    fi
}

complete -F _vx_sac vx_sac
complete -F _vx_tool vx_ls vx_check vx_plot vx_batch vx_array vx_mkrec
