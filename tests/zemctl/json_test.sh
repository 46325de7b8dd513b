#!/usr/bin/env bash
# zemctl --json: one document on standard output and nothing else, whatever the command comes to.
source "$(dirname "$0")/support.sh"

# document CODE CHECK ARGUMENTS...: the run ends with CODE; its standard output is one document, of the
# present schema, for which CHECK (Python, of the document d) holds; with a failure the document has an
# "error" of the same code, and otherwise none.
document() {
  local code=$1 check=$2 status=0
  shift 2
  $zemctl "$@" >$out 2>$work/errors </dev/null || status=$?
  python3 - "$out" "$code" "$status" "$check" <<'PYTHON' || { echo "zemctl $*"; cat $out $work/errors; exit 1; }
import json, sys
path, wanted, status, check = sys.argv[1:]
d = json.load(open(path, encoding="utf-8"))
if int(status) != int(wanted):
    sys.exit(f"status {status}, wanted {wanted}")
if d["schema"] != 1 or list(d)[:2] != ["schema", "command"]:
    sys.exit("no head")
if d.get("error", {}).get("code", 0) != int(status):
    sys.exit("the error is another than the exit code")
if "error" in d and list(d["error"]) != ["code", "function", "result", "message", "camera_state", "next"]:
    sys.exit("the error lacks a part")
if not eval(f"({check})"):
    sys.exit(f"not so: {check}")
PYTHON
}

document 0 'd["command"] == "list" and d["devices"][0]["vendor_unit"] is True' $sim --json list
document 0 'd["devices"][0]["vendor_unit"] is False' --json $sim \
  --simulator-options '{"cameras":[{"vendorUnit":false}]}' list
document 0 'd["command"] == "reg get" and d["value"] == "0x5170"' $sim reg get isp 0 --json
document 7 'd["error"]["function"] == "ZEMAPI_GetRegister" and d["error"]["result"] == "0x80000003" and
  "the camera is gone" in d["error"]["camera_state"] and "Check that" in d["error"]["next"] and
  "value" not in d' --json $sim --simulator-fault unplug@1 reg get isp 0
document 0 '"max_kbit_s" in d["formats"][0]' --json $sim h264 list

# What could not be read is null, and named with the reason; the rest stands.
document 7 'd["device_information"] is None and d["firmware_version"] == "01 02 03 04 05 06" and
  "could not be written" in d["not_read"]["device_information"]' --json $sim --simulator-fault fail@3 info
document 7 'd["controls"][1]["value"] is None and d["controls"][1]["maximum"] is None and
  "ZEMAPI_GetVideoProcAmp" in d["controls"][1]["not_read"]["value"]' \
  --json $sim --simulator-fault fail@3 control list
document 4 'd["sound"] is False and "corrupt" in d["error"]["message"]' --json $sim --simulator-options \
  '{"cameras":[{"nvmem":[238,0,24,0, 0,1,6,0,161,162, 0,2,2,0, 0,3,6,0,177,178]}]}' table list
document 8 'd["present"] is False' --json $sim xu check h264

# Command lines that are wrong, wherever --json stands.
document 2 'd["command"] is None' --json
document 2 'd["command"] == "reg get" and d["error"]["function"] is None and
  d["error"]["next"] == "Run \"zemctl reg get --help\"."' reg get isp --json
document 2 'd["command"] == "reg get"' --json reg get isp 0 --nonsense
document 2 'd["command"] == "reg set"' $sim reg set codec 0 0x100 --json
document 2 '"--simulator-options" in d["error"]["message"]' $sim --simulator-options nonsense --json list
document 0 '"--width" in d["help"]' reg get --help --json

# Others than the camera's and the library's.
head -c 100 /dev/zero >$work/image.bin
document 11 'd["error"]["message"] == "nothing was done"' --json $sim update calibration $work/image.bin
document 9 'd["error"]["result"] is None' --json $sim --yes update calibration $work/nothing.bin
document 3 'd["command"] == "list"' --json list

# Ctrl-C in the middle of a burn, once the trace shows that it has begun.
head -c 2048 /dev/zero >$work/image.bin
rm -f $work/trace
python3 - "$zemctl" $work <<'PYTHON'
import json, os, signal, subprocess, sys, time
zemctl, work = sys.argv[1:]
options = '{"cameras":[{"chip":"516x","burnPolls":500}]}'
run = subprocess.Popen(
    [*zemctl.split(), "--json", "--simulator", "--yes", "--simulator-options", options, "--trace", f"{work}/trace",
     "update", "calibration", f"{work}/image.bin"],
    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
    preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
deadline = time.monotonic() + 30
def lines():
    return open(f"{work}/trace").read().count("\n") if os.path.exists(f"{work}/trace") else 0
while lines() < 20 and run.poll() is None and time.monotonic() < deadline:
    time.sleep(0.02)
run.send_signal(signal.SIGINT)
output, _ = run.communicate(timeout=60)
document = json.loads(output)
error = document["error"]
if (run.returncode, error["code"], document["command"]) != (12, 12, "update calibration"):
    sys.exit(f"stopped: status {run.returncode}, {output.decode()}")
if not error["camera_state"] or not error["next"]:
    sys.exit(f"neither state nor next step: {error}")
PYTHON
