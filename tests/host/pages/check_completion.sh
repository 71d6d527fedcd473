#!/bin/bash
# Completes the last words of lines as a shell does by the command's own script.
# Usage: check_completion.sh bash|zsh|fish COMMAND
# Ends with 77 where it cannot be tried: zsh completes only at a terminal, which a bare chroot does not have.
set -euo pipefail
shell=$1 command=$2
[[ $shell != zsh ]] || zsh -f -c 'zmodload zsh/zpty; zpty prompt true' || { echo "no pseudo terminal for zsh"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
"$command" generate "$shell" >script
# Presets are asked for as the line says.
PATH=$(dirname "$command"):$PATH
export HOME=$work

# What may stand in place of the line's last word; at a prompt, bash divides words at ":" and "=".
complete_in_bash() {
    bash -c 'source ./script
        compopt() { :; }
        COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDBREAKS=$2
        _nifikral && printf "%s\n" "${COMPREPLY[@]}"' - "$1" "${2:-}"
}
complete_in_fish() {
    fish --no-config -c 'source ./script; complete -C$argv[1]' "$1" | cut -f1
}
# Presses the tabulator key at a prompt, and waits until the line is complete or the shell prints nothing more.
complete_in_zsh() {
    timeout 30 zsh -f -c 'zmodload zsh/zpty
        zpty prompt TERM=dumb zsh -f -i
        zpty -w prompt "PS1=; stty -echo; autoload -U compinit; compinit -u -D; source ./script; print RE\ADY"
        zpty -r prompt printed "*READY*"
        zpty -w -n prompt "$1"$'"'\t'"'
        zpty -r prompt printed "*${1% *} $2*" && print -r -- $2' - "$1" "$2" || echo nothing
}

while IFS='|' read -r line word; do
    "complete_in_$shell" "$line" "$([[ $shell == zsh ]] && echo "$word")" >printed
    [[ $(<printed) == "$word" ]] || { echo "'$line' is not completed by '$word' but by '$(<printed)'"; exit 1; }
done <<'LINES'
nifikral sl|slideshow
nifikral apply --keep|--keep-going
nifikral apply in.mp4 out.mp4 aged|aged_film
nifikral apply -q --threads 2 in.mp4 out.mp4 gray rotate:x=3:sc|rotate:x=3:scale=
nifikral apply in.mp4 out.mp4 rotate@2s-5s:sc|rotate@2s-5s:scale=
nifikral apply in.mp4 out.mp4 gray:inside=ell|gray:inside=ellipse,
nifikral apply in.mp4 out.mp4 @drea|@dream
nifikral apply in.mp4 out.mp4 colorfilter:color=or|colorfilter:color=orange
nifikral slideshow holiday --fit c|crop
nifikral menu menu_comm|menu_common
nifikral info submenu_f|submenu_festival
nifikral init submenu_f|submenu_festival
nifikral init dis|disc
nifikral generate man-|man-effects
nifikral title x in.mp4 out.mp4 --place bottom-l|bottom-left
nifikral plan --chunks 3 slid|slideshow
nifikral plan --chunks 3 apply in.mp4 out.mp4 aged|aged_film
nifikral concat --last 99 slideshow holiday --fit c|crop
nifikral apply a.jpg -o out/ aged|aged_film
nifikral help conc|concat
LINES
if [[ $shell == bash ]]; then
    [[ $(complete_in_bash 'nifikral apply a b rotate:sc' ' :=@') == 'scale=' ]]
    [[ $(complete_in_bash 'nifikral apply a b @drea' ' :=@') == 'dream' ]]
fi
