#!/usr/bin/env bash
# Prints the tables of docs/performance.md, measured on this machine. With --list FOLDER only what they
# and their rows are called, by the programs that a build has put into the folder.
source "$(dirname "$0")/setup.sh"

programs=(register_read linux_register_read data_transfer romboot frame)

# kernel LABEL ISA FUNCTION: what the vector instructions of a conversion do.
kernels() {
  kernel "AVX-512, planar, 128 pixels" Avx512 ConvertPlanarRows
  kernel "AVX-512, YUY2, 64 pixels" Avx512 ConvertYuy2Row
  kernel "AVX2, planar, 64 pixels" Avx2 ConvertPlanarRows
  kernel "AVX2, YUY2, 32 pixels" Avx2 ConvertYuy2Row
}

kernels_heading="### Instructions of a block"

if [ "${1:-}" = --list ]; then
  for program in "${programs[@]}"; do
    "$2/${program}_benchmark" --list
  done
  kernel() { echo "$1"; }
  echo "$kernels_heading"
  kernels
  exit
fi

{
  step "packages" install_missing "${native_packages[@]}"
  step "configure release" cmake --preset release
  for program in "${programs[@]}"; do
    step "build $program" cmake --build --preset release --target "${program}_benchmark"
  done
} >&2

for program in "${programs[@]}"; do
  "build/release/${program}_benchmark"
  echo
done

kernel() {
  objdump --disassemble --no-show-raw-insn --demangle build/release/frame_benchmark |
    awk -v label="$1" -v isa="$2" -v name="$3" '
      /^[0-9a-f]+ <.*>:$/ { inside = index($0, name "<") && index($0, "::" isa ">") }
      !inside { next }
      { sub(/#.*/, "") }
      $2 ~ /^prefetch/ { fetches++ }
      $2 !~ /^v/ || $2 == "vzeroupper" { next }
      $2 ~ /^vp(shuf|perm|ack|unpck|movzx|insert|blend)|^vinsert/ { shuffles++ }
      $2 !~ /^v(mov|pbroadcast)/ { operations++ }
      /\) *$/ { stores++; next }
      /\(/ { loads++ }
      END {
        if (!operations) { print "no function " name " for " isa >"/dev/stderr"; exit 1 }
        printf "| %s | %d | %d | %d | %d | %d |\n", label, operations, shuffles, loads, stores, fetches
      }'
}
echo "$kernels_heading"
echo
echo "| | Operations | Shuffles among them | Loads | Stores | Fetches |"
echo "|---|---|---|---|---|---|"
kernels
