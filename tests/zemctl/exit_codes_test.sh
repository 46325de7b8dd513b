#!/usr/bin/env bash
# Exit codes of zemctl: one for each kind of failure, whatever command meets it.
source "$(dirname "$0")/support.sh"

head -c 100 /dev/zero >$work/image.bin

# ---- The page, the help and the tool say the same ----

expect 0 'Exit codes:' --help
tr -d '\r' <$out | sed -n '/^Exit codes:/,$p' >$work/help
for code in {0..13}; do
  meaning=$(sed -nE "s/^ *$code ([^(]+[^ (]).*/\1/p" $work/help)
  [ -n "$meaning" ] && grep -qE "^\| $code \| $meaning" docs/zemctl.md ||
    { echo "exit code $code: docs/zemctl.md does not say \"$meaning\""; exit 1; }
done

# ---- 8: the camera lacks the unit, which every command that needs it says ----

without=($sim --yes --simulator-options '{"cameras":[{"vendorUnit":false,"h264Unit":true}]}')
for command in info 'reg get isp 0' 'reg set isp 0 1' 'reg get sensor 0' 'reg get codec 0' 'command isp 0b' \
  'command vcp-ex 0b' 'xu get vendor 10 8' 'xu set vendor 1 00' 'h264 list' 'h264 start 640x480' \
  'h264 fps 30' 'h264 keyframe' 'tune af 1' 'tune build-date' 'tune sensor-sn' 'tune awb-gain' 'tune misc' \
  'nvmem read 0 4' 'nvmem write 0 00' 'table list' 'table dump' "table init $work/image.bin" \
  "data read $work/back" "data send $work/image.bin" "flash read 0 16 $work/back" \
  "update calibration $work/image.bin" "update firmware --chip 516x $work/image.bin" \
  "update firmware --chip 517x $work/image.bin" "update flash --param2 2 --param3 0 $work/image.bin" \
  'multicast select 1' 'multicast layer 1' 'multicast commit 1 2 3'; do
  [ "$command" != "table init $work/image.bin" ] || printf '\xee\x00\x04\x00' >$work/image.bin
  expect 8 'the camera has no vendor extension unit' "${without[@]}" $command
  says '"zemctl info" tells which units it has.'
done
expect 8 'firmware version:   not read: ' "${without[@]}" info
says '  h264          yes '
for command in 'encoding get rate-control' 'encoding set priority-id 1'; do
  expect 8 'the camera has no encoding extension unit' $sim $command
done
for command in probe commit; do
  expect 8 'the camera has no stream-probe extension unit' $sim encoding $command
done
expect 8 'the camera has no skype extension unit' $sim tune skype-version
expect 8 'the camera has no h264 extension unit' $sim xu get h264 1 4
# One that has the unit and lacks the control only.
expect 7 'platform failure' $sim xu get vendor 99 8

# ---- Others ----

# A value that the camera does not take is not a camera that is gone.
expect 2 'exposure takes -11 to -2 in steps of 1 (automatic, manual), and not 3 (manual)' \
  $sim control set exposure 3
silent_about attached
expect 2 'brightness takes 0 to 255 in steps of 1 (manual), and not 128 (automatic)' \
  $sim control set brightness auto
expect 7 'the camera is gone' $sim --simulator-fault unplug@1 control set brightness 100
says 'Check that the camera is attached'

# What was done before reading back failed stands.
units='{"cameras":[{"encodingUnit":true,"streamProbeUnit":true,"orvaUnit":true}]}'
done_before() {
  local state=$1 fault=$2
  shift 2
  expect 7 "Camera: $state; only reading back failed" $sim --yes --simulator-options "$units" \
    --simulator-fault "$fault" "$@"
}
printf '\xee\x00\x04\x00' >$work/store.bin
done_before 'the bytes were written' fail@3 nvmem write 0x1000 'a1'
done_before 'the table was written' unplug@585 table write 1 'a1 a2 a3 a4 a5 a6 a7 a8'
done_before 'the table store was sent' fail@6 table init $work/store.bin
done_before 'the control was set' fail@2 control set brightness 100
done_before 'the control was written' fail@2 encoding set priority-id 1
done_before 'the block was written' fail@3 encoding probe wIndex=1
done_before 'the format was written' fail@3 stream probe --width 640

# ---- 1: what nobody expects, told in the same way ----

# On Linux the simulator is part of the tool.
[ $system = windows ] || exit 0
mkdir -p $work/alone
cp $tool $library $work/alone
zemctl="wine $work/alone/zemctl.exe"
expect 1 '"message": "ZemSimulator.dll cannot be loaded; it belongs beside zemctl.exe"' --json $sim list
