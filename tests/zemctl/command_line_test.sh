#!/usr/bin/env bash
# What zemctl makes of a command line: help, version, commands that are none, numbers, answers, paths.
source "$(dirname "$0")/support.sh"

# ---- The version, in the tool and in its file ----

version=$(echo ZEM_VERSION | cpp -P -include include/ZemUVCExtApi.h | tail -n 1 | tr -d '" ')
[[ "$version" =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || { echo "the header's version is \"$version\""; exit 1; }
expect 0 "zemctl $version" --version
[ "$(tr -d '\r' <$out)" = "zemctl $version" ]
expect 0 "\"version\": \"$version\"" --json --version
# Only Windows keeps it there.
[ $system = windows ] && files="$tool $library" || files=
for file in $files; do
  resource=$(strings -e l $file | grep -A1 '^ProductVersion$' | tail -1)
  [ "$resource" = "$version" ] || { echo "$file has the version \"$resource\""; exit 1; }
done

# ---- Commands that are none ----

expect 2 'zemctl: there is no command "lisst" (did you mean "list"?).' lisst
says 'Run "zemctl --help".'
expect 2 'there is no command "reg gte" (did you mean "reg get"?)' reg gte isp 0
says 'Run "zemctl reg --help".'
expect 2 'there is no command "h264 keyf" (did you mean "h264 keyframe"?)' h264 keyf
expect 2 'zemctl: there is no command "frobnicate".' $sim frobnicate --index 3
expect 2 'zemctl: no command is given.'
expect 2 'zemctl: no command is given.' $sim --yes
expect 2 '"rom reg" is not whole; behind it comes one of get, set.' rom reg
expect 2 '--vid' --vid
expect 2 'not expected: --nonsense' $sim list --nonsense

# ---- Help: what applies, with its default ----

expect 0 'Usage: zemctl reg get [OPTIONS] space address' reg get --help
for text in '--width INT:{1,2} ' 'Which camera:' '--index ' 'Simulated camera:' '--json'; do
  says "$text"
done
silent_about '--yes'
silent_about 'address UINT=0'
expect 0 '--unit TEXT:{vendor,tirella}=vendor' nvmem write --help
says '--yes'
expect 0 '--channels UINT in [1 - 255]=1' wav --help
says '--bits UINT:{8,16,24,32}=16'
says '--json'
for group in 'Which camera' 'Simulated camera' '--yes'; do
  silent_about "$group"
done
expect 0 'Simulated camera:' rom read --help
says '--storage TEXT:{sf,dram,emmc,spi-nand,parallel-nand}'
silent_about '--index'
expect 0 '--max UINT in [1 - 268435456]=1048576' data read --help
expect 0 'get                         Read a register' reg --help

# ---- Numbers ----

expect 0 'address: 0x000A' $sim reg get isp 010
expect 0 'address: 0x0008' $sim reg get isp 08
expect 0 'address: 0x0010' $sim reg get isp 0x10
expect 0 'address: 0x0000' $sim reg get isp 00
expect 0 'value:   10' $sim control set brightness 010
expect 0 'value:   -9' $sim control set exposure -09
expect 0 'fps: 25' $sim h264 fps 0025
expect 0 'firmware version' $sim --pid 035840 --vid 0x5A45 info
expect 2 'not in range' $sim led 0256
# Bytes are hexadecimal.
expect 0 'sent:    10 08 0b 00 00 00 00 00' $sim command isp 010 08 0b

# ---- Answers ----

for answer in y Y yes YES Yes ' y '; do
  echo "$answer" | expect 0 'written and compared: yes' $sim nvmem write 0x1000 'a1 a2'
done
for answer in n no j yesss '' 'y n'; do
  echo "$answer" | expect 11 'nothing was done' $sim nvmem write 0x1000 'a1 a2'
done

# ---- Paths that begin with a slash ----

head -c 16 /dev/zero >$work/sound.raw
expect 0 'frames:  8' wav "$PWD/$work/sound.raw" "$PWD/$work/sound.wav" --rate 8000
[ "$(stat -c %s $work/sound.wav)" -eq 60 ]
expect 9 'cannot be opened' $sim --yes update calibration /nowhere/image.bin
