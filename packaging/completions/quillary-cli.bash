# SPDX-License-Identifier: MIT
# Completion of quillary-cli's commands, options and fixed values for bash; file names are left to the shell.

_quillary_cli()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
    local formats='ci4 ci8 i4 i8 ia16 ia4 ia8 jpeg rgb5a1 rgba16 rgba32'
    local write='-o --output --in-place --dry-run' profile='--profile --profiles'
    local texture='--offset --format --width --height --palette'
    COMPREPLY=()

    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'info convert list extract replace import-folder import-pack search verify checksum patch
            blocks unpack pack demo --help --version' -- "$current")
        return
    fi
    case $previous in
    --order) mapfile -t COMPREPLY < <(compgen -W 'z64 v64 n64' -- "$current"); return ;;
    --resize) mapfile -t COMPREPLY < <(compgen -W 'ignore keep' -- "$current"); return ;;
    --duplicates) mapfile -t COMPREPLY < <(compgen -W 'overwrite create ignore' -- "$current"); return ;;
    --format | --formats) mapfile -t COMPREPLY < <(compgen -W "$formats" -- "$current"); return ;;
    --chip) mapfile -t COMPREPLY < <(compgen -W '6101 6102 6103 6105 6106 7101 7102 7103 7105 7106' -- "$current"); return ;;
    # A file or folder, which the shell completes, or something that only the user knows.
    -o | --output | --profiles | --profile | --in | --offset | --width | --height | --palette) return ;;
    esac
    # The second word of a command that has two.
    local words=''
    case $command in
    patch) words='create apply info' ;;
    esac
    if [[ -n $words && $COMP_CWORD -eq 2 ]]; then
        [[ $current == -* ]] && words='-h --help'
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        return
    fi
    [[ -z $words ]] || command+=" ${COMP_WORDS[2]}"
    [[ $current == -* ]] || return

    local options='-h --help'
    case $command in
    info) options+=' --profiles --json' ;;
    convert) options+=" --order $write" ;;
    list) options+=" $profile --json" ;;
    extract) options+=" -o --output $texture $profile" ;;
    replace) options+=" --resize $texture $write $profile" ;;
    import-folder) options+=" $write $profile --json" ;;
    import-pack) options+=" $write --no-add $profile --json" ;;
    search) options+=" --in --formats --first-only --no-subfolders --add --duplicates --dry-run $profile --json" ;;
    verify) options+=" --gaps $profile --json" ;;
    checksum) options+=" --fix --chip $write --json" ;;
    'patch create') options+=' -o --output --dry-run --json' ;;
    'patch apply') options+=" $write --with-checksum --json" ;;
    'patch info') options+=' --json' ;;
    blocks) options+=' --json' ;;
    unpack) options+=' -o --output --overwrite --json' ;;
    pack) options+=" $write --json" ;;
    demo) options+=' --profiles' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
}

complete -o bashdefault -o default -F _quillary_cli quillary-cli
