#!/usr/bin/env bash
# Checks that lilv finds the built LV2 bundle and describes it as a synth: its URI, an instrument
# class, two audio outputs and no audio input, a MIDI event input, a latency port and no MIDI out.
# Usage: lv2info.sh PATH/Morvane.lv2 URI
set -u
bundle="$1"
uri="$2"
if ! command -v lv2info >/dev/null; then
  echo "lv2info: missing (scripts/setup installs lilv-utils)" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LV2_PATH="$(cd "$(dirname "$bundle")" && pwd):/usr/lib/lv2:/usr/local/lib/lv2"

if ! lv2info "$uri" >"$work/info.txt" 2>"$work/err.txt"; then
  echo "lv2info: lilv does not find $uri in $(dirname "$bundle")"; cat "$work/err.txt"; exit 1
fi
lv2info -p "$work/plugin.ttl" "$uri" >/dev/null 2>&1

fail=0
check() {
  if [ "$2" != "$3" ]; then
    echo "lv2info: $1: expected $3, found $2"; fail=1
  fi
}
field() { grep -m1 "^[[:space:]]*$1:" "$work/info.txt" | sed "s/^[[:space:]]*$1:[[:space:]]*//"; }

check "URI" "$(head -n1 "$work/info.txt")" "$uri"
check "name" "$(field Name)" "Morvane"
check "class" "$(field Class)" "Instrument Plugin"
check "latency" "$(field 'Has latency' | cut -d, -f1)" "yes"

# One block of lines per port, joined so that each port's types sit on one line.
awk '/^\tPort [0-9]+:/ { if (p) print p; p = "" } /^\t\t/ { p = p " " $0 } END { if (p) print p }' \
  "$work/info.txt" >"$work/ports.txt"
count() { grep "$1" "$work/ports.txt" | grep -c "$2"; }
check "audio outputs" "$(count 'lv2core#AudioPort' 'lv2core#OutputPort')" "2"
check "audio inputs" "$(count 'lv2core#AudioPort' 'lv2core#InputPort')" "0"
check "atom inputs" "$(count 'atom#AtomPort' 'lv2core#InputPort')" "1"
check "latency port" "$(grep -c 'lv2core#latency' "$work/ports.txt")" "1"

# lv2info's summary leaves out what an event port carries; its full description has it.
check "MIDI input" "$(grep -c 'atom#supports> <http://lv2plug.in/ns/ext/midi#MidiEvent>' "$work/plugin.ttl")" "1"

if [ $fail -ne 0 ]; then
  cat "$work/info.txt"
  exit 1
fi
echo "lv2info: $uri: instrument, 2 audio outputs, MIDI input, latency port"
