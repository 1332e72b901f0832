#!/usr/bin/env bash
# The message thread's load with the real editor open and idle while a note plays, on a virtual
# display. Usage: benchmarks/editor_idle.sh [SECONDS]   (after scripts/build)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
HOME="$work" xvfb-run -a -s "-screen 0 2000x1300x24" "$root/build/benchmarks/morvane-editor-idle" "${1:-10}"
