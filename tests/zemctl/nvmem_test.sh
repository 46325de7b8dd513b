#!/usr/bin/env bash
# zemctl nvmem, table and led.
source "$(dirname "$0")/support.sh"

tirella=($sim --simulator-options '{"cameras":[{"tirellaUnit":true}]}')
erased=($sim --simulator-options '{"cameras":[{"nvmem":[]}]}')
# An entry of length 2 behind table 1.
corrupt=($sim --simulator-options
  '{"cameras":[{"nvmem":[238,0,24,0, 0,1,6,0,161,162, 0,2,2,0, 0,3,6,0,177,178]}]}')

# bytes FILE TEXT: a file with the bytes that printf makes of the text.
bytes() { printf "$2" >"$1"; }

# NVMEM of the vendor unit.
expect 0 'data:    ee 00 58 00' $sim nvmem read 0 4
expect 0 'data:    ff ff' $sim nvmem read 0x1000 2
expect 0 '"data": "ff ff"' $sim --json nvmem read 0x1000 2
expect 2 "the memory's addresses end at 0xFFFF" $sim nvmem read 0xFFFF 2
expect 2 'not in range' $sim nvmem read 0 0
expect 7 'platform failure' $sim nvmem read 0x2000 1
expect 0 'written and compared: yes' $sim --yes nvmem write 0x1000 'a1 a2 a3'
expect 0 '"bytes": 3' $sim --json --yes nvmem write 0x1000 'a1 a2 a3'
expect 11 'The camera "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0: 3 bytes of its vendor unit'"'s non-volatile memory will be overwritten from 0x1000 on. Go on?" \
  $sim nvmem write 0x1000 'a1 a2 a3' </dev/null
expect 0 'would be written: a1 a2 a3' $sim --simulator-fault unplug@1 \
  nvmem write 0x1000 'a1 a2 a3' --dry-run
expect 2 'give either bytes or --input' $sim nvmem write 0x1000
expect 7 'ZEMAPI_WriteNVMEM' $sim --yes --simulator-fault fail@1 nvmem write 0x1000 'a1'
expect 9 'cannot be opened' $sim --yes nvmem write 0 --input $work/no-such-file
bytes $work/three '\xb1\xb2\xb3'
expect 0 'written and compared: yes' $sim --yes nvmem write 0x1000 --input $work/three
expect 0 'output:' $sim nvmem read 0 88 --output $work/tables
[ "$(stat -c %s $work/tables)" -eq 88 ]

# NVMEM and LED of the TIRELLA unit.
head -c 256 /dev/zero >$work/zeros
expect 0 'data:    ff ff' "${tirella[@]}" nvmem read 254 2 --unit tirella
expect 2 "the memory's addresses end at 0x00FF" "${tirella[@]}" nvmem read 255 2 --unit tirella
expect 0 'written and compared: yes' "${tirella[@]}" --yes nvmem write 0 --input $work/zeros \
  --unit tirella
rm -f $work/state.json
expect 0 'written and compared: yes' "${tirella[@]}" --state $work/state.json --yes \
  nvmem write 0 --input $work/zeros --unit tirella
expect 0 'firmware version' $sim --state $work/state.json info
expect 0 'data:    00 00' "${tirella[@]}" --state $work/state.json nvmem read 254 2 --unit tirella
expect 2 'is written whole' "${tirella[@]}" --yes nvmem write 0 --input $work/three --unit tirella
expect 8 'the camera has no tirella extension unit' $sim nvmem read 0 1 --unit tirella
expect 8 'the camera has no tirella extension unit' $sim --yes nvmem write 0 --input $work/zeros \
  --unit tirella
expect 0 'led: 0xA5' "${tirella[@]}" led 0xA5
expect 0 'would be sent: a5' $sim led 0xA5 --dry-run
expect 8 'the camera has no tirella extension unit' $sim led 1
expect 2 'not in range' "${tirella[@]}" led 256

# Tables.
expect 0 'sound: yes' $sim table list
expect 0 '  0x20  64' $sim table list
expect 0 '"id": "0x20"' $sim --json table list
expect 4 'the camera has no table store' "${erased[@]}" table list
expect 4 'sound: no' "${corrupt[@]}" table list
expect 0 'data:  01 02 03 04 05 06 07 08' $sim table read 1
expect 0 'bytes: 0' $sim table read 2
expect 4 'the table store has no table 0x07' $sim table read 7
expect 0 'data:  a1 a2' "${corrupt[@]}" table read 1
expect 4 'the table store has a corrupt entry' "${corrupt[@]}" table read 3
expect 4 'the table store has a corrupt entry' "${corrupt[@]}" --yes table write 3 'b1 b2'
expect 0 'output:' $sim table read 0x20 --output $work/table
[ "$(stat -c %s $work/table)" -eq 64 ]
expect 0 'written and compared: yes' $sim --yes table write 1 'a1 a2 a3 a4 a5 a6 a7 a8'
expect 0 'written and compared: yes' $sim --yes table write 0x20 --input $work/table
expect 9 'table 0x01 has 8 bytes and not 2' $sim --yes table write 1 'a1 a2'
expect 4 'the table store has no table 0x07' $sim --yes table write 7 'a1'
expect 11 'The camera "ZEM Simulated Camera" (5a45:8c00) at zem-simulator&0: its table 0x01 will be overwritten. Go on?' \
  $sim table write 1 'a1 a2 a3 a4 a5 a6 a7 a8' </dev/null
expect 0 'would be written: a1 a2 a3 a4 a5 a6 a7 a8' \
  $sim table write 1 'a1 a2 a3 a4 a5 a6 a7 a8' --dry-run

# The whole store.
expect 0 'output:' $sim table dump --output $work/store
cmp $work/store $work/tables
expect 0 '  0x20  64' $sim --simulator-fault unplug@1 table init $work/store --dry-run
expect 11 ': its whole table store will be overwritten. Go on?' $sim table init $work/store \
  </dev/null
bytes $work/bad '\xed\x00\x04\x00'
expect 9 'does not begin with 0xEE' $sim --yes table init $work/bad
bytes $work/bad '\xee\x00\x04'
expect 9 'is no table store: it has 3 bytes' $sim --yes table init $work/bad
head -c 8193 /dev/zero >$work/bad
expect 9 'is no table store: it has 8193 bytes' $sim --yes table init $work/bad
bytes $work/bad '\xee\x00\x05\x00'
expect 9 'has 4 bytes and says that it has 5' $sim --yes table init $work/bad
bytes $work/bad '\xee\x00\x0a\x00\x00\x01\x07\x00\xa1\xa2'
expect 9 'has an entry that ends behind it' $sim --yes table init $work/bad
bytes $work/bad '\xee\x00\x0a\x00\x00\x01\x02\x00\xa1\xa2'
expect 9 'has a corrupt entry' $sim --yes table init $work/bad
expect 9 'cannot be opened' $sim --yes table init $work/no-such-file
expect 0 'written and compared: yes' "${erased[@]}" --yes table init $work/store
bytes $work/bad '\xee\x00\x04\x00'
expect 0 'written and compared: yes' $sim --yes table init $work/bad
expect 4 'the camera has no table store' $sim --simulator-fault garbage@4 --yes \
  table init $work/store
expect 5 'could not write the tables' $sim --simulator-options \
  '{"cameras":[{"burnError":true}]}' --yes table init $work/store
