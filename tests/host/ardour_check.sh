#!/usr/bin/env bash
# Renders a short phrase through Ardour, headless on its Dummy backend, with the LV2 and the VST3,
# and holds each export to morvane-render's render of the same notes; then saves each session with
# the plug-in in it (the VST3 with a parameter changed from the host), reopens it and exports
# again. Skipped (77) where Ardour or python3 is missing: scripts/host-check installs them.
# Usage: ardour_check.sh BUILD_DIR
set -uo pipefail
build="$1"
here="$(cd "$(dirname "$0")" && pwd)"
command -v ardour7-lua >/dev/null && command -v python3 >/dev/null || { echo "Ardour 7 or python3 is not installed: skipped"; exit 77; }

work="$(mktemp -d)"
trap 'rm -rf -- "$work"' EXIT
export HOME="$work/home" VST3_PATH="$work/home/.vst3" LV2_PATH="$work/home/.lv2"
mkdir -p "$HOME/.lv2" "$HOME/.vst3" "$HOME/.config/ardour7/scripts" "$HOME/.config/ardour7/export"
cp -R "$build/Morvane_artefacts/Release/LV2/Morvane.lv2" "$HOME/.lv2/"
cp -R "$build/Morvane_artefacts/Release/VST3/Morvane.vst3" "$HOME/.vst3/"
# Ardour takes a scan cache only when it is newer than the module, to the second.
find "$HOME/.vst3" -exec touch -d '-1 minute' {} +
cp "$here/ardour/phrase_generator.lua" "$HOME/.config/ardour7/scripts/"
cp "$here/ardour/float.preset" "$HOME/.config/ardour7/export/"
# Ardour finds a VST3 plug-in through its scanner's cache and its own log of what was scanned.
LD_LIBRARY_PATH=/usr/lib/ardour7 /usr/lib/ardour7/ardour-vst3-scanner "$HOME/.vst3/Morvane.vst3" >"$work/scan.log" 2>&1 \
  || { cat "$work/scan.log"; echo "Ardour's VST3 scanner failed"; exit 1; }
mkdir -p "$HOME/.config/ardour7/plugin_metadata"
cat >"$HOME/.config/ardour7/plugin_metadata/scan_log" <<LOG
<?xml version="1.0" encoding="UTF-8"?>
<PluginScanLog version="1">
  <PluginScanLogEntry type="VST3" path="$HOME/.vst3/Morvane.vst3" scan-log="" scan-result="0"/>
</PluginScanLog>
LOG

notes=(--note 36:0.86614173:0.1:0.5 --note 43:0.70866142:0.7:0.4 --note 38:1:1.2:0.5 --seconds 2 --rate 48000 --block 512)
"$build/tools/morvane-render" --out "$work/reference.wav" "${notes[@]}" || exit 1
"$build/tools/morvane-render" --out "$work/reference-changed.wav" "${notes[@]}" --set osc1DcwDepth=0.9 || exit 1

# Ardour 7.3's Lua session tool sometimes crashes on its way out: its exports are judged, not its
# exit code, and a step whose export is missing runs again, up to three times.
step() { # DIR MODE FORMAT ID NAME [PARAM VALUE]
  local dir="$1" name="$5" try
  for try in 1 2 3; do
    [ "$2" = create ] && rm -rf -- "$dir/session"
    mkdir -p "$dir/out"
    rm -f -- "$dir/out/$name"*.wav
    timeout 120 ardour7-lua "$here/ardour/session.lua" "$2" "$dir" "$3" "$4" "$name" "${@:6}" >"$dir/$name.log" 2>&1
    if [ -s "$dir/out/$name.wav" ] && { [ "$2" != create ] || grep -q '^morvane-check: saved' "$dir/$name.log"; }; then
      return 0
    fi
    echo "$name: try $try did not finish"; tail -n 5 "$dir/$name.log"
  done
  return 1
}

# One format's whole check; a fault of ours fails it every time, so a format is run a second time
# only to see past a crash of the host's own.
check() { # FORMAT
  local format="$1" dir="$work/$1" id change after
  if [ "$format" = vst3 ]; then
    id=ABCDEF019182FAEB4D72766E4D727631
    change=(1 0.9) # osc1DcwDepth, set from the host before saving
    after="$work/reference-changed.wav"
  else
    id=https://morvane.audio/plugins/morvane
    change=()
    after="$work/reference.wav"
  fi
  step "$dir" create "$format" "$id" "$format" "${change[@]}" || return 1
  printf '%s export against morvane-render:   ' "$format"
  python3 "$here/ardour/compare.py" "$dir/out/$format.wav" "$work/reference.wav" -60 || return 1
  step "$dir" reopen "$format" "$id" "$format-reopened" || return 1
  printf '%s reopened session:                ' "$format"
  python3 "$here/ardour/compare.py" "$dir/out/$format-reopened.wav" "$after" -60
}

failed=0
started=$(date +%s)
for format in lv2 vst3; do
  check "$format" || { echo "$format: again"; check "$format"; } || failed=1
done
echo "Ardour checks took $(( $(date +%s) - started )) s"
exit $failed
