#!/usr/bin/env bash
# Installs the built artefacts into a scratch home with scripts/install, checks where they landed,
# then uninstalls and checks that the home is exactly as before, a file of the user's included.
# Usage: install_roundtrip.sh SOURCE_DIR BUILD_DIR
set -u
src="$1"
build="$2"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home="$work/home"
mkdir -p "$home/.local/share/applications" "$home/.lv2/Other.lv2"
echo "[Desktop Entry]" >"$home/.local/share/applications/other.desktop"
echo "theirs" >"$home/.lv2/Other.lv2/manifest.ttl"
snapshot() { (cd "$home" && find . -printf '%p %s %m\n' | sort); }
snapshot >"$work/before.txt"

fail() { echo "install-roundtrip: $*"; exit 1; }

HOME="$home" XDG_DATA_HOME="" "$src/scripts/install" --no-build --build-dir "$build" >"$work/install.log" 2>&1 \
  || { cat "$work/install.log"; fail "install failed"; }

release="$build/Morvane_artefacts/Release"
cmp -s "$release/VST3/Morvane.vst3/Contents/x86_64-linux/Morvane.so" "$home/.vst3/Morvane.vst3/Contents/x86_64-linux/Morvane.so" \
  || fail "VST3 binary missing or different"
for f in manifest.ttl dsp.ttl ui.ttl libMorvane.so; do
  cmp -s "$release/LV2/Morvane.lv2/$f" "$home/.lv2/Morvane.lv2/$f" || fail "LV2 $f missing or different"
done
[ -x "$home/.local/bin/morvane" ] || fail "standalone missing"
[ -x "$home/.local/bin/morvane-render" ] || fail "morvane-render missing"
desktop="$home/.local/share/applications/morvane.desktop"
[ -f "$desktop" ] || fail "desktop entry missing"
grep -qx "Exec=$home/.local/bin/morvane" "$desktop" || fail "desktop entry runs the wrong program"
icon="$(sed -n 's/^Icon=//p' "$desktop")"
[ -n "$icon" ] && [ -f "$icon" ] || fail "desktop entry's icon missing"
[ "$(head -c 8 "$icon" | od -An -tx1 | tr -d ' \n')" = "89504e470d0a1a0a" ] || fail "icon is not a PNG"
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$desktop" || fail "desktop entry does not validate"
fi
"$home/.local/bin/morvane-render" --list-factory >/dev/null || fail "installed renderer does not run"

# A second install replaces the first without complaint.
HOME="$home" XDG_DATA_HOME="" "$src/scripts/install" --no-build --build-dir "$build" >"$work/install2.log" 2>&1 \
  || { cat "$work/install2.log"; fail "second install failed"; }

HOME="$home" XDG_DATA_HOME="" "$src/scripts/install" --uninstall >"$work/uninstall.log" 2>&1 \
  || { cat "$work/uninstall.log"; fail "uninstall failed"; }
snapshot >"$work/after.txt"
if ! diff "$work/before.txt" "$work/after.txt"; then
  fail "the home differs from before the install"
fi
echo "install-roundtrip: installed $(sed -n 's/.*(\([0-9]*\) files.*/\1/p' "$work/install.log") files, uninstalled, home as before"
