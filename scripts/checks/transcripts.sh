#!/usr/bin/env bash
# The same tour of zemctl reads the same, letter by letter but for the names of places, under Wine and
# on Linux. The tests in a kernel compare the third: a camera that is a USB device there.
set -euo pipefail
work=build/transcripts
rm -rf $work
mkdir -p $work
for section in $(tests/zemctl/transcript.sh sections); do
  for system in windows linux; do
    tests/zemctl/transcript.sh $system "$section" $work/$system >$work/$system-"$section".txt
  done
  diff -u $work/windows-"$section".txt $work/linux-"$section".txt
done
# No empty tour has been compared.
[ "$(cat $work/linux-*.txt | grep -c '^\$ zemctl')" -ge 40 ]
