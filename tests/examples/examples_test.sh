#!/usr/bin/env bash
# Runs the examples as they stand among simulated cameras, and compares all that they print; $1 is
# windows (under Wine) or linux.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
system=$1
work=build/example-tests-$system
mkdir -p $work

examples=
# run EXAMPLE OPTIONS ARGUMENTS...: what it prints goes to $work/out, what it ends with is $status.
run() {
  local example=$1
  shift
  status=0
  examples+=${examples:+$'\n'}$example
  if [ "$system" = windows ]; then
    wine build/windows/"${example}_simulated.exe" "$@" 2>&1 | tr -d '\r' >$work/out || status=$?
  else
    build/linux/"${example}_simulated" "$@" >$work/out 2>&1 || status=$?
  fi
}

# printed CODE TEXT WORDS...: the last run, which WORDS name, ended with CODE and printed TEXT.
printed() {
  local code=$1 text=$2
  shift 2
  if [ "$status" -ne "$code" ] || ! diff <(echo "$text") $work/out; then
    echo "$*: status $status, wanted $code"
    exit 1
  fi
}

# expect CODE TEXT EXAMPLE OPTIONS ARGUMENTS...
expect() {
  local code=$1 text=$2
  shift 2
  run "$@"
  printed "$code" "$text" "$@"
}

# Files to burn: firmware.bin of a camera that runs, version 02 00 00 00 00 01; for one in ROM boot image.bin,
# short.bin, which has lost its end, blank.bin, from which nothing starts, and the updater.
python3 - $work <<'PYTHON'
import sys

def write(name, data):
    with open(f"{sys.argv[1]}/{name}", "wb") as file:
        file.write(data)

def some(size):
    return bytes(number * 7 % 251 for number in range(size))

def number(value):
    return value.to_bytes(4, "little")

body = some(9980)
write("firmware.bin", b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + number(sum(body))[:2] + number(10000) + body)
image = b"VSN_V2FW" + bytes([1, 0]) + number(0) + number(9980) + some(4096) + body
write("image.bin", image)
write("short.bin", image[:-1])
write("blank.bin", image[:18] + b"\xFF" * 4096 + body)
write("updater.bin", some(1000))
PYTHON

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

# ---- recover ----
rm -f $work/flash.img
flash='"storages": [{"type": "sf", "size": 65536, "file": "'$work/flash.img'"}]'
look="1 of 6: look for the camera"
load="found: its boot loader, VSN3
2 of 6: load the updater and wait for its storage (a wrong updater: five minutes)"
burn="3 of 6: burn the image"
compare="4 of 6: read it back and compare"
restart="5 of 6: restart the camera
6 of 6: wait for it"
runs="The camera runs. Firmware version: 01 02 03 04 05 06"
again="Unplug the camera, plug it in again, and run this once more."
# in_rom_boot CODE TEXT KEYS [IMAGE]: of a camera in ROM boot.
in_rom_boot() { expect "$1" "$look"$'\n'"$2" recover "{\"bootLoader\": {$3}}" $work/"${4:-image.bin}" $work/updater.bin; }

in_rom_boot 0 "$load
$burn
$compare
$restart
$runs" "$flash"
cmp <(tail -c +19 $work/image.bin) <(head -c 14076 $work/flash.img)
in_rom_boot 0 "found: an updater runs in it already
$burn
$compare
$restart
$runs" '"start": "storage"'
in_rom_boot 4 "$load
The updater was sent, but no storage showed up: it is neither a volume nor a camera now. Nothing was erased or written.
Check that $work/updater.bin is the updater of this camera. $again" '"afterJump": "gone"'
in_rom_boot 4 "$load
$burn
ZEMROMAPI_SwitchModePCAM_SF: the library reports a failure (ZEM_E_FAIL, 0x80004005). Nothing was erased or written.
Check that this camera starts from serial flash." '"storages": [{"type": "spi-nand", "size": 65536}]'
in_rom_boot 4 "$load
$burn
ZEMROMAPI_BurnFw: the library reports a failure (ZEM_E_FAIL, 0x80004005). The camera: it is neither a volume nor a \
camera now. Without the header block, which is written last, nothing starts from its storage, and it falls back to \
its boot loader.
$again" '"faults": ["unplug@14"]'
in_rom_boot 5 "$load
$burn
$compare
9943 of 14076 bytes of the storage are not those of the image, see $work/image.bin.read.
Do not unplug or reset the camera, run this once more." '"faults": ["garbage@14"]'
in_rom_boot 5 "$load
$burn
$compare
The image is burned, but could not be read back.
Leave the camera as it is and run this once more. If nothing answers then, unplug it and plug it in again." \
  '"faults": ["refuse@16"]'
in_rom_boot 6 "$load
$burn
$compare
$restart
The image is burned, byte by byte as read back, and the camera does not run it: its boot loader answers.
Check that it is the image of this camera. One that comes back with other USB ids is not found here." '' blank.bin

recover() { expect "$1" "$2" recover "$3" $work/image.bin $work/updater.bin; }
recover 3 "$look
There is no camera in ROM boot, and none that runs.
Nothing was sent. Try another cable and port. Raw volumes need administrator rights, on Linux permission for its \
/dev/sg." '{"cameras": []}'
recover 3 "$look
There is a camera, and it runs its firmware.
Nothing was sent. A camera that runs is updated, not recovered." '{}'
recover 3 "$look
There is a camera in ROM boot, and another one that runs.
Nothing was sent. Unplug the one that runs." '{"bootLoader": {}, "cameras": [{}, {}]}'
expect 2 "usage: recover IMAGE UPDATER" recover '{}' $work/image.bin
for wrong in short.bin:"is not whole" updater.bin:"is no firmware image"; do
  expect 2 "$work/${wrong%%:*} ${wrong#*:}.
Nothing was sent." recover '{}' $work/"${wrong%%:*}" $work/updater.bin
done
expect 2 "$work/none is no updater.
Nothing was sent." recover '{}' $work/image.bin $work/none

# ---- responsive_window ----
# used CODE TEXT OPTIONS ACTIONS: somebody uses the window. An update takes long enough for a hundred answers,
# and a window that takes its messages only between the camera's would be late with most; the machine may be
# late with some.
used() {
  local code=$1 text=$2 answers
  shift 2
  run responsive_window "$1" "$2" 517x $work/firmware.bin
  if answers=$(grep ' answers, ' $work/out); then
    echo "responsive_window: $answers"
    read -r asked _ late _ <<<"$answers"
    [ "$asked" -ge 100 ] && [ $((late * 20)) -le "$asked" ]
    sed -i '/ answers, /d' $work/out
  fi
  printed "$code" "$text" responsive_window "$@"
}
if [ $system = windows ]; then
  used 1 "at first: Ready.
at last: Ready.
bar: 0" '{}' look
  used 0 "at first: Ready.
at last: Done: the camera's check sum is right. Restart the camera to run it.
bar: 100" '{}' update
  used 0 "at first: Ready.
closed on the way: it stays
may log off: no
at last: the window has closed" '{}' update,close
  used 1 "at first: Ready.
closed on the way: it stays
may log off: no
at last: ZEMAPI_GetCheckSumResult: the camera refused the command (ZEM_E_DEVICE_REFUSED, 0x80000001)|Leave the camera \
powered and update it once more.
bar: 99" '{"cameras": [{"faults": ["fail@40"]}]}' update,close
  expect 2 "usage: responsive_window 516x|517x IMAGE" responsive_window '{}' look 515x
fi

# Each example has been run, but for grab_frame, which needs a camera of the kernel (tests/kernel).
wanted=$(cd examples && ls -- *.c *.cpp | sed 's/\..*//' | grep -v '^grab_frame$')
[ $system = windows ] || wanted=$(grep -v '^responsive_window$' <<<"$wanted")
diff <(sort -u <<<"$examples") <(echo "$wanted") || { echo "these examples are not run"; exit 1; }
echo "$(sort -u <<<"$examples" | wc -l) examples run, $(wc -l <<<"$examples") runs compared"
