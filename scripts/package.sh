#!/usr/bin/env bash
# package.sh [FOLDER]: makes the packages, in build/packages or FOLDER: a zip for Windows, Debian packages
# for this system, and the check sums of them all. The same sources give the same bytes.
#
# Not by CPack: its zip has the files in the order in which the file system happens to list them.
source "$(dirname "$0")/setup.sh"

out=$(realpath -m "${1:-build/packages}")
work=$zem_root/build/packaging
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(release_time)} TZ=UTC
umask 022
# Nobody can be reached by mail.
maintainer="the ZemUVCExtApi authors <authors@zemuvcextapi.invalid>"
version=$(sed -n 's/^#define ZEM_VERSION_\(MAJOR\|MINOR\|PATCH\) //p' include/ZemUVCExtApi.h | paste -sd.)
debian_version=$version-1
mkdir -p "$out"
rm -rf "$work" "$out"/*.{zip,deb}
mkdir "$work"

# same_times FOLDER: every file in it has the release's time.
same_times() { find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +; }

# bill_of_materials BUILD STAGE FOLDER NAME VERSION [STAGE...]: what is in it, and under which licences.
bill_of_materials() { /usr/bin/python3 -B packaging/sbom.py "$@"; }

windows_zip() {
  local name=ZemUVCExtApi-$version-windows-x64
  local stage=$work/$name
  cmake --install build/windows --prefix "$stage"
  cp -r build/docs "$stage/doc"
  cp LICENSE CHANGELOG.md "$stage/"
  bill_of_materials build/windows "$stage" . ZemUVCExtApi "$version"
  (cd "$stage" && find . -type f -printf '%P\n' | sort | xargs -d '\n' sha256sum) >"$work/SHA256SUMS"
  mv "$work/SHA256SUMS" "$stage/"
  same_times "$stage"
  (cd "$work" && find "$name" | sort | zip -X -q -9 -@ "$name.zip")
  mv "$stage.zip" "$out/"
}

# needs FILE...: the packages of Debian that a package with these files needs. That of the library, which
# others need in exactly their own version, is not among them.
needs() {
  # It runs only where sources of a package are, or what looks like them.
  (cd "$work" && dpkg-shlibdeps -O -xlibzemuvcextapi1 -S"$work/libzemuvcextapi1" "$@") |
    sed 's/^shlibs:Depends=//'
}

# debian_stage PACKAGE COMPONENT [OVERRIDE...]: the files that this package is to have. Overrides are what
# Debian's checker of packages, lintian, complains about although it is meant.
debian_stage() {
  local name=$1 component=$2 stage=$work/$1 doc=$work/$1/usr/share/doc/$1
  shift 2
  cmake --install build/linux --prefix "$stage/usr" --component "$component" --strip
  mkdir -p "$stage/DEBIAN" "$doc" "$stage/usr/share/lintian/overrides"
  [ "$component" != tools ] || gzip -9n "$stage"/usr/share/man/man1/*.1
  cp LICENSE "$doc/copyright"
  gzip -9n <CHANGELOG.md >"$doc/changelog.gz"
  gzip -9n >"$doc/changelog.Debian.gz" <<END
zemuvcextapi ($debian_version) unstable; urgency=medium

  * Packages of version $version.

 -- $maintainer  $(date -Rd "@$SOURCE_DATE_EPOCH")
END
  printf "$name: %s\n" "initial-upload-closes-no-bugs *" "$@" >"$stage/usr/share/lintian/overrides/$name"
  bill_of_materials build/linux "$stage" "usr/share/doc/$name" "$name" "$debian_version" "$work/libzemuvcextapi1"
}

# debian_package PACKAGE SECTION DEPENDS SUMMARY DESCRIPTION [FIELD...]
debian_package() {
  local name=$1 stage=$work/$1 section=$2 depends=$3 summary=$4 description=$5
  shift 5
  (cd "$stage" && find usr -type f | sort | xargs -d '\n' md5sum) >"$stage/DEBIAN/md5sums"
  {
    echo "Package: $name"
    echo "Source: zemuvcextapi"
    echo "Version: $debian_version"
    echo "Architecture: amd64"
    echo "Maintainer: $maintainer"
    echo "Installed-Size: $(find "$stage/usr" -type f -printf '%s\n' |
      awk '{ size += int(($1 + 1023) / 1024) } END { print size }')"
    echo "Depends: $depends"
    [ $# -eq 0 ] || printf '%s\n' "$@"
    echo "Section: $section"
    echo "Priority: optional"
    echo "Description: $summary"
    fold -s -w 78 <<<"$description" | sed 's/^/ /; s/ *$//'
  } >"$stage/DEBIAN/control"
  same_times "$stage"
  # One thread: several cut the data otherwise.
  dpkg-deb --root-owner-group -Zxz --threads-max=1 --build "$stage" "$out/${name}_${debian_version}_amd64.deb"
}

debian_packages() {
  local same="libzemuvcextapi1 (= $debian_version)" depends
  mkdir -p "$work/debian"
  printf 'Source: zemuvcextapi\n\nPackage: zemuvcextapi\nArchitecture: any\n' >"$work/debian/control"

  debian_stage libzemuvcextapi1 library
  echo "libZemUVCExtApi 1 libzemuvcextapi1 (>= $version)" >"$work/libzemuvcextapi1/DEBIAN/shlibs"
  echo "activate-noawait ldconfig" >"$work/libzemuvcextapi1/DEBIAN/triggers"
  depends=$(needs "$work"/libzemuvcextapi1/usr/lib/*/*.so.*)
  debian_package libzemuvcextapi1 libs "$depends" \
    "control of USB video-class cameras through UVC extension units" \
    "Finds and opens cameras built on the vendor's camera processors, reads and sets what they hold, updates their firmware, and recovers them through their ROM boot loader. This is the shared library." \
    "Multi-Arch: same"

  # The simulator is for the tests of programs, which are made anew with each version of it.
  debian_stage libzemuvcextapi-dev development "package-name-doesnt-match-sonames libZemSimulator" \
    "shared-library-lacks-version *libZemSimulator.so libZemSimulator.so"
  echo "activate-noawait ldconfig" >"$work/libzemuvcextapi-dev/DEBIAN/triggers"
  depends=$(needs "$work"/libzemuvcextapi-dev/usr/lib/*/libZemSimulator.so)
  debian_package libzemuvcextapi-dev libdevel "$same, $depends" \
    "control of USB video-class cameras: development files" \
    "Headers for C and C++, files for CMake and pkg-config, examples, and a library that simulates cameras for the tests of programs."

  debian_stage zemuvc-tools tools
  cp -r build/docs "$work/zemuvc-tools/usr/share/doc/zemuvc-tools/html"
  depends=$(needs "$work"/zemuvc-tools/usr/bin/*)
  debian_package zemuvc-tools utils "$same, $depends" \
    "control of USB video-class cameras: command line" \
    "The command line zemctl with its completion, the server of simulated USB cameras zem-usb-camera, rules for udev that open the cameras to who may use them, and the documentation."
}

# strictly FUNCTION: in a shell of its own, which ends at the first command that fails; where a function's
# own status is asked for, as step does, bash would go on.
strictly() {
  bash -euo pipefail -c "$(declare -f); $(declare -p out work version debian_version maintainer zem_root); $1"
}

step "packages" install_missing "${windows_packages[@]}" "${linux_packages[@]}" "${docs_packages[@]}" \
  "${package_packages[@]}"
for preset in windows linux; do
  step "configure $preset for packages" cmake --preset $preset
done
step "build for Windows" cmake --build --preset windows --target zemctl microsoft_import_libraries
step "build for Linux" cmake --build --preset linux --target tool_texts ZemSimulator
step "documentation" scripts/docs.sh
step "zip for Windows" strictly windows_zip
step "Debian packages" strictly debian_packages
(cd "$out" && sha256sum -- *.zip *.deb >SHA256SUMS)
ls -1sh "$out"
