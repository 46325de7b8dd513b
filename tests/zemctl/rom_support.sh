# Sourced by the tests of zemctl rom and zemctl recover: a simulated boot loader whose storages are
# kept in files, and firmware files to burn.
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"

flash=$work/flash.img
memory=$work/memory.img

# boot [KEYS]: arguments for a simulated boot loader; KEYS are further members of its JSON object,
# each with a comma behind it. Its flash and memory keep what they hold in $flash and $memory.
boot() {
  local storages="{\"type\":\"sf\",\"size\":262144,\"file\":\"$flash\"}"
  storages+=",{\"type\":\"spi-nand\",\"size\":65536}"
  storages+=",{\"type\":\"dram\",\"size\":65536,\"file\":\"$memory\"}"
  boot_arguments=($sim --simulator-options "{\"bootLoader\":{${1:-}\"storages\":[$storages]}}")
}

# with_boot CODE TEXT ARGUMENTS...: expect, with the boot loader of the last boot.
with_boot() {
  local code=$1 text=$2
  shift 2
  expect "$code" "$text" "${boot_arguments[@]}" "$@"
}

# From here on the tool's waits take no time, and how many milliseconds a run has waited is in the file
# $ZEM_WAITED; or they take their time again.
real_zemctl=$zemctl
in_virtual_time() {
  zemctl=${real_zemctl/\/zemctl//zemctl_virtual_time}
  export ZEM_WAITED=$work/waited
}
in_real_time() { zemctl=$real_zemctl; }

blank() { rm -f $flash $memory; }

# stored FILE FROM SIZE AT: SIZE bytes of FILE from FROM on stand in the flash at AT.
stored() {
  cmp -n "$3" -i "$2:$4" "$1" $flash || { echo "the flash differs from $1"; exit 1; }
}

# erased AT SIZE: the flash is erased there.
erased() {
  head -c "$2" /dev/zero | tr '\0' '\377' | cmp -n "$2" -i "0:$1" - $flash ||
    { echo "the flash is not erased at $1"; exit 1; }
}

# Files to burn, the same ones in every run.
python3 - $work <<'PYTHON'
import struct, sys
folder = sys.argv[1]

def some(size, seed):
    state, out = seed, bytearray()
    for _ in range(size):
        state = (state * 1103515245 + 12345) & 0x7FFFFFFF
        out.append((state >> 16) & 0xFF)
    return bytes(out)

def put(name, data):
    with open(f"{folder}/{name}", "wb") as file:
        file.write(data)

payload = some(70000, 1)
put("image.bin", b"VSN_V2FW" + struct.pack("<HII", 1, 0x1234, len(payload)) + some(4096, 2) + payload)
put("short.bin", b"VSN_V2FW" + struct.pack("<HII", 1, 0x1234, len(payload)) + some(4096, 2) + payload[:-1])
put("package.bin", some(10, 3) + struct.pack("<II", 8, 40000) + some(40000, 4))
put("package2.bin", some(10, 5) + struct.pack("<II", 20, 4096 + 700) + some(12, 6) + some(4796, 7))
linux = bytearray(some(8192 + 33000, 8))
linux[8:12] = struct.pack("<I", 12)
linux[16:20] = struct.pack("<I", 0x10)
put("linux.bin", bytes(linux))
put("partial.bin", some(5000, 9))
put("code.bin", some(8, 10) + b"\x01\x00" + some(8, 11) + some(70000, 12))
put("raw_code.bin", some(8, 13) + b"\x02\x00" + some(990, 14))
put("tiny.bin", b"12345")
boot, firmware = bytearray(some(4096 + 5000, 15)), bytearray(some(4096 + 300, 16))
boot[8:28] = struct.pack("<IIIII", 12, 3, 0, 5000, 0xA1A2A3A4)
firmware[20:28] = struct.pack("<II", 300, 0xB1B2B3B4)
put("both.bin", some(18, 17) + bytes(boot) + bytes(12288 - len(boot)) + bytes(firmware))
put("wanted_bc.bin", b"VSN_V2BC" + struct.pack("<HII", 1, 0xA1A2A3A4, 5000) + bytes(boot))
put("wanted_fw.bin", b"VSN_V2FW" + struct.pack("<HII", 1, 0xB1B2B3B4, 300) + bytes(firmware))
PYTHON
