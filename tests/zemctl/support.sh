# Sourced by the tests of zemctl: runs the tool and compares what it prints and how it exits. ZEM_SYSTEM
# says which of the two: windows, under Wine (without it), or linux.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
system=${ZEM_SYSTEM:-windows}
sim=--simulator

# A folder for the test's files, and the file that holds the last run's output.
work=build/zemctl-tests/$system/$(basename "$0" .sh)
mkdir -p $work
out=$work/out

# $zemctl is the words that run the tool, and $command_log the file of the library's command log. The rest
# is what differs in the output: how a system names the n-th simulated camera (path, device_path) and its
# microphone (microphone_path), and the encoding of the command log.
case $system in
  windows)
    tool=build/windows/zemctl.exe
    library=build/windows/ZemUVCExtApi.dll
    zemctl="wine $tool"
    command_log=$(echo "${WINEPREFIX:-$HOME/.wine}"/drive_c/windows/[Tt]emp)/ZemWrenCmdLog.txt
    log_encoding=utf-16-le
    usb_path() { echo "@device:sw:{$1}\\usb#vid_5a45&pid_8c00&mi_$2#zem-simulator&$3"; }
    path() { usb_path 860BB310-5D01-11D0-BD3B-00A0C911CE86 00 "$1"; }
    microphone_path() { usb_path 33D9A762-90C8-11D0-BD43-00A0C911CE86 02 "$1"; }
    device_path() { echo "\\\\?\\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&$1"; }
    ;;
  linux)
    tool=build/linux/zemctl
    library=build/linux/libZemUVCExtApi.so
    zemctl=$tool
    export TMPDIR=$PWD/$work
    command_log=$work/ZemWrenCmdLog.txt
    log_encoding=utf-8
    path() { echo "usb#vid_5a45&pid_8c00&mi_00#zem-simulator&$1"; }
    microphone_path() { echo "usb#vid_5a45&pid_8c00&mi_02#zem-simulator&$1"; }
    device_path() { echo "/dev/v4l/by-path/zem-simulator-$1-video-index0"; }
    ;;
esac

# expect CODE TEXT ARGUMENTS...: the run ends with CODE and its output has a line that contains TEXT.
expect() {
  local code=$1 text=$2 status=0
  shift 2
  $zemctl "$@" 2>&1 | tr -d '\r' >$out || status=$?
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
