#!/usr/bin/env bash
# Runs the hosting tests on a virtual display (the editors are put on screen, as a host does) with a
# scratch home, so that neither plug-ins installed for the user nor the user's settings take part.
# Usage: run_host_tests.sh PATH_TO_morvane-host-tests [gtest arguments]
set -u
binary="$1"
shift
if ! command -v xvfb-run >/dev/null; then
  echo "plugin-hosting: xvfb-run is missing (scripts/setup installs it)" >&2
  exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work/home"
mkdir -p "$HOME"
xvfb-run -a -s "-screen 0 1600x1000x24" "$binary" "$@"
