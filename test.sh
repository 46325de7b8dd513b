#!/usr/bin/env bash
# All layers of tests; the table is scripts/checks/CMakeLists.txt. Arguments go to ctest, such as
# -R zemctl for a part of them. Ends with a line "N passed, N failed"; the exit status matches.
source "$(dirname "$0")/scripts/setup.sh"

step "packages" install_missing "${windows_packages[@]}" "${native_packages[@]}" "${docs_packages[@]}" \
  "${kernel_packages[@]}" "${package_packages[@]}" clang-format clang-tidy imagemagick libsox-fmt-base lld \
  mandoc mypy pkgconf python3 python3-jsonschema python3-pip python3-pytest python3-setuptools python3-wheel sox unzip
for preset in windows native linux fuzz thread; do
  step "configure $preset" cmake --preset $preset
done
step "configure the checks" cmake -G Ninja -S scripts/checks -B build/checks

rm -rf build/reports
mkdir -p build/reports

# Open as long as this runs: scripts/checks/wine.sh ends by it. The tests do not inherit it.
export ZEM_TESTS_RUN=$zem_root/build/tests-run
rm -f "$ZEM_TESTS_RUN"
mkfifo "$ZEM_TESTS_RUN"
exec {tests_run}<>"$ZEM_TESTS_RUN"

# One more than processors: there is always a test that waits.
status=0
ctest --test-dir build/checks --parallel $(($(nproc) + 1)) --output-on-failure --no-tests=error \
  --output-junit "$zem_root/build/reports/checks.xml" "$@" {tests_run}>&- || status=$?
python3 scripts/count_tests.py build/reports || status=$?
exit "$status"
