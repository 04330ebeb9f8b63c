# How bash completes the words behind kfl. The command itself is asked what there is: its commands and
# options, and the sections and keys of configuration files.

# The commands, one a line.
_kfl_commands() {
    "$1" help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z]*\) .*/\1/p'
    echo help
}

# The options of a command, or of kfl itself, one a line. With "valued" as the last word only those that
# take a value.
_kfl_options() {
    local value=
    [ "${3-}" != valued ] || value=' [A-Z]'
    "$1" help ${2:+"$2"} 2>/dev/null |
        sed -nE "s/^ +((-[a-zA-Z]), )?(--[a-z-]+)$value.*/\2 \3/p" | tr -s ' ' '\n' | sed '/^$/d'
}

# A word as it was typed, without its quoting.
_kfl_unquoted() {
    local word=${1//\\/}
    word=${word#[\"\']}
    word=${word%[\"\']}
    printf '%s' "${word/#\~\//$HOME/}"
}

# Offers those lines of the input that begin with what was typed, quoted where they must be.
_kfl_offer() {
    local line typed
    typed=$(_kfl_unquoted "$cur")
    while IFS= read -r line; do
        [[ $line == "$typed"* ]] || continue
        case $cur in
            [\"\']*) COMPREPLY+=("$line") ;;
            *) COMPREPLY+=("$(printf '%q' "$line")") ;;
        esac
    done
}

_kfl_offer_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
}

# The sections of a file, of which the first has no name.
_kfl_sections() {
    echo
    "$1" ini -- "$2" 2>/dev/null | sed -n 's/^\[\(.*\)\]$/\1/p'
}

_kfl_keys() {
    "$1" ini -- "$2" "$3" 2>/dev/null | sed 's/=.*//'
}

_kfl_value_of_option() {
    case $1 in
        --mode) _kfl_offer < <(printf '%s\n' ecb cbc cfb) ;;
        --block) _kfl_offer < <(printf '%s\n' 16 24 32) ;;
        --priority) _kfl_offer < <(printf '%s\n' emerg alert crit err warning notice info debug \
            {user,daemon,local{0..7}}.{emerg,alert,crit,err,warning,notice,info,debug}) ;;
        --key-env) mapfile -t COMPREPLY < <(compgen -e -- "$cur") ;;
        --key-file | --output) _kfl_offer_files ;;
    esac
}

# FILE SECTION KEY VALUE, as far as the options ask for them.
_kfl_ini_operand() {
    local kfl=$1 file
    file=$(_kfl_unquoted "${operands[0]-}")
    case ${#operands[@]}$form in
        0*) _kfl_offer_files ;;
        *--check) ;;
        1*) _kfl_offer < <(_kfl_sections "$kfl" "$file") ;;
        2*) _kfl_offer < <(_kfl_keys "$kfl" "$file" "$(_kfl_unquoted "${operands[1]}")") ;;
        3--set) _kfl_offer < <("$kfl" ini -- "$file" "$(_kfl_unquoted "${operands[1]}")" \
            "$(_kfl_unquoted "${operands[2]}")" 2>/dev/null) ;;
    esac
}

_kfl_operand() {
    local kfl=$1 number=${#operands[@]}
    case $command:$number in
        ini:*) _kfl_ini_operand "$kfl" ;;
        keyvalue:0 | decrypt:[01] | encrypt:[01]) _kfl_offer_files ;;
        keyvalue:*) _kfl_offer < <(_kfl_keys "$kfl" "$(_kfl_unquoted "${operands[0]}")" '') ;;
        alarm:0) _kfl_offer < <(printf '%s\n' on off) ;;
        listen:0 | send:0) _kfl_offer < <(printf '%s\n' unix udp) ;;
        listen:1 | send:1)
            [ "${operands[0]}" != unix ] || _kfl_offer_files
            [ "$command:${operands[0]}" != send:udp ] || mapfile -t COMPREPLY < <(compgen -A hostname -- "$cur") ;;
        run:0) mapfile -t COMPREPLY < <(compgen -c -- "$cur") ;;
        run:*) _kfl_offer_files ;;
        help:0) _kfl_offer < <(_kfl_commands "$kfl" | grep -vx help) ;;
    esac
}

_kfl() {
    local kfl=${COMP_WORDS[0]} cur=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]-}
    local operands=() form='' word valued i pending='' options=yes
    kfl=${kfl/#\~\//$HOME/}
    COMPREPLY=()
    if [ "$COMP_CWORD" = 1 ]; then
        case $cur in
            -*) _kfl_offer < <(_kfl_options "$kfl" '') ;;
            *) _kfl_offer < <(_kfl_commands "$kfl") ;;
        esac
        return
    fi
    valued=" $(_kfl_options "$kfl" "$command" valued | tr '\n' ' ')"
    for ((i = 2; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $options$word in
            yes=) continue ;;  # bash makes --mode=ecb three words
            yes--) options=; pending=; continue ;;
        esac
        if [ -n "$pending" ]; then
            pending=
        elif [[ -n $options && $word == -?* ]]; then
            [[ $valued != *" $word "* ]] || pending=$word
            [[ $word != --set && $word != --check ]] || form=$word
        else
            operands+=("$word")
            # What stands behind the first word of a command line is that command's.
            [ "$command" != run ] || options=
        fi
    done
    [ "$cur" != = ] || cur=
    if [ -n "$pending" ]; then
        _kfl_value_of_option "$pending"
    elif [[ -n $options && $cur == -* && $command != help ]]; then
        _kfl_offer < <(_kfl_options "$kfl" "$command")
    else
        _kfl_operand "$kfl"
    fi
}

complete -F _kfl kfl
