#!/usr/bin/env bash
# Builds the Debian package from the built programs, unpacks it into a scratch root and runs the
# renderer from there: the package holds working programs whose libraries the system provides.
set -euo pipefail
root="$1"
build="$2"
scratch="$(mktemp -d)"
trap 'rm -rf -- "$scratch"' EXIT

deb="$("$root/scripts/package" --no-build --no-lint --build-dir "$build" --out "$scratch/out" | tail -n 1)"
[ -f "$deb" ] || { echo "no package was made"; exit 1; }
dpkg-deb -x "$deb" "$scratch/root"
for f in usr/bin/morvane usr/bin/morvane-render usr/bin/morvane-snapshot \
         usr/lib/vst3/Morvane.vst3/Contents/x86_64-linux/Morvane.so usr/lib/lv2/Morvane.lv2/dsp.ttl \
         usr/share/applications/morvane.desktop usr/share/icons/hicolor/256x256/apps/morvane.png \
         usr/share/man/man1/morvane-render.1.gz usr/share/doc/morvane/copyright; do
  [ -e "$scratch/root/$f" ] || { echo "the package lacks /$f"; exit 1; }
done
version="$("$scratch/root/usr/bin/morvane-render" --version)"
case "$version" in
  "morvane-render "[0-9]*) echo "$version, from $(basename "$deb")" ;;
  *) echo "unexpected version line: '$version'"; exit 1 ;;
esac
dpkg-deb -f "$deb" Depends | grep -q 'libc6' || { echo "the package names no library dependencies"; exit 1; }
"$scratch/root/usr/bin/morvane-render" --out "$scratch/a.wav" --note 36:0.9:0:0.2 --seconds 0.3 --format s16
[ -s "$scratch/a.wav" ]
