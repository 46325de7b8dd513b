#!/usr/bin/env bash
# zemctl update, flash read and data, through the DLL and a simulated camera with a state file.
#
# The DLL's waits are real: 5 s for each of the two updates of the 517x series, and 1 s for a burn that
# is done at the first look, which burnPolls avoids elsewhere. They add up to about 12 s; the rest is
# the start of the tool.
source "$(dirname "$0")/support.sh"

state=$work/update-state.json
image=$work/firmware.bin
back=$work/read-back.bin
cali=$work/calibration.bin
rm -f "$state" "$back"

# A firmware image of the simulated camera: version 02 00 00 00 00 01 and 9,980 bytes behind the header.
python3 - "$image" "$cali" <<'PYTHON'
import struct, sys
payload = bytes((i * 31 + i // 251) & 255 for i in range(9980))
header = b"ZEMFWIMG" + bytes([2, 0, 0, 0, 0, 1]) + struct.pack("<HI", sum(payload) & 0xFFFF, 10000)
open(sys.argv[1], "wb").write(header + payload)
open(sys.argv[2], "wb").write(payload[:1500])
PYTHON

# with OPTIONS ARGUMENTS...: zemctl on a camera with these options and the state file.
camera_516x='{"cameras":[{"chip":"516x","burnPolls":2}]}'
run() {
  local code=$1 text=$2 options=$3
  shift 3
  expect "$code" "$text" $sim --yes --state "$state" --simulator-options "$options" "$@"
}

# ---- What would be sent ----

expect 0 'set vendor 4   1      8      01 00 03 00 00 28 00 00' update firmware --chip 516x --param 7 \
  "$image" --dry-run
says 'set vendor 13  20     512'
says 'set vendor 4   1      8      01 01 03 07 00 28 00 00'
says 'padding:              240 zero bytes'
says 'at full speed:        313 transfers of 32 bytes'
expect 0 'set vendor 4   1      8      01 00 03 00 00 00 00 00' update firmware --chip 517x "$image" \
  --dry-run
says 'set vendor 1   1      8      0a 01 10 67 88 00 00 00'
says 'set vendor 4   1      8      01 01 03 00 00 00 00 00'
expect 0 '"block": "01 01 03 05 00 00 00 00"' --json update calibration "$cali" --dry-run
expect 0 'set vendor 4   1      8      01 00 20 03 10 27 00 00' update flash --param2 0x20 --param3 3 \
  "$image" --dry-run
expect 0 'set vendor 4  1      8      01 00 07 00 10 27 00 00' data send --param2 7 "$image" --dry-run
expect 0 'set vendor 4   1      8      01 10 00 80 0e 00 30 75' flash read 0xE0000 62768 x --dry-run

# ---- Files that are not sent ----

: >$work/empty.bin
head -c 65536 /dev/zero >$work/long.bin
expect 9 'is empty' $sim --yes update calibration $work/empty.bin
expect 9 'cannot be opened' $sim --yes update calibration $work/nothing.bin
expect 9 'ZEMAPI_UpdateFlash can announce 65535 at most' $sim --yes update flash --param2 2 \
  --param3 0 $work/long.bin
expect 9 'ZEMAPI_SendData can announce 65535 at most' $sim data send $work/long.bin
expect 2 'does not fit behind the address' $sim --yes update calibration "$cali" \
  --verify-at 0xFFFFFFF0
expect 11 'nothing was done' $sim update calibration "$cali" </dev/null

# ---- Updates, kept in the state file ----

run 0 '10000 bytes read back from 0x000000 are equal' "$camera_516x" update firmware --chip 516x \
  "$image" --verify-at 0
says 'version before:       01 02 03 04 05 06'
says 'version of the image: 02 00 00 00 00 01'
says 'the camera reports the burn done; its firmware check sum is right'
says 'camera:               "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0'
says 'chip:                 516x'
says 'forced:               no'
says 'verified:             yes'
says 'send: 70 %'
says 'burn: 90 %'
says 'verify: 100 %'
run 0 'firmware version:   02 00 00 00 00 01' "$camera_516x" info
says 'firmware check sum: right'
run 0 'two reads are equal' "$camera_516x" flash read 0 10000 "$back" --verify
cmp "$image" "$back"

slow='{"cameras":[{"chip":"516x","burnPolls":2,"highSpeed":false}]}'
run 0 'not read back' "$slow" update calibration "$cali"
run 0 'every transfer succeeded' "$slow" flash read 0xE0000 1500 "$back"
cmp "$cali" "$back"
run 0 '1500 bytes read back from 0x0C0000 are equal' "$camera_516x" update flash --param2 2 --param3 0 \
  --verify-at 0xC0000 "$cali"
run 10 'the flash differs from the image, first at 0x0C0200' "$camera_516x" update flash --param2 2 \
  --param3 0 --verify-at 0xC0000 --simulator-fault garbage@5 "$cali"

run 0 'sent:     yes' "$camera_516x" data send "$cali"
run 0 'bytes:    1500' "$camera_516x" data read "$back"
cmp "$cali" "$back"
run 6 'the camera has more than 1499 bytes ready' "$camera_516x" data read "$back" --max 1499

# A 517x camera is unprotected, updated and looked at once, after five seconds.
rm -f "$state"
camera_517x='{"cameras":[{"chip":"517x"}]}'
run 5 'Camera: the burn failed' '{"cameras":[{"chip":"517x","burnPolls":1}]}' update firmware \
  --chip 516x --force "$image"
run 0 'the camera reports the burn done; its firmware check sum is right' "$camera_517x" update firmware \
  --chip 517x "$image"
says 'burn: 80 %'
run 0 'firmware version:   02 00 00 00 00 01' "$camera_517x" info
run 5 'Camera: the camera is still burning' '{"cameras":[{"chip":"517x","burnPolls":3}]}' update firmware \
  --chip 517x "$image"

# ---- The camera that was meant ----

expect 11 'The camera "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0, firmware version 01 02 03 04 05 06: its firmware will be overwritten with '"$image"' (10000 bytes, version 02 00 00 00 00 01). Go on?' \
  $sim update firmware --chip 517x "$image" </dev/null
expect 11 'firmware version 01 02 03 04 05 06: its calibration data will be overwritten with' $sim update \
  calibration "$cali" </dev/null
run 2 '--chip says 517x, and the camera says that it is a 516x' "$camera_516x" update firmware --chip 517x \
  "$image"
says 'Camera: nothing was sent, it keeps what it had. Next: Give --chip 516x'
run 2 '--chip says 516x, and the camera says that it is a 517x' "$camera_517x" update firmware --chip 516x \
  "$image"
rm -f "$state"
run 0 'forced:               yes' '{"cameras":[{"chip":"516x"}]}' update firmware --chip 517x --force "$image"
says 'chip:                 516x'

# ---- After the restart ----

# The restart comes behind the transfers of the update, at a look at the camera.
rm -f "$state"
run 0 'version after:        02 00 00 00 00 01' "$camera_516x" --simulator-fault replug@36 update firmware \
  --chip 516x "$image" --wait 20
says 'version as expected:  yes'
says 'Restart "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0 now'
rm -f "$state"
run 10 'the camera came back with version 02 00 00 00 00 01 instead of 03 00 00 00 00 01' "$camera_516x" \
  --simulator-fault replug@36 update firmware --chip 516x "$image" --wait 20 \
  --expect-version "03 00 00 00 00 01"
says 'version as expected:  no'
rm -f "$state"
run 3 'the camera did not come back within 1 s' "$camera_516x" --simulator-fault unplug@36 update firmware \
  --chip 516x "$image" --wait 1
run 2 '"01" is no version of 6 bytes in hexadecimal' "$camera_516x" update firmware --chip 516x "$image" --expect-version 01

# ---- Several at once ----

line='{"cameras":[{"name":"A","chip":"516x","burnPolls":2},{"name":"B","chip":"516x","burnPolls":2,"faults":["fail@8"]},{"name":"C","chip":"516x","burnPolls":3},{"name":"D","chip":"517x"}]}'
several() {
  local code=$1 text=$2
  shift 2
  expect "$code" "$text" $sim --simulator-options "$line" update firmware --chip 516x "$image" "$@"
}
several 13 '2 of 4 cameras failed' --yes --all
says 'A at zem-simulator&0: send: 70 %'
says 'C at zem-simulator&2: verify: 100 %'
several 0 '"name": "C"' --yes --cameras 0,2 --json
several 13 '2 of 4 cameras failed' --yes --all --json
python3 - $out <<'PYTHON'
import json, sys
text = open(sys.argv[1]).read()
report = json.loads(text[text.index("{"):])
rows = [(row["name"], row["done"], row["code"], row["verified"]) for row in report["cameras"]]
assert rows == [("A", True, 0, False), ("B", False, 7, None), ("C", True, 0, False), ("D", False, 2, None)], rows
assert report["cameras"][1]["camera_state"].startswith("no burn order went through"), report
assert report["error"]["code"] == 13, report
PYTHON
# Each has a trace of its own.
rm -f $work/line.trace*
several 0 'A at zem-simulator&0: send: 70 %' --yes --cameras 0,2 --trace $work/line.trace
for index in 0 1; do
  expect 0 'burn' trace show $work/line.trace.$index
done
several 11 'Of each of these 4 cameras:' --all </dev/null
says '  "B" (5a45:8c00) at zem-simulator&1, firmware version 01 02 03 04 05 06'
several 3 'there is no camera 4 among 4' --yes --cameras 0,4
several 2 'names 2 more than once' --yes --cameras 2,2
several 2 '--index chooses one camera' --yes --all --index 0
several 2 '--all excludes --cameras' --yes --all --cameras 0

# ---- The default camera, which the library finds by itself ----

expect 0 'set vendor 3  157    64' update handle-less plain "$image" --dry-run
says 'set vendor 4  1      8      01 00 00 00 00 00 00 00'
says 'set vendor 4  1      8      01 01 00 00 00 00 00 00'
says 'padding:              48 zero bytes'
says 'at full speed:        313 transfers of 32 bytes'
expect 0 'set vendor 4  1      8      01 01 00 01 00 00 00 00' update handle-less ex "$image" --dry-run
expect 0 'set vendor 4  1      8      01 01 09 00 00 00 00 00' update handle-less vision --param 9 \
  "$image" --dry-run
rm -f "$state"
for way in plain ex; do
  run 0 '10000 bytes read back from 0x000000 are equal' "$camera_516x" update handle-less $way "$image" \
    --verify-at 0
  says 'camera:               "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0'
  says 'send: 70 %'
  says 'seen burning:         yes'
done
says 'function:             ZEMUVCEXT_UpdateFW_with_progressEx'
# The library sends the burn order all the same; a lost piece is not burned in silence.
run 7 'the image could not be sent in full' "$camera_516x" --simulator-fault fail@8 update handle-less ex \
  "$image"
says 'Camera: part of the image was lost, and the camera was told to burn what it got'
run 7 'no burn order went through' "$camera_516x" --simulator-fault unplug@8 update handle-less plain "$image"
expect 11 'The camera "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0' $sim update handle-less vision \
  "$image" </dev/null
run 2 'no camera can be chosen' "$camera_516x" --index 0 update handle-less plain "$image"
expect 3 '4 cameras fit' $sim --yes --simulator-options "$line" update handle-less plain "$image"

# ---- Failures ----

rm -f "$state"
run 5 'is busy or does not take this kind of image; nothing was sent' \
  '{"cameras":[{"chip":"516x","busy":true}]}' update calibration "$cali"
run 5 'is busy or does not take this kind of image; nothing was sent' "$camera_516x" update flash \
  --param2 9 --param3 0 "$cali"
run 5 'Camera: the burn failed' '{"cameras":[{"chip":"516x","burnPolls":2,"burnError":true}]}' update \
  firmware --chip 516x "$image"
run 0 'firmware check sum: wrong' "$camera_516x" info
run 7 'no burn order went through' "$camera_516x" --simulator-fault fail@8 update firmware --chip 516x \
  "$image"
run 7 'part of the image was lost' "$camera_516x" --simulator-fault fail@5 update calibration "$cali"
run 7 'no burn order went through' "$camera_516x" --simulator-fault unplug@5 update calibration "$cali"
run 10 'the check sum of its firmware is wrong' "$camera_516x" --simulator-fault garbage@8 update firmware \
  --chip 516x "$image"
run 7 'the camera stopped taking the data at' "$camera_516x" --simulator-fault fail@20+6 data send "$cali"
run 7 'ZEMAPI_ReadPartialFlashData' "$camera_516x" --simulator-fault fail@4+6 flash read 0 1500 "$back"
run 10 'two reads of the flash differ, first at 0x0002' "$camera_516x" --simulator-fault garbage@4 \
  flash read 0 1500 "$back" --verify
run 5 '"code": 5' '{"cameras":[{"chip":"516x","busy":true}]}' --json update calibration "$cali"
expect 3 'no camera matches' --yes update calibration "$cali"

# The library waits for a fixed time, and does not look; the tool does. Transfers 59 and 319 are the burn
# orders.
rm -f "$state"
SECONDS=0
run 7 'the camera is gone' "$camera_517x" --simulator-fault leave@59 update firmware --chip 517x "$image"
says 'Camera: the camera was burning and no longer answers: the area may be half written'
rm -f "$state"
run 7 'the camera is gone' "$camera_516x" --simulator-fault leave@319 update handle-less vision "$image"
[ $SECONDS -le 9 ] || { echo "it took $SECONDS s"; exit 1; }

# ---- Ctrl-C ----

# stop_burning CAMERAS ARGUMENT...: Ctrl-C once so many cameras have answered that they burn; the tool
# then ends with 12.
stop_burning() {
  python3 - "$zemctl" "$work/stopped.trace" "$out" "$@" <<'PYTHON'
import pathlib, signal, subprocess, sys, time
zemctl, trace, out, cameras, *arguments = sys.argv[1:]
trace = pathlib.Path(trace)
# Several cameras have a trace each.
def traces():
    return trace.parent.glob(trace.name + "*")
for old in traces():
    old.unlink()
def burning():
    return sum('"selector":5,"length":8,"moved":8,"data":"81 ' in path.read_text("utf-8") for path in traces())
with open(out, "w") as output:
    run = subprocess.Popen(
        [*zemctl.split(), "--trace", str(trace), "--simulator", "--yes", *arguments],
        stdout=output, stderr=subprocess.STDOUT,
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
deadline = time.monotonic() + 30
while run.poll() is None and burning() < int(cameras) and time.monotonic() < deadline:
    time.sleep(0.02)
run.send_signal(signal.SIGINT)
sys.exit(run.wait(30) != 12)
PYTHON
}
rm -f "$state"
stop_burning 1 --state "$state" --simulator-options '{"cameras":[{"chip":"516x","burnPolls":500}]}' \
  update firmware --chip 516x "$image"
says 'Camera: the camera was told to burn and goes on by itself. Next: leave the camera powered'
run 0 'firmware version:   02 00 00 00 00 01' "$camera_516x" info

# A whole line stops.
stop_burning 2 --simulator-options \
  '{"cameras":[{"name":"A","chip":"516x","burnPolls":500},{"name":"B","chip":"516x","burnPolls":500}]}' \
  update firmware --chip 516x "$image" --all
says 'stopped by the user: 2 of 2 cameras failed'
says '  camera state:   the camera was told to burn and goes on by itself'

# ---- State files ----

echo nonsense >"$state"
run 2 "is not a camera's" "$camera_516x" info
expect 2 'cannot be written' $sim --state $work/nowhere/state.json info
