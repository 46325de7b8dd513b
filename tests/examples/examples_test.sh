#!/usr/bin/env bash
# Runs the examples as they stand among simulated cameras, and compares all that they print; $1 is
# windows (under Wine) or linux.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
system=$1
work=build/example-tests-$system
mkdir -p $work

# expect CODE TEXT EXAMPLE OPTIONS ARGUMENTS...: the example ends with CODE and prints TEXT.
expect() {
  local code=$1 text=$2 example=$3 status=0
  shift 3
  if [ "$system" = windows ]; then
    wine build/windows/"${example}_simulated.exe" "$@" 2>&1 | tr -d '\r' >$work/out || status=$?
  else
    build/linux/"${example}_simulated" "$@" >$work/out 2>&1 || status=$?
  fi
  if [ "$status" -ne "$code" ] || ! diff <(echo "$text") $work/out; then
    echo "$example $*: status $status, wanted $code"
    exit 1
  fi
}

# ---- enumerate ----
serial=$(seq -s ' ' -f %.0f 160 191 | xargs printf '%02x ')
camera="  firmware version: 01 02 03 04 05 06
  serial number: ${serial% }"
expect 0 "camera 0
$camera
camera 1
$camera
2 cameras" enumerate '{"cameras": [{}, {}]}'
expect 0 "camera 0
  firmware version: the camera refused the command (ZEM_E_DEVICE_REFUSED)
${camera#*$'\n'}
1 cameras" enumerate '{"cameras": [{"faults": ["refuse@2"]}]}'
expect 1 "0 cameras" enumerate '{"cameras": []}'

# ---- read_register ----
expect 0 "register 0x123456 = 0x0000" read_register '{}'
expect 1 "the camera did not answer (0x80000001)" read_register '{"cameras": [{"faults": ["refuse@2"]}]}'
expect 1 "no camera (0x80004005)" read_register '{"cameras": []}'

# ---- update_firmware ----
# An image of the simulated camera: version 02 00 00 00 00 01.
python3 - $work/firmware.bin <<'PYTHON'
import sys
body = bytes(number * 7 % 251 for number in range(9980))
head = b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + (sum(body) & 0xFFFF).to_bytes(2, "little")
with open(sys.argv[1], "wb") as image:
    image.write(head + (len(body) + 20).to_bytes(4, "little") + body)
PYTHON
progress=$(seq -f '%.0f %%' 10 10 100)
progress_517x=$(seq -f '%.0f %%' 10 10 80)
done="The firmware is burned and its check sum is right. Restart the camera to run it."
update() {
  expect "$1" "$2" update_firmware "$3" "$4" $work/firmware.bin
}
rm -f $work/state.json
update 0 "$progress
$done" '{"cameras": [{"chip": "516x", "state": "'$work/state.json'"}]}' 516x
# The camera starts with it.
expect 0 "camera 0
  firmware version: 02 00 00 00 00 01
${camera#*$'\n'}
1 cameras" enumerate '{"cameras": [{"chip": "516x", "state": "'$work/state.json'"}]}'

# Of an image that is lost on the way, a 516x camera's procedure says so, and a 517x camera's check sum.
update 0 "10 %
20 %
attempt 1: ZEMAPI_UpdateFW_516x: the command could not be written to the camera (ZEM_E_NO_DEVICE, 0x80000003)
$progress
$done" '{"cameras": [{"chip": "516x", "faults": ["fail@8"]}]}' 516x
update 0 "10 %
20 %
attempt 1: ZEMAPI_GetCheckSumResult: the camera refused the command (ZEM_E_DEVICE_REFUSED, 0x80000001)
$progress_517x
$done" '{"cameras": [{"faults": ["fail@40"]}]}' 517x
update 1 "10 %
20 %
attempt 1: ZEMAPI_UpdateFW_516x: the command could not be written to the camera (ZEM_E_NO_DEVICE, 0x80000003)
attempt 2: ZEMAPI_OpenDevice: the library reports a failure (ZEM_E_FAIL, 0x80004005)
attempt 3: ZEMAPI_OpenDevice: the library reports a failure (ZEM_E_FAIL, 0x80004005)
The firmware may be damaged: leave the camera powered, and run this once more before it restarts." \
  '{"cameras": [{"chip": "516x", "faults": ["unplug@8"]}]}' 516x
update 1 "attempt 1: ZEMAPI_OpenDevice: the library reports a failure (ZEM_E_FAIL, 0x80004005)
Nothing was sent." '{"cameras": []}' 516x
expect 2 "usage: update_firmware 516x|517x IMAGE" update_firmware '{}' 515x
expect 2 "$work/none: not a file with an image" update_firmware '{}' 516x $work/none
