# SPDX-License-Identifier: MIT
# Completion of quillary-cli for bash. The program itself says what can come next; files are left to the shell.

_quillary_cli()
{
    local word words=() lines=() current kind
    COMPREPLY=()
    # A word is as it was typed; an "=" comes as a word of its own.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        word=${word#[\"\']}
        word=${word//\\/}
        [[ $word == = ]] || words+=("$word")
    done
    [[ ${COMP_WORDS[COMP_CWORD]} != = ]] || words+=('')
    current=${words[-1]}

    mapfile -t lines < <("${COMP_WORDS[0]/#\~/$HOME}" complete "${words[@]}" 2>/dev/null)
    kind=${lines[0]}
    case $kind in
    words*) compopt +o bashdefault +o default 2>/dev/null ;;
    folders*)
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        compopt -o filenames 2>/dev/null
        ;;
    *) return ;;
    esac
    for word in "${lines[@]:1}"; do
        COMPREPLY+=("${word%%$'\t'*}")
    done
    if [[ $kind == *open ]]; then # Paths in a table and lists: quoted as file names are, and more may follow.
        compopt -o filenames -o nospace 2>/dev/null
    fi
}

complete -o bashdefault -o default -F _quillary_cli quillary-cli
