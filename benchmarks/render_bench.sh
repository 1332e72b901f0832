#!/usr/bin/env bash
# Real-time factor of morvane-render --bench on 40 notes over 10.5 s at 48 kHz in 512-sample blocks,
# for the default patch, "reese classic", every voice and master stage on (the same settings as
# morvane-bench's patch 2), and every stage with an LFO on the cut-off. Best of RUNS (default 3). Usage: benchmarks/render_bench.sh [RENDER] [RUNS]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
render="${1:-$root/build/tools/morvane-render}"
runs="${2:-3}"
out="$(mktemp --suffix=.wav)"
trap 'rm -f "$out"' EXIT

source "$root/benchmarks/bench_notes.sh"

every=(--set osc1Wave=5 --set osc1DcwDepth=0.8 --set osc2Wave=8 --set osc2Level=-3 --set pdMorphAmount=0.3
       --set glideTime=0.03 --set filterCutoff=800 --set filterReso=0.5 --set filterEnvAmount=24
       --set subLevel=-6 --set subMode=1 --set subDcwDepth=0.5 --set subDriveSend=0.5
       --set noiseLevel=-30 --set noiseColour=1 --set noiseRouting=0.5
       --set drive=12 --set driveMode=1 --set driveAutoMakeup=1 --set feedbackAmount=0.4
       --set mbdEnable=1 --set mbdLowAmount=6 --set mbdMidAmount=9 --set mbdHighAmount=12
       --set postEqEnable=1 --set postEqTilt=3 --set postEqNotchDepth=0.5
       --set modFxEnable=1 --set modFxMode=2 --set delayEnable=1 --set delayPingPong=1
       --set reverbEnable=1 --set crushEnable=1 --set crushJitter=0.3 --set crushDither=1)

factor() {
  local best=0 x
  for _ in $(seq "$runs"); do
    x=$("$render" --out "$out" --seconds 10.5 "${notes[@]}" --bench "$@" 2>&1 | grep -o '[0-9.]* x real time' | grep -o '^[0-9.]*' || true)
    [ -n "$x" ] || { echo "no real-time factor from $render" >&2; exit 1; }
    best=$(awk -v a="$x" -v b="$best" 'BEGIN { print (a > b ? a : b) }')
  done
  echo "$best"
}

printf '%-28s %sx\n' "default (init clean)" "$(factor)"
printf '%-28s %sx\n' "reese classic" "$(factor --factory "reese classic")"
printf '%-28s %sx\n' "every stage on" "$(factor "${every[@]}")"
printf '%-28s %sx\n' "every stage, LFO on cut-off" "$(factor "${every[@]}" --set mod2Source=5 --set mod2Dest=1 --set mod2Amount=0.5 \
                                                   --set lfo1Depth=1 --set lfo1Rate=3)"
