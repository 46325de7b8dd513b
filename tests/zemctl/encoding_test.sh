#!/usr/bin/env bash
# zemctl encoding, and the log that the library keeps.
source "$(dirname "$0")/support.sh"
# A camera with the two units; the default one has neither.
sim="--simulator --simulator-options {\"cameras\":[{\"encodingUnit\":true,\"streamProbeUnit\":true}]}"
without=--simulator
rm -f "$command_log"

# shown PATTERN: the last run's output has a line that matches.
shown() {
  grep -qE -- "$1" $out || { echo "no line matches \"$1\":"; cat $out; exit 1; }
}

expect 0 'control:  rate-control' $sim encoding get rate-control
shown '^  dwAverageBitRate +0x00000000 +0'
expect 0 'written:  yes' $sim encoding set rate-control dwAverageBitRate=5000000 dwQpPrime_I=1,2,0x33
shown '^  dwAverageBitRate +0x004C4B40 +5000000'
shown '^  dwQpPrime_I +0x01 0x02 0x33 +1 2 51'
expect 0 'data:     00' $sim encoding get priority-id
expect 0 'data:     2a' $sim encoding set 6 2a
expect 0 'written: no' $sim encoding probe
shown '^  dwInterval +0x00051615 +333333'
expect 0 'written: yes' $sim encoding probe dwInterval=666666 bmSVCCapabilityModes=1,2,3,4,5,6,7,8
shown '^  dwInterval +0x000A2C2A +666666'
shown '^  bmSVCCapabilityModes +0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 +1 2 3 4 5 6 7 8'
expect 0 'written: yes' $sim encoding commit wKeyFrameRate=60
shown '^  wKeyFrameRate +0x003C +60'
expect 0 '"field": "bmHint"' $sim --json encoding commit
expect 2 'is not of the form field=value' $sim encoding probe dwInterval
expect 2 'the block has no field "dwintervall"' $sim encoding probe dwintervall=1
expect 2 '"65536" is not a number of 2 bytes for wIndex' $sim encoding probe wIndex=65536
expect 2 'dwQpPrime_I takes 3 numbers' $sim encoding set rate-control dwQpPrime_I=1,2,3,4
expect 2 'is no control of the encoding unit' $sim encoding get nothing
expect 0 'block:   probe' $sim --pid 0x8C00 encoding probe
expect 8 'WREN_EuGet: the camera has no encoding extension unit (ZEM_E_NO_DEVICE, 0x80000003)' $without \
  encoding get rate-control
expect 8 'WREN_ProbeGet: the camera has no stream-probe extension unit' $without \
  encoding probe
expect 3 'no camera matches' encoding probe

# The log: wide text as the system keeps it, one entry a call, the failures with the platform's own code.
python3 - "$command_log" $log_encoding <<'PYTHON'
import re, sys
text = open(sys.argv[1], "rb").read().decode(sys.argv[2])
for wanted in (r"^\d{4}/\d+/\d+ \d+:\d+:\d+ : Get : HRESULT=0x00000000 :EU Rate Control \r\n",
               r"Set : HRESULT=0x00000000 :EU Priority ID Control \r\n",
               r"Set : HRESULT=0x00000000 :H264 Probe \r\n\t\tbmHint=0x0000\r\n",
               r"\t\tbmSVCCapabilityModes=0x1 0x2 0x3 0x4 0x5 0x6 0x7 0x8\r\n",
               r"Get : HRESULT=0x80070490 :EU Rate Control \r\n"):
    if not re.search(wanted, text):
        sys.exit("the log lacks " + wanted)
PYTHON
