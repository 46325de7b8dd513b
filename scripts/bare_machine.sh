#!/usr/bin/env bash
# Runs both commands of the README in a minimal Debian root, from a fresh clone: what works only because
# a machine has been used before fails here. Needs root, debootstrap and some gigabytes; takes its time.
#
#   bare_machine.sh [--keep] [COMMAND...]    commands other than ./run.sh and ./test.sh
#   bare_machine.sh [--keep] --packages      Debian's packages of build/packages: installs them, builds and
#                                            runs programs with them, and removes them
#
# The clone is of what is committed. The root goes to $ZEM_BARE_ROOT, else to a temporary folder that is
# removed at the end unless --keep is given.
set -euo pipefail
cd "$(dirname "$0")/.."

keep=false
if [ "${1:-}" = --keep ]; then
  keep=true
  shift
fi
packages=false
if [ "${1:-}" = --packages ]; then
  packages=true
  shift
  ls build/packages/*.deb >/dev/null
  set -- "apt-get update -qq && apt-get install -y -qq --no-install-recommends cmake g++ ninja-build pkgconf python3" \
    "apt-get install -y -qq --no-install-recommends ./build/packages/*.deb" \
    "scripts/checks/packages.sh installed" \
    "apt-get remove -y -qq libzemuvcextapi1 && [ -z \"\$(find /usr -iname '*zemuvc*' -o -iname '*zemctl*' -o -iname '*zemsim*' | tee /dev/stderr)\" ]"
fi
commands=("$@")
[ ${#commands[@]} -gt 0 ] || commands=(./run.sh ./test.sh)
[ "$(id -u)" -eq 0 ] || { echo "bare_machine.sh: needs root" >&2; exit 2; }
command -v debootstrap >/dev/null || { echo "bare_machine.sh: install debootstrap" >&2; exit 2; }

root=${ZEM_BARE_ROOT:-$(mktemp -d)}
leave() {
  for folder in dev/pts dev proc sys; do
    mountpoint -q "$root/$folder" && umount -l "$root/$folder"
  done
  [ "$keep" = true ] || rm -rf --one-file-system "$root"
}
trap leave EXIT

# Packages come from where this machine takes its own.
mirror=$({ grep -rhosE 'https?://[^ ]*/debian/?( |$)' /etc/apt/sources.list /etc/apt/sources.list.d ||
  true; } | head -n 1 | tr -d ' ')
echo "bare root: $root"
debootstrap --variant=minbase bookworm "$root" $mirror >"$root.log" 2>&1 ||
  { tail -n 20 "$root.log"; exit 1; }
rm -f "$root.log"

for folder in proc sys dev dev/pts; do
  mount --bind "/$folder" "$root/$folder"
done
cp /etc/resolv.conf "$root/etc/resolv.conf"
# How this machine reaches its packages, if it says so.
cp -r /etc/apt/apt.conf.d/. "$root/etc/apt/apt.conf.d/" 2>/dev/null || true
git clone -q . "$root/project"
if [ "$packages" = true ]; then
  mkdir -p "$root/project/build"
  cp -r build/packages "$root/project/build/"
fi

status=0
for command in "${commands[@]}"; do
  echo "== $command"
  start=$SECONDS
  chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    sh -c "cd /project && $command" </dev/null || status=$?
  echo "== $command: status $status, $((SECONDS - start)) s"
  [ "$status" -eq 0 ] || break
done
exit "$status"
