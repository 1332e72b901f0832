#!/usr/bin/env bash
# Validates a built plug-in with pluginval at strictness 10 on a virtual display.
# Usage: pluginval.sh vst3 PATH/Morvane.vst3 | pluginval.sh lv2 PATH/Morvane.lv2 URI
# (the bundle path may contain .. parts: it is resolved first)
# PLUGINVAL names the validator; otherwise ../shared/tools/pluginval beside the source tree.
# Exits 77 (skipped) when the validator is absent.
set -u
format="$1"
bundle="$2"
uri="${3:-}"
root="$(cd "$(dirname "$0")/.." && pwd)"
validator="${PLUGINVAL:-$root/../shared/tools/pluginval}"

if [ ! -x "$validator" ]; then
  echo "pluginval not found at $validator: plug-in validation skipped"
  exit 77
fi
if ! command -v xvfb-run >/dev/null; then
  echo "pluginval-$format: xvfb-run is missing (scripts/setup installs it)" >&2
  exit 1
fi
if [ ! -e "$bundle" ]; then
  echo "pluginval-$format: no bundle at $bundle" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A fresh home: the validator's and the plug-in's settings stay out of the user's, and the framework's
# LV2 host only searches ~/.lv2 and the system folders (it overrides LV2_PATH).
export HOME="$work/home"
mkdir -p "$HOME"

case "$format" in
  vst3) target="$(cd "$bundle" && pwd)" ;;
  lv2)
    mkdir -p "$HOME/.lv2"
    ln -s "$(cd "$bundle" && pwd)" "$HOME/.lv2/$(basename "$bundle")"
    target="$uri"
    ;;
  *) echo "pluginval.sh: unknown format $format" >&2; exit 2 ;;
esac

start=$(date +%s)
xvfb-run -a -s "-screen 0 1600x1000x24" "$validator" --strictness-level 10 --timeout-ms 120000 \
  --output-dir "$work/logs" --validate "$target" >"$work/out.log" 2>&1
status=$?
elapsed=$(( $(date +%s) - start ))

if [ $status -ne 0 ] || ! grep -q '^SUCCESS' "$work/out.log"; then
  cat "$work/out.log"
  echo "pluginval-$format: FAILED at strictness 10 after ${elapsed}s (exit $status)"
  exit 1
fi
echo "pluginval-$format: passed at strictness 10 in ${elapsed}s"
