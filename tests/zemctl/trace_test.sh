#!/usr/bin/env bash
# --trace, zemctl trace show and diff, --replay: what passed is written down as it happens, decoded,
# compared, and answers in place of the camera.
source "$(dirname "$0")/support.sh"

trace=$work/trace.jsonl
head -c 2048 /dev/zero | tr '\0' 'a' >$work/image.bin

# ---- Written, decoded ----

expect 0 'value:   0x5170' $sim --trace $trace reg get isp 0
expect 0 'run:            zemctl --simulator --trace' trace show $trace
says 'exit code:      0'
says 'reg get isp 0'
tr -s ' ' <$out >$work/squeezed
mv $work/squeezed $out
says 'camera 0 set vendor 1 ISP command read register isp 0x0000 0a 00 00 00 00 00 00 00 done'
says 'camera 0 get vendor 2 reply to an ISP command read register isp 0x0000 0x5170 accepted (0x00) 00 00 70 51 00 00 00 00 done'
silent_about 'lookup'
expect 0 'lookup' trace show $trace --all
expect 0 '"place": "isp 0x0000"' --json trace show $trace

# A failure is told by name.
expect 7 'the camera is gone' $sim --simulator-fault unplug@2 --trace $trace reg get isp 0
expect 0 'the camera is gone (0x8007048F)' trace show $trace
says 'exit code:      7'

# Every command that cannot write its trace ends before anything is sent.
expect 9 'cannot be created' $sim --trace $work/none/trace.jsonl reg get isp 0
expect 9 'cannot be created' $sim --trace $work/none/trace.jsonl list

# ---- A run that is killed leaves its trace ----

# leaves LINES: the trace is one, and of a run without an end; it has that many lines or more.
leaves() {
  expect 0 'complete:       no' trace show $trace --all
  [ "$(wc -l <$trace)" -ge "$1" ] || { echo "only $(wc -l <$trace) lines"; exit 1; }
}
# until_there TEXT: waits until the trace has it.
until_there() {
  for _ in $(seq 100); do
    grep -qF -- "$1" $trace 2>/dev/null && return
    sleep 0.1
  done
  echo "no \"$1\" in $trace"
  exit 1
}
ended() {
  kill -KILL "$1"
  wait "$1" 2>/dev/null || true
}
rm -f $trace
mkfifo -m 600 $work/answers 2>/dev/null || true
# At a question.
$zemctl $sim --trace $trace update firmware --chip 517x $work/image.bin <>$work/answers >$out 2>&1 &
until_there '"type":"open"'
ended $!
leaves 3
# In a burn, which 517x waits for in silence.
rm -f $trace
$zemctl $sim --yes --trace $trace update firmware --chip 517x $work/image.bin >$out 2>&1 &
until_there '"data":"01 01 03 00'
ended $!
leaves 40
rm $work/answers

# ---- Serial numbers ----

expect 0 'a0 a1 a2' $sim --trace $trace tune sensor-sn
grep -q 'a0 a1 a2' $trace
grep -q 'zem-simulator&0' $trace
expect 0 'a0 a1 a2' $sim --trace $trace --trace-without-serials tune sensor-sn
! grep -q 'a0 a1 a2\|zem-simulator&' $trace || { echo "a serial number is in $trace"; exit 1; }
expect 0 'serial numbers: left out' trace show $trace
expect 0 'serial number: 00 00 00' --replay $trace tune sensor-sn
expect 2 '--trace-without-serials requires --trace' $sim --trace-without-serials info

# ---- Compared ----

expect 0 'firmware version:' $sim --trace $trace info
expect 0 'firmware version:' $sim --trace $work/other.jsonl info
expect 0 'lines that differ: 0' trace diff $trace $work/other.jsonl
expect 7 'not read' $sim --simulator-fault fail@2 --trace $work/other.jsonl info
expect 10 'the traces differ' trace diff $trace $work/other.jsonl
says 'first on the left:  line 17: {"type":"transfer"'
says '"data":"00 00 01 02 03 04 05 06","result":"0x00000000"}'
says 'first on the right: line 17: {"type":"transfer"'
says '"data":"","result":"0x8007001F"}'
says 'lines that differ:  2'
expect 10 '"lines_that_differ": 2' --json trace diff $trace $work/other.jsonl

# ---- Malformed ----

expect 9 'is not a trace: line 1: ' trace show $work/image.bin
head -n 3 $trace >$work/bad.jsonl
echo '{"type":"transfer","ms":1}' >>$work/bad.jsonl
expect 9 'is not a trace: line 4: "camera" is missing' trace show $work/bad.jsonl
expect 9 'is not a trace: line 4: "camera" is missing' trace diff $trace $work/bad.jsonl
expect 9 'is not a trace: line 4: "camera" is missing' --replay $work/bad.jsonl info
expect 9 'cannot be opened' trace show $work/none.jsonl

# ---- Replayed ----

expect 0 'firmware version:   01 02 03 04 05 06' --replay $trace info
# The trace of a replay is the trace that it was replayed from.
expect 0 'firmware version:' --replay $trace --trace $work/other.jsonl info
expect 0 'lines that differ: 0' trace diff $trace $work/other.jsonl
expect 9 'line 16: expected set vendor 1 (ISP command, 8 bytes): 0b 00 00 00 00 00 00 00, came set vendor 1 (ISP command, 8 bytes): 0a 00 00 00 00 00 00 00' \
  --replay $trace reg get isp 0
expect 9 '"code": 9' --json --replay $trace reg get isp 0
expect 9 'came the end of the run' --replay $trace xu check vendor
expect 9 "the trace has no answer to a look at the system's audio devices" --replay $trace audio list
expect 2 'excludes' $sim --replay $trace info
