#!/usr/bin/env bash
# coverage.sh [--write]: how much of the library the native tests run through, room by room. Ends with
# "lines X %, branches Y %", and fails when something is missed that docs/coverage.md does not name, or
# when its table has other numbers; --write puts them there.
source "$(dirname "$0")/setup.sh"

step "packages" install_missing "${native_packages[@]}" llvm python3
step "configure coverage" cmake --preset coverage
step "build the tests" cmake --build --preset coverage --target zem_tests zem_linux_tests

build=build/coverage
rm -rf $build/counts
for tests in zem_tests zem_linux_tests; do
  # Counts of a process are added to the file, so that those of a test's child stay.
  export LLVM_PROFILE_FILE=$build/counts/$tests.%m.profraw
  step "run $tests" $build/$tests --gtest_brief=1
done
llvm-profdata merge -sparse $build/counts/*.profraw -o $build/counts/all.profdata
# It warns of functions that differ between the two programs: those of their own tests.
llvm-cov export -skip-functions -instr-profile $build/counts/all.profdata \
  $build/zem_tests -object $build/zem_linux_tests >$build/counts/all.json 2>build/log/llvm-cov.log
exec python3 -B scripts/coverage.py $build/counts/all.json "$@"
