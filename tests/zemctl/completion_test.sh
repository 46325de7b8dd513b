#!/usr/bin/env bash
# zemctl completion: what bash really completes, and that the script for PowerShell has the same tables.
source "$(dirname "$0")/support.sh"

script=$work/zemctl.bash
$zemctl completion bash >$script
if grep -q $'\r' $script; then
  echo "the script has carriage returns"
  exit 1
fi

# completes WANTED WORDS...: what bash offers for the last of the words, in this order.
completes() {
  local wanted=$1 got
  shift
  got=$(env -i PATH="$PATH" bash --norc -uc '
    source "$0"
    COMP_WORDS=(zemctl "$@") COMP_CWORD=$#
    _zemctl
    echo "${COMPREPLY[*]-}"' $script "$@")
  [ "$got" = "$wanted" ] || { echo "\"zemctl $*\" completes to \"$got\", wanted \"$wanted\""; exit 1; }
}
completes 'reg recover' re
completes 'get set' reg ''
completes 'get' reg g
completes 'isp sensor vcm codec' reg get ''
completes 'sensor' --json reg get s
completes '' reg get isp ''
completes '1 2' reg get isp 0 --width ''
completes '--width' reg get isp 0 --wi
completes 'vendor tirella' nvmem read --unit ''
completes 'tirella' --simulator nvmem read 0 4 --unit t
completes 'info' --name list inf
completes 'info' --simulator-fault unplug@1 inf
completes 'get set' --vid 0x5A45 rom reg ''
completes '--simulator --simulator-options --simulator-fault' list --simu
completes '' bmp --simu
completes 'yuy2' bmp y
completes '8 16 24 32' wav in out --bits ''
completes '--yes' nvmem write --y
completes '' nvmem read --y
completes 'bash powershell' completion ''
# Words that are none of a few are left to the completion of file names.
[ "$(bash --norc -c 'source "$0"; complete -p zemctl' $script)" = 'complete -o default -F _zemctl zemctl' ]

# The tables of both scripts, and the tree as the help tells it.
$zemctl completion powershell >$work/zemctl.ps1
expect 0 'Register-ArgumentCompleter -Native -CommandName zemctl, zemctl.exe' --json completion powershell
for command in '' rom 'rom reg' nvmem; do
  $zemctl $command --help | tr -d '\r' >"$work/help-${command// /-}"
done
python3 - $script $work <<'PYTHON'
import re, sys
script, work = sys.argv[1:]
bash = open(script).read()
powershell = open(f"{work}/zemctl.ps1").read()
tables = {}
for name in ("names", "options", "values"):
    lines = re.search(rf"_zemctl_{name}\(\) {{(.*?)\n}}", bash, re.S)[1]
    tables[name] = {key: words.split(" ") for key, words in re.findall(r"'(.*?)'\) REPLY='(.*?)' ;;", lines)}
    lines = re.search(rf"\${name} = @{{(.*?)\n  }}", powershell, re.S)[1]
    other = {key: re.findall("'(.*?)'", words) for key, words in re.findall(r"'(.*?)' = @\((.*?)\)(?:\n|$)", lines)}
    if tables[name] != other or not other:
        sys.exit(f"the tables {name} differ")
names = tables["names"]
for command in ("", "rom", "rom reg", "nvmem"):
    text = open(f"{work}/help-{command.replace(' ', '-')}").read()
    told = re.findall(r"^  ([a-z0-9-]+) ", re.search(r"\nSubcommands:\n(.*?)\n\n", text, re.S)[1], re.M)
    if told != names[command]:
        sys.exit(f'the help of "{command}" tells {told}, the tables have {names[command]}')
# Every name of a command leads on or has options of its own.
for command, below in names.items():
    for name in below:
        path = f"{command} {name}".strip()
        if path not in tables["options"] or "--help" not in tables["options"][path]:
            sys.exit(f'"{path}" has no options')
# Braces, brackets and quotes of the script for PowerShell close.
stack = []
bare = re.sub(r"'[^']*'|\"[^\"]*\"|#[^\n]*", "", powershell)
for character in bare:
    if character in "({[":
        stack.append({"(": ")", "{": "}", "[": "]"}[character])
    elif character in ")}]" and (not stack or stack.pop() != character):
        sys.exit("unbalanced " + character)
if stack or "'" in bare or '"' in bare:
    sys.exit("unbalanced at the end")
PYTHON
