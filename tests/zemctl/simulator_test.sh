#!/usr/bin/env bash
# zemctl --simulator: a run finds its own cameras and no others, whatever other runs do and however
# they ended; and what is wrong with an option is said with its name.
source "$(dirname "$0")/support.sh"

head -c 1500 /dev/zero >$work/image.bin
options() { echo "{\"cameras\":[{\"productId\":$((0x1000 + $1)),\"name\":\"Camera $1\"}]}"; }

# ask VARIABLE: a run that waits at a question, with its camera simulated; VARIABLE gets its number.
rm -f $work/answers
mkfifo $work/answers
exec 3<>$work/answers
ask() {
  : >$work/question
  env --default-signal=INT $zemctl --simulator update calibration $work/image.bin \
    <$work/answers >$work/question 2>&1 3>&- &
  printf -v "$1" %s $!
  for _ in {1..500}; do
    grep -qF 'Go on?' $work/question && return
    sleep 0.02
  done
  echo "no question:"
  cat $work/question
  exit 1
}

# ---- Side by side ----

ask waiting
expect 3 'no video-input device is attached' list
expect 3 'no video-input device is attached' $sim --simulator-options '{"cameras":[]}' list
expect 3 'no camera matches' $sim --simulator-options "$(options 0)" info

runs=()
for run in {1..20}; do
  $zemctl $sim --simulator-options "$(options "$run")" list >$work/list-"$run" 2>&1 3>&- &
  runs+=($!)
done
for run in {1..20}; do
  status=0
  wait ${runs[run - 1]} || status=$?
  path=$(printf 'usb#vid_5a45&pid_%04x&mi_00#zem-simulator&0' $((0x1000 + run)))
  if [ $status -ne 0 ] || [ "$(grep -c '^  index:' $work/list-"$run")" -ne 1 ] ||
    ! grep -qF "  name:             Camera $run" $work/list-"$run" ||
    ! grep -qF "$path" $work/list-"$run"; then
    echo "run $run of twenty at once: status $status"
    cat $work/list-"$run"
    exit 1
  fi
done

# ---- Ends ----

# stop SIGNAL: the run that waits ends by it.
stop() {
  local status=0
  kill -"$1" "$waiting"
  wait "$waiting" 2>/dev/null || status=$?
  [ $status -eq "$2" ] || { echo "$1 at the question: status $status"; cat $work/question; exit 1; }
  expect 3 'no video-input device is attached' list
}
stop KILL 137
ask waiting
stop INT 12
grep -qF "zemctl: stopped by the user." $work/question
grep -qF "Camera: nothing was done" $work/question
ask waiting
echo no >&3
status=0
wait "$waiting" || status=$?
[ $status -eq 11 ] || { echo "answered with no: status $status"; exit 1; }
expect 3 'no video-input device is attached' list

# ---- Options that are wrong ----

# wrong TEXT ARGUMENTS...: a usage error with this text.
wrong() {
  local text=$1
  shift
  expect 2 "$text" $sim "$@" list
}
wrong '--simulator-options: ' --simulator-options nonsense
wrong '--simulator-options: simulator options are not a JSON object' --simulator-options '[1]'
wrong '--simulator-options: unknown simulator option "camera"' --simulator-options '{"camera":[]}'
wrong '--simulator-options: "cameras" is not an array' --simulator-options '{"cameras":{"a":{}}}' \
  --simulator-fault fail@1
wrong '--simulator-options: ' --simulator-options '{"cameras":[{"faults":3}]}' --simulator-fault fail@1
wrong '--simulator-options: more cameras than can be simulated at once' \
  --simulator-options '{"cameras":[{},{},{},{},{},{},{},{},{}]}'
wrong "--simulator-options: the state file \"$work/nowhere/state.json\" cannot be written" \
  --simulator-options "{\"cameras\":[{\"state\":\"$work/nowhere/state.json\"}]}"
wrong '--simulator-fault: "nonsense" is not a fault' --simulator-fault nonsense
wrong '--simulator-fault: "fail@0" is not a fault' --simulator-fault fail@1 --simulator-fault fail@0
wrong '--simulator-fault is for the first camera, and --simulator-options has none' \
  --simulator-options '{"cameras":[]}' --simulator-fault fail@1
wrong '--state is for the first camera, and --simulator-options has none' \
  --simulator-options '{"cameras":[]}' --state $work/state.json
wrong "--state: the state file \"$work/nowhere/state.json\" cannot be written" \
  --state $work/nowhere/state.json
echo nonsense >$work/state.json
wrong "--state: the state file \"$work/state.json\" is not a camera's" --state $work/state.json
echo '{"flash":{"size":1,"pages":{}}}' >$work/state.json
wrong "--state: the state file \"$work/state.json\" is another camera's" --state $work/state.json
expect 2 '"message": "--simulator-fault: ' --json $sim --simulator-fault nonsense list
