#!/bin/sh
# A tour of zemctl that reads the same on every system:
#
#   transcript.sh sections                 their names, in the order in which they are to run
#   transcript.sh options SECTION          the simulator's options for one
#   transcript.sh SYSTEM SECTION FOLDER    each command line, what it prints and its exit code, without
#                                          what names a place; files of the run go to FOLDER
#
# SYSTEM is windows or linux for the tool with its own simulated camera; kernel for the camera that
# whoever runs this has attached to this machine. Any shell will do.
set -eu
system=$1
if [ "$system" = sections ]; then
  echo camera update updated refused failed unplugged absent rom recover
  exit
fi
section=$2

# The camera of a section. Only what it keeps in its state file lasts from one command to the next.
options() {
  case $section in
    camera)
      echo '{"cameras": [{"state": "camera.json", "h264Unit": true, "skypeUnit": true,
        "orvaUnit": true, "encodingUnit": true, "streamProbeUnit": true, "tirellaUnit": true,
        "microphone": false, "h264Formats": [{"index": 3, "width": 640, "height": 480}],
        "tables": [{"id": 7, "data": [1, 2, 3]}]}]}'
      ;;
    update | updated)
      echo '{"cameras": [{"state": "update.json", "chip": "516x", "microphone": false}]}' ;;
    refused) echo '{"cameras": [{"microphone": false, "faults": ["refuse@2=5"]}]}' ;;
    failed) echo '{"cameras": [{"microphone": false, "faults": ["fail@2"]}]}' ;;
    unplugged) echo '{"cameras": [{"microphone": false, "faults": ["unplug@2"]}]}' ;;
    rom | recover) echo '{"bootLoader": {"letter": "C"}}' ;;
    absent) echo '{"cameras": []}' ;;
    *) echo "transcript.sh: no section $section" >&2; exit 2 ;;
  esac
}

if [ "$system" = options ]; then
  options
  exit
fi
mkdir -p "$3"
case $system in
  windows) tool="wine $PWD/build/windows/zemctl.exe --simulator --simulator-options options.json" ;;
  linux) tool="$PWD/build/linux/zemctl --simulator --simulator-options options.json" ;;
  kernel) tool=zemctl ;;
esac
cd "$3"
options >options.json

zemctl_says() {
  echo "\$ zemctl $*"
  status=0
  $tool "$@" 2>&1 || status=$?
  echo "status $status"
  echo
}

case $section in
  camera)
    zemctl_says list
    zemctl_says --json list
    zemctl_says info
    zemctl_says --json info
    zemctl_says reg get isp 0
    zemctl_says reg set isp 0x123456 0xABCD
    zemctl_says reg set sensor 0x3012 0xEF
    zemctl_says reg get sensor 0x10
    zemctl_says reg set vcm 0x20 0x4321
    zemctl_says command isp 0b
    zemctl_says command vcp 06
    zemctl_says command isp-ex 01 02 03 04
    zemctl_says xu get vendor 10 8
    zemctl_says xu set tirella 2 5a
    zemctl_says xu get vendor 10 4
    zemctl_says xu get vendor 12 8
    zemctl_says control list
    zemctl_says control get brightness
    zemctl_says control set brightness 200
    zemctl_says control set brightness 256
    zemctl_says control set exposure auto
    zemctl_says control set exposure -7
    zemctl_says tune awb-gain 256 256 256
    zemctl_says tune focus-values
    zemctl_says h264 list
    zemctl_says h264 fps 30
    zemctl_says stream version
    zemctl_says stream probe --width 1280
    zemctl_says multicast select 1
    zemctl_says encoding set rate-control dwAverageBitRate=5000000
    zemctl_says encoding probe dwInterval=333333
    zemctl_says led 1
    printf 'abcdefgh' >data.bin
    zemctl_says data send data.bin
    zemctl_says nvmem write 0x1000 01 02 03 04 --yes
    zemctl_says nvmem read 0x1000 16
    zemctl_says table list
    zemctl_says table read 7
    zemctl_says reg get nowhere 0
    zemctl_says --index 7 info
    ;;
  update)
    # A firmware image of 10,016 bytes: its mark, version, sum, length, and zeros.
    { printf 'ZEMFWIMG\002\000\000\000\000\001\000\000\040\047\000\000'; head -c 9996 /dev/zero; } \
      >firmware.bin
    zemctl_says info
    zemctl_says update firmware --chip 516x firmware.bin --verify-at 0 --yes
    ;;
  updated)
    zemctl_says info
    zemctl_says --json flash read 0 64 back.bin
    zemctl_says update firmware --chip 517x back.bin --yes
    ;;
  absent) zemctl_says list ;;
  rom)
    zemctl_says rom info
    zemctl_says --json rom info
    zemctl_says rom reg set 0x80001234 0x5a
    zemctl_says rom reg get 0x80001235
    zemctl_says rom command fa 55 66 01 --in 16
    zemctl_says rom command fa 55 66 7e --in 16
    ;;
  recover)
    # An image with a header block of 4,096 bytes and 5,000 more; an updater.
    {
      printf 'VSN_V2FW\001\000\000\000\000\000\210\023\000\000'
      head -c 4096 /dev/zero | tr '\000' '\021'
      head -c 5000 /dev/zero | tr '\000' '\042'
    } >image.bin
    head -c 70000 /dev/zero | tr '\000' '\063' >updater.bin
    zemctl_says recover image.bin --storage sf --updater updater.bin --yes
    ;;
  *) zemctl_says reg get isp 0 ;;
esac >said.txt

# Whatever names the place of a camera becomes the same word.
tr -d '\r' <said.txt | sed -e 's/ --simulator --simulator-options options.json//' \
  -e 's/@device:sw:{[-0-9A-F]*}\\\{1,2\}//' \
  -e 's/\\\{2,4\}?\\\{1,2\}usb#.*zem-simulator&0/DEVICE PATH/' \
  -e 's|/dev/v4l/by-path/[-._:a-z0-9]*|DEVICE PATH|' \
  -e 's/zem-simulator&0/PLACE/g' -e 's/\(#\|at \|place: *\|"place": "\)1-1/\1PLACE/g'
