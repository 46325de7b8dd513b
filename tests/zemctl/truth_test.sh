#!/usr/bin/env bash
# Where the library reports success and a transfer failed, zemctl does not: exit code 7, what failed, and
# what comes next.
source "$(dirname "$0")/support.sh"

# loses FAULT ARGUMENTS...: the run ends with 7 and shows no result, as text and as JSON.
loses() {
  local fault=$1
  shift
  expect 7 ': the camera ' $sim --simulator-fault "$fault" "$@"
  grep -qE 'Check |once more' $out || { echo "no next step:"; cat $out; exit 1; }
  grep -qv '^zemctl: \|^  ' $out && { echo "more than a failure:"; cat $out; exit 1; }
  expect 7 '"code": 7' $sim --json --simulator-fault "$fault" "$@"
}

# A reply that could not be read is no register that is zero.
loses unplug@2 reg get isp 0
expect 7 'get vendor 2 (reply to an ISP command, 8 bytes) failed: the camera is gone (0x8007048F)' $sim \
  --simulator-fault unplug@2 reg get isp 0
says 'what it should have brought is not known (ZEM_OK, 0x00000000)'
says 'Check that the camera is attached (zemctl list)'
silent_about 'value:'
expect 7 'Camera: get vendor 2 (reply to an ISP command, 8 bytes): the camera did not carry it out' $sim \
  --simulator-fault fail@2 command isp 0b
loses unplug@2 tune sensor-sn
loses fail@2 tune build-date
loses fail@2 tune manual-gain 1
loses fail@1 nvmem read 0 32
loses unplug@3 nvmem read 0 64
tirella='{"cameras":[{"tirellaUnit":true}]}'
loses fail@1 --simulator-options "$tirella" led 1
loses unplug@1 --simulator-options "$tirella" led 1
unit='{"cameras":[{"h264Unit":true,"h264Formats":[{"type":2,"index":200,"width":1280,"height":720}]}]}'
for transfer in 4 5 6 7 8 9; do
  loses fail@$transfer --simulator-options "$unit" h264 start 200
done
skype='{"cameras":[{"skypeUnit":true}]}'
loses fail@1 --simulator-options "$skype" h264 start 640x480

# A table store that could not be read is not replaced.
loses unplug@1 table list
silent_about 'table init'
loses fail@2 table dump
expect 4 'Give it one with "zemctl table init"' $sim --simulator-options '{"cameras":[{"nvmem":[255]}]}' \
  table list

# Of several answers those that were had stand.
expect 7 'firmware version:   not read: ' $sim --simulator-fault fail@2 info
says 'device information: 51 70 01 00 5a 45 00 01'
says 'firmware check sum: right'
says '  vendor        yes      {23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}'
expect 7 'firmware check sum: not read: ' $sim --simulator-fault unplug@4 info
says 'firmware version:   01 02 03 04 05 06'
expect 7 '"device_information": null' $sim --json --simulator-fault fail@3 info
expect 7 '  contrast                video   not read: ' $sim --simulator-fault fail@3 control list
says '  brightness              video   128 '
says '  hue                     video   0 '
expect 7 '  brightness              video   128 ' $sim --simulator-fault unplug@3 control list
says '  focus                   camera  not read: '

# A list that the camera tells in part.
formats=$(printf ',{"index":%d,"type":1,"width":640,"height":480}' 2 3 4)
own='{"cameras":[{"h264Formats":[{"index":1,"type":1,"width":640,"height":480}'$formats']}]}'
expect 7 "the rest of the camera's list was not read: get vendor 11" $sim --simulator-options "$own" \
  --simulator-fault fail@4 h264 list

# ---- Updates ----

camera='{"cameras":[{"chip":"516x","burnPolls":2}]}'
head -c 2048 /dev/zero | tr '\0' 'a' >$work/image.bin
update() {
  local code=$1 text=$2 fault=$3
  shift 3
  expect "$code" "$text" $sim --yes --simulator-options "$camera" --simulator-fault "$fault" update \
    firmware --chip 516x $work/image.bin "$@"
}
# A burn that was never seen may never have begun: transfer 11 is the order.
update 0 'proof:          none: not read back (--verify-at ADDRESS does), and the camera was not seen burning' drop@11
says 'seen burning:   no'
says 'verified:       no'
update 10 'the flash differs from the image, first at 0x000000' drop@11 --verify-at 0
# A camera that cannot even tell its version is not burned.
update 7 'Camera: nothing was sent, it keeps what it had. Next: ' fail@2
# The answer to the announcement was lost, and all else went well.
update 7 'get vendor 5 (reply to a VCP command, or status, 8 bytes) failed' fail@5
says 'Camera: the camera has come to its end since: the image is burned'
# A look at the burn that failed is made again.
update 10 'the check sum of its firmware is wrong' fail@12
# Nothing waits for a camera that has left: the library alone would, for ten minutes.
SECONDS=0
update 7 'get vendor 5 (reply to a VCP command, or status, 8 bytes) failed: the camera is gone' unplug@12
says 'Camera: the camera was burning and no longer answers: the area may be half written'
[ $SECONDS -le 5 ] || { echo "it took $SECONDS s"; exit 1; }
