#!/usr/bin/env bash
# Files of a size that nobody can use are refused before they are read: no machine could hold this one.
source "$(dirname "$0")/support.sh"

huge=$work/huge.bin
truncate -s 1T $huge
bytes=1099511627776
for method in image package package-v2 linux partial partial-with-header; do
  expect 9 "has $bytes bytes, more than the 4294967" $sim recover $huge --storage sf --as $method --yes
done
expect 9 "has $bytes bytes, more than the 1 that can be used" $sim rom update-partial --storage sf $huge --address 0xFFFFFFFF --yes
expect 9 "has $bytes bytes, more than the 2147483665 that" $sim rom load-updater $huge
expect 9 "has $bytes bytes, more than the 2147483665 that" $sim rom load-mini-uvc $huge
expect 9 "has $bytes bytes, more than the 4294967296 that" $sim rom load-memory $huge --yes
expect 9 "has $bytes bytes, more than the 4294967296 that" $sim rom unpack $huge
expect 9 "has $bytes bytes, more than the 4294967295 that" $sim rom command fa 55 66 21 --out $huge --yes
expect 9 "has $bytes bytes, more than the 65536 that" $sim nvmem write 0 --input $huge --yes
expect 9 "has $bytes bytes, more than the 8192 that" $sim table write 1 --input $huge --yes
expect 9 "it has $bytes bytes" $sim table init $huge --yes
for update in calibration 'firmware --chip 516x' 'firmware --chip 517x'; do
  expect 9 "has $bytes bytes" $sim update $update $huge --yes
done
expect 9 "has $bytes bytes" $sim data send $huge
expect 9 "has $bytes bytes, but such a frame has 8" bmp yuy2 $huge $work/out.bmp --width 2 --height 2
