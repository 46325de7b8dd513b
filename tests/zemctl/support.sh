# Sourced by the tests of zemctl: runs the tool under Wine and compares what it prints and how it exits.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
tool=build/windows/zemctl.exe
sim=--simulator

# A folder for the test's files, and the file that holds the last run's output.
work=build/zemctl-tests/$(basename "$0" .sh)
mkdir -p $work
out=$work/out

# expect CODE TEXT ARGUMENTS...: the run ends with CODE and its output has a line that contains TEXT.
expect() {
  local code=$1 text=$2 status=0
  shift 2
  wine $tool "$@" 2>&1 | tr -d '\r' >$out || status=$?
  if [ "$status" -ne "$code" ] || ! grep -qF -- "$text" $out; then
    echo "zemctl $*: status $status, wanted $code and \"$text\":"
    cat $out
    exit 1
  fi
}

# says TEXT, silent_about TEXT: the last run's output has a line with it, or none.
says() {
  grep -qF -- "$1" $out || { echo "\"$1\" is missing:"; cat $out; exit 1; }
}
silent_about() {
  if grep -qF -- "$1" $out; then
    echo "\"$1\" is there:"
    cat $out
    exit 1
  fi
}
