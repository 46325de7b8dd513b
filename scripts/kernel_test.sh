#!/usr/bin/env bash
# Runs tests/kernel in a virtual machine with the distribution's own kernel: the shared library, zemctl
# and zem-usb-camera over the kernel's drivers, in one boot. Ends with a line "N passed, N failed"; the
# exit status matches.
#
#   kernel_test.sh [GTEST_FILTER]      a part of the tests
#
# Kernel and udev are downloaded and unpacked to build/kernel, not installed; what a run leaves is
# build/kernel/run. It needs no root but to install packages, no /dev/kvm, and takes nothing from this
# machine's devices.
source "$(dirname "$0")/setup.sh"
filter=${1:-*}
cache=build/kernel
run=$cache/run
rm -rf "$run"
mkdir -p "$run"

# What the distribution has at the moment, asked once: it takes apt half a second to answer.
ask_packages() { apt-cache show --no-all-versions linux-image-amd64 udev systemd; }

# field PACKAGE NAME: what is said of a package.
field() { sed -n "/^Package: $1\$/,/^\$/s/^$2: //p" build/log/what-there-is.log; }

# download PACKAGE VERSION: unpacks a package of the distribution into $cache/PACKAGE, once for each
# version.
download() {
  local package=$1 version=$2 folder=$cache/$1
  [ -n "$version" ] || { echo "no package $package" >&2; return 1; }
  [ "$(cat "$folder/version" 2>/dev/null)" != "$version" ] || return 0
  rm -rf "$folder"
  mkdir -p "$folder/deb" "$folder/root"
  (cd "$folder/deb" && apt-get download -q "$package")
  dpkg-deb -x "$folder"/deb/*.deb "$folder/root"
  rm -r "$folder/deb"
  echo "$version" >"$folder/version"
}

# The uncompressed kernel, which starts in half the time: where it lies in the image, and as what, the
# image's header says.
extract_kernel() {
  local image=$1 sectors offset length unpack
  sectors=$(od -A n -t u1 -j 497 -N 1 "$image")
  read -r offset length <<<"$(od -A n -t u4 -j 584 -N 8 "$image")"
  offset=$((offset + (sectors + 1) * 512))
  case $(od -A n -t x1 -j "$offset" -N 4 "$image" | tr -d ' ') in
    fd377a58) unpack=(xz -dc --single-stream) ;;
    28b52ffd) unpack=(zstd -dc) ;;
    1f8b*) unpack=(gzip -dc) ;;
    *) echo "$image: unknown compression" >&2; return 1 ;;
  esac
  # Behind the compressed kernel stands its length, which is no part of it: a complaint is normal.
  tail -c "+$((offset + 1))" "$image" | head -c "$length" | "${unpack[@]}" >"$2" 2>/dev/null || true
  [ "$(head -c 4 "$2")" = $'\x7fELF' ]
}

# add_module NAME: copies a kernel module and, before it, what it depends on, and notes their order.
# What is built into the kernel has no file.
add_module() {
  local name=${1//_/-} file depends dependency
  ! grep -qx "$name" "$modules/order" || return 0
  file=$(find "$kernel_root/lib/modules" "$kernel_root/usr/lib/modules" -name "${name//-/[-_]}.ko*" \
    2>/dev/null | head -n 1)
  [ -n "$file" ] || return 0
  case $file in
    *.xz) xz -dc "$file" >"$modules/$name.ko" ;;
    *.zst) zstd -qdc "$file" >"$modules/$name.ko" ;;
    *) cp "$file" "$modules/$name.ko" ;;
  esac
  depends=$(tr '\0' '\n' <"$modules/$name.ko" | sed -n 's/^depends=//p')
  for dependency in ${depends//,/ }; do
    add_module "$dependency"
  done
  echo "$name" >>"$modules/order"
}

# Kernel and modules, from whatever package the distribution's kernel is at the moment.
prepare_kernel() {
  local package name
  package=$(field linux-image-amd64 Depends | sed -n 's/^\(linux-image-[^ ]*\).*/\1/p')
  [ -n "$package" ] || { echo "no linux-image-amd64" >&2; return 1; }
  [ -e "$cache/$package/vmlinux" ] || rm -rf "${cache:?}/$package"
  download "$package" "$(field linux-image-amd64 Version)"
  kernel_root=$cache/$package/root
  modules=$cache/$package/modules
  if [ ! -e "$cache/$package/vmlinux" ]; then
    rm -rf "$modules"
    mkdir "$modules"
    : >"$modules/order"
    # CRC32 and the like may be wanted by name only, as "crct10dif" is.
    for name in vhci-hcd uvcvideo crct10dif-common crc-t10dif sd-mod sg usb-storage; do
      add_module "$name"
    done
    extract_kernel "$(echo "$kernel_root"/boot/vmlinuz-*)" "$cache/vmlinux.new"
    mv "$cache/vmlinux.new" "$cache/$package/vmlinux"
    rm -r "$kernel_root"
  fi
  echo "$package" >"$cache/kernel"
}

prepare_udev() {
  local package
  for package in udev systemd; do
    download "$package" "$(field "$package" Version)"
  done
}

# The system of the guest: busybox, udev with the distribution's rules, our programs, the libraries of
# all of them, and the tests.
make_root() {
  local root=$run/root package program library rules section
  package=$(<"$cache/kernel")
  mkdir -p "$root"/{bin,dev,etc,lib,lib64,proc,run,sys,tmp,zem} "$root"/usr/lib/udev/rules.d \
    "$root"/lib/{systemd,udev}
  cp /bin/busybox "$root/bin"
  cp tests/kernel/init.sh "$root/init"
  cp -r "$cache/$package/modules" "$root/lib/modules"
  cp "$cache/udev/root/bin/udevadm" "$root/bin"
  ln -s /bin/udevadm "$root/lib/systemd/systemd-udevd"
  cp "$cache/udev/root/lib/udev/v4l_id" "$root/lib/udev"
  for rules in 50-udev-default 60-persistent-v4l 70-uaccess 73-seat-late; do
    cp "$cache"/{udev,systemd}/root/lib/udev/rules.d/$rules.rules "$root/usr/lib/udev/rules.d" \
      2>/dev/null || [ -e "$root/usr/lib/udev/rules.d/$rules.rules" ]
  done
  cp packaging/60-zem-cameras.rules "$root/zem"
  cp -r tests/kernel/users/. "$root/etc"
  cp tests/zemctl/transcript.sh "$root/zem"
  mkdir "$root/zem/transcripts"
  for section in $(tests/zemctl/transcript.sh sections); do
    tests/zemctl/transcript.sh linux "$section" "$run/transcripts" \
      >"$root/zem/transcripts/linux-$section.txt"
  done
  for program in "${programs[@]}"; do
    cp "build/linux/$program" "$root/zem"
  done
  echo "$filter" >"$root/zem/filter"
  for program in "${programs[@]/#/$root/zem/}" "$root/bin/udevadm" "$root/lib/udev/v4l_id"; do
    ldd "$program" | sed -n 's|.* => \(/[^ ]*\) .*|\1|p; s|^\t\(/[^ ]*\) .*|\1|p'
  done | sort -u | while read -r library; do
    mkdir -p "$root/$(dirname "$library")"
    cp -L "$library" "$root/$library"
  done
  (cd "$root" && find . | busybox cpio -o -H newc) >"$run/initrd.cpio"
}

# Whether this machine's /dev/kvm runs a guest, and does not only let itself be opened: one sector of
# code that writes to the port by which a guest ends QEMU.
kvm_works() {
  local status=0
  [ -w /dev/kvm ] || return
  { printf '\xb0\x10\xe6\xf4\xeb\xfe'; head -c 504 /dev/zero; printf '\x55\xaa'; } >"$run/probe"
  timeout -k 1 3 qemu-system-x86_64 -accel kvm "${machine[@]}" \
    -drive "file=$run/probe,format=raw,if=ide" >/dev/null 2>&1 || status=$?
  [ $status -eq 33 ]
}

boot() {
  local accelerator=tcg,thread=multi status=0
  ! wait "$kvm_probe" || accelerator=kvm
  echo "$accelerator" >"$run/accelerator"
  timeout -k 5 "$limit" qemu-system-x86_64 -accel "$accelerator" "${machine[@]}" \
    -serial "file:$run/console.txt" -serial "file:$run/results.txt" \
    -kernel "$cache/$(<"$cache/kernel")/vmlinux" -initrd "$run/initrd.cpio" \
    -append "console=ttyS0 loglevel=5 panic=-1 oops=panic ${quicker//$'\n'/ }" || status=$?
  echo $status >"$run/status"
}

# A guest that hangs is ended; a busy machine takes several times as long as a quiet one.
limit=400
# What a guest does without. Its watchdogs would bark at a busy host. What the emulator has translated
# of a program it can use again only where the program is started at the same address.
quicker="mitigations=off random.trust_cpu=on cryptomgr.notests lsm= audit=0 no_timer_check tsc=reliable
nowatchdog rcupdate.rcu_cpu_stall_suppress=1 norandmaps init_on_alloc=0
initcall_blacklist=crypto_kdf108_init"
machine=(-M pc -cpu qemu64 -smp 1 -m 384 -nodefaults -display none -no-reboot
  -device isa-debug-exit,iobase=0xf4,iosize=4)
programs=(libZemUVCExtApi.so.1 zem_kernel_tests zem-usb-camera zemctl grab_frame)

step "packages" install_missing cmake ninja-build g++ libgtest-dev libcli11-dev \
  nlohmann-json3-dev "${kernel_packages[@]}"
kvm_works &
kvm_probe=$!
[ -n "$(find /var/lib/apt/lists -name '*_Packages*' -print -quit)" ] ||
  step "package lists" as_root apt-get update
step "what there is" ask_packages
step "kernel" prepare_kernel
step "udev" prepare_udev
[ -e build/linux/build.ninja ] || step "configure linux" cmake --preset linux
step "build" cmake --build --preset linux
step "guest" make_root
step "boot" boot

# ---- What came of it ----

# Each test that is to run has one line; one without is a failure, as is everything else that a run in
# order does not show.
passed=0
failures=()
build/linux/zem_kernel_tests --gtest_list_tests --gtest_filter="$filter" |
  awk '/^[^ ]/ { suite = $1 } /^  / { print suite $1 }' >"$run/expected.txt"
tr -d '\r' <"$run/results.txt" >"$run/lines.txt"
report=
while read -r name; do
  if line=$(grep -m 1 -F "[       OK ] $name (" "$run/lines.txt"); then
    passed=$((passed + 1))
    printf 'passed  %s\n' "$name${line##*"$name"}"
    report+=",{\"name\": \"$name\", \"result\": \"COMPLETED\"}"
  else
    grep -qF "[  FAILED  ] $name" "$run/lines.txt" || name+=" (no result)"
    failures+=("$name")
    printf 'FAILED  %s\n' "$name"
    report+=",{\"name\": \"$name\", \"result\": \"COMPLETED\", \"failures\": [{}]}"
  fi
done <"$run/expected.txt"
mkdir -p build/reports
echo "{\"testsuites\": [{\"testsuite\": [${report#,}]}]}" >build/reports/kernel.json

# The emulator ends with the guest's word, doubled and one more; the guest writes the same into its last
# line.
problems=()
word=0
[ ${#failures[@]} -eq 0 ] || word=1
status=$(<"$run/status")
[ -s "$run/expected.txt" ] || problems+=("no test is to run")
[ "$status" -eq $((33 + 2 * word)) ] || problems+=("the emulator ended with $status")
grep -qx "kernel tests ended: $word" "$run/lines.txt" || problems+=("the guest's last line is missing")
grep -E 'BUG:|Oops|WARNING:|Call Trace|Kernel panic|blocked for more than' \
  "$run/console.txt" && problems+=("the guest's kernel complained")
if [ ${#failures[@]} -gt 0 ] || [ ${#problems[@]} -gt 0 ]; then
  cat "$run/lines.txt"
  echo "-- the last lines of the guest's console"
  tail -n 40 "$run/console.txt"
  printf 'FAILED: %s\n' "${failures[@]}" "${problems[@]}"
fi
times >"$run/times"
# Its last line is the processor time, user and system, of what has been waited for.
printf '%s, %s: %d tests, %d s, processor %s, %s on disk\n' "$(<"$cache/kernel")" \
  "$(<"$run/accelerator")" "$(wc -l <"$run/expected.txt")" "$SECONDS" "$(tail -n 1 "$run/times")" \
  "$(du -sh "$cache" | cut -f 1)"
failed=$((${#failures[@]} + ${#problems[@]}))
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
