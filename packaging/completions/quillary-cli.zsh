#compdef quillary-cli
# SPDX-License-Identifier: MIT
# Completion of quillary-cli for zsh. The program itself says what can come next; files are left to the shell.

local -a lines names shown more
local line kind
lines=("${(@f)$(${(Q)words[1]/#\~/$HOME} complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
kind=$lines[1]
case $kind in
files*) _files; return ;;
folders*) _files -/; return ;;
esac
for line in "${(@)lines[2,-1]}"; do
    [[ -n $line ]] || continue
    names+=("${line%%$'\t'*}")
    shown+=("${line/$'\t'/  -- }")
done
(( $#names )) || return 1
[[ $kind == *open ]] && more=(-S '')
if [[ "$shown" == *'  -- '* ]]; then
    compadd -l -d shown -- "${names[@]}"
else
    compadd "${more[@]}" -- "${names[@]}"
fi
