# SPDX-License-Identifier: MIT
# Completion of quillary-cli for fish. The program itself says what can come next; files are left to the shell.

function __quillary_cli_complete
    set -l words (commandline -opc)
    set -l current (string unescape -- (commandline -ct))
    set -l lines ($words[1] complete $words[2..-1] "$current" 2>/dev/null)
    switch "$lines[1]"
        case 'files*'
            __fish_complete_path "$current"
        case 'folders*'
            __fish_complete_directories "$current"
    end
    printf '%s\n' $lines[2..-1]
end

complete -c quillary-cli -f -a '(__quillary_cli_complete)'
