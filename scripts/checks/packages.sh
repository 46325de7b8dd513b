#!/usr/bin/env bash
# packages.sh contents|again|windows|debian|installed: what is in the packages of build/packages, that they are made
# the same again, and that programs can be built with them and run.
source "$(dirname "$0")/../setup.sh"
# A package is moved to wherever its user likes.
work="$zem_root/build/package-tests/$1 of a user"
packages=$zem_root/build/packages
version=$(sed -n 's/^#define ZEM_VERSION_\(MAJOR\|MINOR\|PATCH\) //p' include/ZemUVCExtApi.h | paste -sd.)
debian_version=$version-1
zip=ZemUVCExtApi-$version-windows-x64
as_root rm -rf "$work"
mkdir -p "$work"

fail() {
  echo "$*" >&2
  exit 1
}

# same_list NAME: what is read is what packaging/NAME.list says. The version does not count.
same_list() {
  sed "s/$version/VERSION/g" >"$work/$1.list"
  diff "packaging/$1.list" "$work/$1.list" ||
    fail "$1 has other files; if that is meant: cp '$work/$1.list' packaging/"
}

# same_version WHAT VERSION
same_version() { [ "$2" = "$version" ] || fail "$1 has the version \"$2\""; }

# Each place that tells a version tells that of the header.
versions() {
  local stage=$work/$zip file usr=$work/libzemuvcextapi-dev/usr tools=$work/zemuvc-tools/usr
  same_version header "$(echo ZEM_VERSION | cpp -P -include "$stage/include/ZemUVCExtApi.h" | tail -n 1 | tr -d '" ')"
  same_version CHANGELOG.md "$(sed -n '/^## /{s/^## \([^ ]*\) .*/\1/p;q}' "$stage/CHANGELOG.md")"
  for file in "$stage"/{bin/*.{dll,exe},python/zemuvc/*.dll}; do
    same_version "$file" "$(strings -e l "$file" | grep -A1 '^ProductVersion$' | tail -n 1)"
  done
  same_version Python "$(sed -n 's/^VERSION = "\(.*\)"$/\1/p' "$stage/python/zemuvc/_exports.py")"
  for file in "$stage"/lib "$usr"/lib/*; do
    same_version "$file" "$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")/\1/p' \
      "$file/cmake/ZemUVCExtApi/ZemUVCExtApiConfigVersion.cmake")"
    same_version "$file" "$(sed -n 's/^Version: //p' "$file"/pkgconfig/*.pc | sort -u)"
  done
  same_version "shared library" "$(ls "$work"/libzemuvcextapi1/usr/lib/*/libZemUVCExtApi.so.*.* | sed 's/.*\.so\.//')"
  for file in "$tools"/share/man/man1/*.gz; do
    same_version "$file" "$(zcat "$file" | sed -n '1s/.* "[a-z-]* \(.*\)" "User Commands"$/\1/p')"
  done
  for file in "$packages"/*.deb; do
    same_version "$file" "$(dpkg-deb -f "$file" Version | sed 's/-1$//')"
  done
  for file in "$work"/*/usr/share/doc/*/changelog.Debian.gz; do
    same_version "$file" "$(zcat "$file" | sed -n '1s/^zemuvcextapi (\(.*\)-1) .*/\1/p')"
  done
}

# The manual of the tool has each command and option that its completion has, and man can read it.
manuals() {
  local usr=$work/zemuvc-tools/usr manual=$work/zemctl.1
  zcat "$usr/share/man/man1/zemctl.1.gz" >"$manual"
  local completion=$usr/share/bash-completion/completions/zemctl
  diff <(sed -n "/^_zemctl_options/,/^}/s/^    '\(..*\)') REPLY.*/\1/p" "$completion" | sort) \
    <(sed -n 's/^\.SS "zemctl \(.*\)"$/\1/p' "$manual" | sed 's/\\-/-/g' | sort)
  diff <(sed -n '/^_zemctl_options/,/^}/p' "$completion" | grep -o -e '--[a-z0-9-]*' | sort -u) \
    <(sed -n 's/^\\fB\(\\-h,\)\?\(\\-\\-[a-z0-9\\-]*\)\\fR.*/\2/p' "$manual" | sed 's/\\-/-/g' | sort -u)
  # It has no date: it is not of a day.
  ! zcat "$usr"/share/man/man1/*.gz | mandoc -T lint -W warning | grep -v 'missing date' ||
    fail "man does not understand all of the manuals"
}

contents() {
  local package file binaries
  unzip -q "$packages/$zip.zip" -d "$work"
  (cd "$packages" && sha256sum --quiet --strict -c SHA256SUMS)
  [ "$(wc -l <"$packages/SHA256SUMS")" -eq 4 ]
  (cd "$work/$zip" && sha256sum --quiet --strict -c SHA256SUMS)
  # All but itself.
  diff <(cd "$work/$zip" && find . -type f ! -path ./SHA256SUMS -printf '%P\n' | sort) \
    <(cut -c 67- "$work/$zip/SHA256SUMS")
  zipinfo -1 "$packages/$zip.zip" | same_list windows
  python3 -B scripts/checks/zip_for_windows.py "$packages/$zip.zip" "$(release_time)"
  # The DLL of the package is the one that the tests run with.
  cmp build/windows/ZemUVCExtApi.dll "$work/$zip/bin/ZemUVCExtApi.dll"
  for package in libzemuvcextapi1 libzemuvcextapi-dev zemuvc-tools; do
    file=$packages/${package}_${debian_version}_amd64.deb
    dpkg-deb -R "$file" "$work/$package"
    # What it needs and says to others; mode and owner of each file, and where a link leads.
    {
      dpkg-deb -f "$file" Architecture Depends Multi-Arch
      (cd "$work/$package/DEBIAN" && grep -Hs . shlibs triggers || true)
      dpkg-deb -c "$file" | awk '{ $3 = $4 = $5 = ""; print }' | tr -s ' '
    } | same_list "$package"
    (cd "$work/$package" && md5sum --quiet --strict -c DEBIAN/md5sums)
  done
  for file in "$work"/{"$zip",libzemuvcextapi-dev/usr}/include/*; do
    grep -q '^\(/\*\|//\) SPDX-License-Identifier: MIT' <(head -n 1 "$file") || fail "$file: no licence"
  done
  versions
  manuals
  /usr/bin/python3 -B scripts/checks/bill_of_materials.py "$work"/{"$zip",libzemuvcextapi1,libzemuvcextapi-dev,zemuvc-tools}
  mapfile -t binaries < <(find "$work" -type f -regex '.*\(\.dll\|\.exe\|\.lib\|\.a\|\.so[0-9.]*\|/usr/bin/[^/]*\)')
  [ "${#binaries[@]}" -eq 13 ] || fail "binaries: ${binaries[*]}"
  scripts/checks/hardening.sh "${binaries[@]}"
  ! grep -rlF "$zem_root" "$work" || fail "these name the folder that they were built in"
}

again() {
  # By somebody whose settings differ.
  umask 077
  TZ=Asia/Tokyo scripts/package.sh "$work/packages"
  diff -r "$packages" "$work/packages"
}

# expect_consumers FOLDER RUN...: each consumer prints what it read, whichever way it was built.
expect_consumers() {
  local folder=$1
  shift
  [ "$("$@" "$folder/c_consumer$suffix" | tr -d '\r')" = "C $version 0x00000000 0xABCD" ] || fail "$folder: C"
  [ "$("$@" "$folder/cpp_consumer$suffix" | tr -d '\r')" = "C++ $version 0xABCD" ] || fail "$folder: C++"
}

# with_pkg_config FLAG...: the consumers without CMake.
with_pkg_config() {
  local flags
  mkdir -p "$work/with-pkg-config"
  flags=$(pkg-config --cflags --libs zemsimulator)
  [ "$(pkg-config --modversion zemuvcextapi)" = "$version" ]
  eval "\"\$CC\" \"\$@\" tests/packages/consumer.c -o \"\$work/with-pkg-config/c_consumer$suffix\" $flags"
  eval "\"\$CXX\" \"\$@\" -std=c++17 tests/packages/consumer.cpp -o \"\$work/with-pkg-config/cpp_consumer$suffix\" $flags"
}

# examples RUN...: those in $work/examples run, and their tests pass.
examples() {
  [ "$("$@" "$work/examples/update_firmware$suffix" | tr -d '\r')" = "usage: update_firmware 516x|517x IMAGE" ]
  ctest --test-dir "$work/examples" --no-tests=error --output-on-failure
}

windows() {
  suffix=.exe
  unzip -q "$packages/$zip.zip" -d "$work"
  local package=$work/$zip library read_simulated
  local compiler=x86_64-w64-mingw32
  local toolchain=(-G Ninja -D CMAKE_SYSTEM_NAME=Windows -D CMAKE_EXE_LINKER_FLAGS=-static
    -D CMAKE_C_COMPILER=$compiler-gcc-win32 -D CMAKE_CXX_COMPILER=$compiler-g++-win32)

  cmake "${toolchain[@]}" -S tests/packages -B "$work/with-cmake" -D "ZemUVCExtApi_DIR=$package/lib/cmake/ZemUVCExtApi"
  cmake --build "$work/with-cmake" -j 1
  expect_consumers "$work/with-cmake" wine

  CC=$compiler-gcc-win32 CXX=$compiler-g++-win32 \
    PKG_CONFIG_LIBDIR=$package/lib/pkgconfig with_pkg_config -static
  cp "$package"/bin/*.dll "$work/with-pkg-config/"
  expect_consumers "$work/with-pkg-config" wine

  # The examples build where they lie. Without a camera:
  cmake "${toolchain[@]}" -D CMAKE_CROSSCOMPILING_EMULATOR=wine -S "$package/examples" -B "$work/examples"
  cmake --build "$work/examples" -j 1
  examples wine

  [ "$(wine "$package/bin/zemctl.exe" --version | tr -d '\r')" = "zemctl $version" ]
  read_simulated=$(wine "$package/bin/zemctl.exe" --simulator reg get isp 0)
  grep -qF 'value:   0x5170' <<<"$read_simulated"

  cmake -S tests/packages/microsoft -B "$work/microsoft" -D CMAKE_SYSTEM_NAME=Windows \
    -D "ZemUVCExtApi_DIR=$package/lib/cmake/ZemUVCExtApi"
  diff <(printf '%s\n' "$package"/lib/{ZemUVCExtApi,ZemSimulator}.lib) "$work/microsoft/import_libraries"
  scripts/checks/microsoft_abi_caller.sh "$package" "$work/microsoft_abi"

  # The Python module brings its libraries along, wherever it is installed. Here is no Windows to load them:
  # it reads with those of this system.
  /usr/bin/python3 -m pip install -q --no-index --no-build-isolation --no-deps --root-user-action=ignore \
    --target "$work/site" "$package/python"
  (cd "$work" && [ "$(ZEM_LIBRARY=$zem_root/build/linux/libZemUVCExtApi.so PYTHONPATH=$work/site \
    /usr/bin/python3 -B "$zem_root/tests/packages/consumer.py")" = "Python $version 0xabcd" ])
  cmp LICENSE "$work/site/zemuvc-$version.dist-info/LICENSE"
  for library in ZemUVCExtApi.dll ZemSimulator.dll; do
    cmp "$package/bin/$library" "$work/site/zemuvc/$library"
  done
}

debian() {
  local root=$work/root c_library
  # A system with nothing but what the packages say that they need.
  mkdir -p "$root/var/lib/dpkg/"{info,updates,triggers}
  dpkg-query --status libc6 | sed '/^\(Depends\|Pre-Depends\|Conffiles\):/d; /^ \//d' >"$root/var/lib/dpkg/status"
  as_root dpkg --root="$root" --no-triggers --force-script-chrootless --install "$packages"/*.deb
  as_root dpkg --root="$root" --verify
  PKG_CONFIG_LIBDIR=$root/usr/lib/$(gcc -print-multiarch)/pkgconfig \
    LD_LIBRARY_PATH=$root/usr/lib/$(gcc -print-multiarch) programs_of "$root/usr"
  # In that system, with the files of the C library and no others.
  as_root mkdir -p "$root"/usr/{lib,lib64}
  as_root ln -s usr/lib usr/lib64 "$root/"
  mapfile -t c_library < <(dpkg-query -L libc6 | while read -r file; do [ -d "$file" ] || echo "$file"; done)
  as_root cp -P --parents -t "$root" "${c_library[@]}"
  as_root cp -r "$work/with-pkg-config" "$root/programs"
  expect_consumers /programs as_root chroot "$root"
  [ "$(as_root chroot "$root" /usr/bin/zemctl --version)" = "zemctl $version" ]
  as_root chroot "$root" /usr/bin/zemctl --simulator reg get isp 0 | diff - <("$root/usr/bin/zemctl" --simulator reg get isp 0)
  [ "$(as_root chroot "$root" /usr/bin/zem-usb-camera --version)" = "$version" ]
  # Without packages: the tool finds its library there.
  cmake --install build/linux --prefix "$work/local" >/dev/null
  [ "$("$work/local/bin/zemctl" --version)" = "zemctl $version" ]
}

# On a machine that has them, see scripts/bare_machine.sh.
installed() { programs_of /usr; }

# programs_of USR: what others build with Debian's packages, and what these bring.
programs_of() {
  local usr=$1 read_simulated
  suffix=
  cmake -G Ninja -S tests/packages -B "$work/with-cmake" -D "CMAKE_PREFIX_PATH=$usr"
  cmake --build "$work/with-cmake" -j 1
  expect_consumers "$work/with-cmake" env -u LD_LIBRARY_PATH
  CC=gcc CXX=g++ with_pkg_config -static-libgcc -static-libstdc++
  expect_consumers "$work/with-pkg-config"

  cmake -G Ninja -S "$usr/share/doc/libzemuvcextapi-dev/examples" -B "$work/examples" -D "CMAKE_PREFIX_PATH=$usr"
  cmake --build "$work/examples" -j 1
  examples

  [ "$(ZEM_LIBRARY='' PYTHONPATH=python /usr/bin/python3 -B tests/packages/consumer.py)" = "Python $version 0xabcd" ]

  unset LD_LIBRARY_PATH
  [ "$("$usr/bin/zemctl" --version)" = "zemctl $version" ]
  read_simulated=$("$usr/bin/zemctl" --simulator reg get isp 0)
  grep -qF 'value:   0x5170' <<<"$read_simulated"
  [ "$("$usr/bin/zem-usb-camera" --version)" = "$version" ]
  bash -c 'source "$1" && complete -p zemctl' - "$usr/share/bash-completion/completions/zemctl"
  cmp packaging/60-zem-cameras.rules "$usr/lib/udev/rules.d/60-zem-cameras.rules"
}

"$1"
