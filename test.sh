#!/usr/bin/env bash
# All layers of tests. Ends with a line "N passed, N failed"; the exit status matches.
source "$(dirname "$0")/scripts/setup.sh"

install_missing "${windows_packages[@]}" libgtest-dev libbenchmark-dev libyuv-dev clang clang-format \
  clang-tidy imagemagick libsox-fmt-base lld llvm python3 sox

passed=0
failed=0

# check NAME COMMAND...: one test that is a command.
check() {
  local name=$1
  shift
  if "$@" >"build/check.log" 2>&1; then
    passed=$((passed + 1))
    echo "ok      $name"
  else
    failed=$((failed + 1))
    echo "FAILED  $name"
    tail -n 60 build/check.log
  fi
}

# suite NAME COMMAND...: a GoogleTest program; each of its tests counts. A program that ends without
# its report counts as one failure.
suite() {
  local name=$1
  shift
  local report=build/$name.json
  rm -f "$report"
  local status=0
  "$@" --gtest_brief=1 "--gtest_output=json:$report" || status=$?
  local counts
  if ! counts=$(python3 scripts/count_tests.py "$report" "$status"); then
    counts="0 1"
    echo "FAILED  $name: ended with status $status and without a report"
  fi
  passed=$((passed + ${counts% *}))
  failed=$((failed + ${counts#* }))
  echo "$name: ${counts% *} passed, ${counts#* } failed"
}

build native
suite native build/native/zem_tests
suite optimised build/native/zem_tests_optimised

build windows
prepare_wine
suite windows wine build/windows/zem_windows_tests.exe
source scripts/checks.sh

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
