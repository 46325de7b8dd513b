#!/usr/bin/env bash
# The machine's SCSI generic devices as zemctl meets them: which of them it opens, and what it says of
# those that it may not.
ZEM_SYSTEM=linux
source "$(dirname "$0")/../zemctl/support.sh"
fake=$PWD/$work/fake
zemctl="env ZEM_FAKE_GENERIC=$fake LD_PRELOAD=$PWD/build/linux/libzem_fake_generic.so $zemctl"

# devices [NUMBER=ANSWER]...: the machine has these, see fake_generic.c.
devices() {
  rm -rf $fake
  mkdir -p $fake/class
  touch $fake/opened
  for device in "$@"; do
    touch $fake/class/sg${device%=*}
    echo ${device#*=} >$fake/sg${device%=*}
  done
}

# opened TEXT: these were opened since the machine was made, once each.
opened() {
  local list
  list=$(sort -u $fake/opened | tr '\n' ' ')
  [ "$list" = "$1" ] || { echo "opened: $list, wanted $1"; exit 1; }
}

# A letter is a device in the order of their numbers, whatever the gaps.
devices 3=6 7=camera 12=camera
expect 3 'more than one camera is in ROM boot: D: (boot loader VSN3), E: (boot loader VSN3)' rom info
opened 'sg12 sg3 sg7 '
expect 0 'drive:     D:' rom info --drive D:
says 'identity:  aa 55 00 00 56 53 4e 33 00 00 00 00 00 00 00 00'

# What the device refuses is told as everywhere.
expect 7 'ZEMROMAPI_ResetSystem: the camera in ROM boot did not carry it out: reset: error 1117' \
  rom reset --drive E

# A kernel without them, a device that may not be opened, one that is busy: each in words of its own.
devices
rmdir $fake/class
expect 3 'among the volumes C: to Z:; this kernel offers no SCSI generic devices: /sys/class/scsi_generic is missing' \
  rom info
says 'Next: Load the driver with "sudo modprobe sg"'
opened ''
devices 0=13 4=1 5=6
expect 3 'among the volumes C: to Z:; C: (/dev/sg0), D: (/dev/sg4) may not be opened by this user (ZEM_E_FAIL' \
  rom info
says 'Next: Install the project'\''s udev rules, packaging/60-zem-cameras.rules, and plug the camera in again; or run this as root.'
devices 2=16
expect 3 'among the volumes C: to Z:; C: (/dev/sg2) is in use by another program (ZEM_E_FAIL' rom info
says 'Next: End the program that uses it; "sudo fuser -v FILE" names it.'
devices 2=16 3=13 4=24
expect 3 '; D: (/dev/sg3) may not be opened by this user; C: (/dev/sg2) is in use by another program; E: (/dev/sg4) cannot be opened, error 4' \
  rom info

# One that may not be opened is no obstacle where another answers.
devices 0=13 1=camera
expect 0 'drive:     D:' rom info

# A trace tells it too, and a replay says the same without any device.
devices 0=13
expect 3 'C: (/dev/sg0) may not be opened by this user' --trace $work/trace.jsonl rom info
sed 's/--trace [^ ]* //' $out >$work/recorded
devices 1=camera
expect 3 'C: (/dev/sg0) may not be opened by this user' --replay $work/trace.jsonl rom info
sed 's/--replay [^ ]* //' $out >$work/replayed
cmp $work/recorded $work/replayed
expect 0 'a look for the volume C:, not there: /dev/sg0, error 5' trace show $work/trace.jsonl --all
expect 0 'value' --simulator reg get isp 0
opened ''

# With --simulator nothing of the machine is opened, whatever is simulated.
devices 0=camera 3=camera 5=camera
expect 3 'no camera in ROM boot was found among the volumes C: to Z: (ZEM_E_FAIL' --simulator rom info
boot=(--simulator --simulator-options '{"bootLoader":{}}')
expect 0 'drive:     F:' "${boot[@]}" rom info
expect 0 'reset: accepted' "${boot[@]}" rom reset
expect 0 'found:  boot loader' --simulator --simulator-options '{"bootLoader":{"start":"camera"}}' rom enter
expect 0 'place' --simulator list
head -c 5000 /dev/zero >$work/code.bin
expect 3 'its storage did not show up within 1 s' \
  --simulator --simulator-options '{"bootLoader":{"afterJump":"gone"}}' rom load-updater $work/code.bin --updater-wait 1
opened ''
expect 3 'more than one camera is in ROM boot: C: (boot loader VSN3), D: (boot loader VSN3)' rom info
