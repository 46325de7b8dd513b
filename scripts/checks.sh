# Sourced by test.sh: the checks that are commands. Each is one test.

header=include/ZemUVCExtApi.h
strict=(-fsyntax-only -Wall -Wextra -Wconversion -Wshadow -Werror)

# The public header compiles alone: as C11 and C++, with each compiler, before and behind windows.h.
check header-gcc-c gcc -std=c11 -pedantic "${strict[@]}" -x c $header
check header-gcc-c++ g++ -std=c++11 -pedantic "${strict[@]}" -x c++ $header
check header-clang-c clang -std=c11 -pedantic "${strict[@]}" -x c $header
check header-clang-c++ clang++ -std=c++11 -pedantic "${strict[@]}" -x c++ $header
check header-mingw-c x86_64-w64-mingw32-gcc-win32 -std=c11 "${strict[@]}" -x c $header
check header-mingw-c++ x86_64-w64-mingw32-g++-win32 -std=c++11 "${strict[@]}" -x c++ $header
check header-msvc-c clang --target=x86_64-pc-windows-msvc -ffreestanding -std=c11 "${strict[@]}" \
  -x c $header
check header-msvc-c++ clang++ --target=x86_64-pc-windows-msvc -ffreestanding -std=c++14 \
  "${strict[@]}" -x c++ $header
header_with_windows() {
  printf '#include "%s"\n#include "%s"\nGUID zemGuid;\n' "$1" "$2" |
    x86_64-w64-mingw32-g++-win32 -std=c++11 -I. "${strict[@]}" -x c++ -
}
check header-before-windows header_with_windows $header windows.h
check header-behind-windows header_with_windows windows.h $header

# Callers built for the Microsoft ABI and with MinGW reach both overloads, and a C program the rest.
check caller-microsoft-abi scripts/microsoft_abi_caller.sh
check caller-mingw wine build/windows/cpp_caller.exe
check caller-c wine build/windows/c_caller.exe

# The same sources give the same DLL.
rebuild_is_identical() {
  cp build/windows/ZemUVCExtApi.dll build/first.dll
  rm build/windows/ZemUVCExtApi.dll
  touch exports/*.cpp
  cmake --build --preset windows --target ZemUVCExtApi
  cmp build/first.dll build/windows/ZemUVCExtApi.dll
}
check reproducible-dll rebuild_is_identical

# The host tool, end to end.
for script in tests/zemctl/*_test.sh; do
  check "zemctl-$(basename "$script" _test.sh)" "$script"
done

# Fuzzers, briefly: what they find here is a regression.
build_fuzzers() { build fuzz; }
check fuzzers-build build_fuzzers
for fuzzer in build/fuzz/*_fuzzer; do
  check "$(basename "$fuzzer")" "$fuzzer" -max_total_time=10 -seed=1 -verbosity=0
done

check format bash -c 'git ls-files "*.h" "*.cpp" "*.c" | xargs clang-format --dry-run -Werror'
check clang-tidy scripts/lint.sh
