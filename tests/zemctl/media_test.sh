#!/usr/bin/env bash
# zemctl bmp and wav: their files are read back by programs that know nothing of this library.
source "$(dirname "$0")/support.sh"

# bytes COUNT BYTE...: the bytes (in octal) over and over, COUNT times.
bytes() {
  local count=$1
  shift
  local group
  group=$(printf '\\%s' "$@")
  for _ in $(seq "$count"); do
    printf "$group"
  done
}

# picture FILE: its pixels from the top, as a viewer shows them, red, green, blue in hexadecimal.
picture() {
  mogrify -depth 8 -format rgb "$1"
  od -An -v -tx1 "${1%.bmp}.rgb" | tr -d ' \n'
}

same() {
  [ "$1" = "$2" ] || { echo "$3: got $1, wanted $2"; exit 1; }
}

# 4 x 2, upper row grey 100, lower row Y 255, U 0, V 255.
{ bytes 2 144 200 144 200; bytes 2 377 000 377 377; } >$work/yuy2.raw
expect 0 'picture: upright' bmp yuy2 --width 4 --height 2 $work/yuy2.raw $work/yuy2.bmp
same "$(picture $work/yuy2.bmp)" \
  "646464646464646464646464$(printf 'ffd01c%.0s' 1 2 3 4)" 'the upright picture'

# The same colours as planes: the picture comes out upside down.
{ bytes 4 144; bytes 4 377; bytes 2 200; bytes 2 200; } >$work/planar.raw
expect 0 'upside down' bmp planar --width 4 --height 2 $work/planar.raw $work/planar.bmp
same "$(picture $work/planar.bmp)" \
  "$(printf 'ffffff%.0s' 1 2 3 4)$(printf '646464%.0s' 1 2 3 4)" 'the picture of planes'

# Blue, green, red of 4 x 1.
bytes 4 001 002 003 >$work/pixels.raw
expect 0 'bytes:   66' bmp rgb --width 4 --height 1 $work/pixels.raw $work/rgb.bmp
same "$(picture $work/rgb.bmp)" "$(printf '030201%.0s' 1 2 3 4)" 'the picture of pixels'
expect 0 '"bytes": 66' --json bmp rgb --width 4 --height 1 $work/pixels.raw $work/rgb.bmp

rm -f $work/none.bmp
expect 9 'has 16 bytes, but such a frame has 32' \
  bmp yuy2 --width 4 --height 4 $work/yuy2.raw $work/none.bmp
expect 9 'cannot be opened' bmp yuy2 --width 4 --height 2 $work/missing $work/none.bmp
expect 2 'not in range' bmp yuy2 --width 0 --height 2 $work/yuy2.raw $work/none.bmp
expect 2 'yuv' bmp yuv --width 4 --height 2 $work/yuy2.raw $work/none.bmp
[ ! -e $work/none.bmp ]
expect 9 'could not be written' \
  bmp yuy2 --width 4 --height 2 $work/yuy2.raw $work/missing/none.bmp

# A quarter of a second of a square wave.
bytes 1000 000 020 000 020 000 360 000 360 >$work/sound.raw
expect 0 'seconds: 0.25' wav $work/sound.raw $work/sound.wav --rate 16000
for field in 'r 16000' 'c 1' 'b 16' 's 4000'; do
  same "$(soxi "-${field% *}" $work/sound.wav)" "${field#* }" "soxi -${field% *}"
done
sox $work/sound.wav -t raw - | cmp - $work/sound.raw
expect 9 'no whole number of frames of 6' wav $work/sound.raw $work/none.wav --rate 16000 \
  --channels 3
: >$work/empty.raw
expect 9 'has 0 bytes' wav $work/empty.raw $work/none.wav --rate 16000
expect 9 'cannot be opened' wav $work/missing $work/none.wav --rate 16000
[ ! -e $work/none.wav ]
