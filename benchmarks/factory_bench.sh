#!/usr/bin/env bash
# Real-time factor of every factory preset under morvane-render --bench, on render_bench.sh's 40
# notes over 10.5 s at 48 kHz in 512-sample blocks, sorted from the slowest, with the minimum and
# the median. Each figure is the best of RUNS (default 3). Given a REFERENCE build, each run of a
# preset is followed by the same run of the reference, so that both see the machine as it is in
# those seconds; the table then shows both figures and their ratio.
# Usage: benchmarks/factory_bench.sh [RENDER] [REFERENCE_RENDER] [RUNS]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
render="${1:-$root/build/tools/morvane-render}"
reference="${2:-}"
runs="${3:-3}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

source "$root/benchmarks/bench_notes.sh"

once() {
  local x
  x=$("$1" --out "$work/out.wav" --seconds 10.5 "${notes[@]}" --bench --factory "$2" 2>&1 \
      | grep -o '[0-9.]* x real time' | grep -o '^[0-9.]*' || true)
  [ -n "$x" ] || { echo "no real-time factor from $1 for \"$2\"" >&2; exit 1; }
  echo "$x"
}

best() { awk -v a="$1" -v b="$2" 'BEGIN { print (a > b ? a : b) }'; }

"$render" --list-factory | cut -f2 > "$work/names"
[ -s "$work/names" ] || { echo "no factory presets from $render" >&2; exit 1; }
while IFS= read -r name; do
  a=0 b=0
  for _ in $(seq "$runs"); do
    a=$(best "$(once "$render" "$name")" "$a")
    [ -z "$reference" ] || b=$(best "$(once "$reference" "$name")" "$b")
  done
  printf '%s\t%s\t%s\n' "$a" "$b" "$name" >> "$work/table"
done < "$work/names"

sort -g -k1,1 "$work/table" > "$work/sorted"
if [ -z "$reference" ]; then
  printf '%-28s %10s\n' preset factor
  awk -F'\t' '{ printf "%-28s %9.1fx\n", $3, $1 }' "$work/sorted"
else
  printf '%-28s %10s %10s %7s\n' preset factor reference ratio
  awk -F'\t' '{ printf "%-28s %9.1fx %9.1fx %7.2f\n", $3, $1, $2, $1 / $2 }' "$work/sorted"
fi
summary() { # a column's minimum and median, to the given number of decimals
  sort -g | awk -v d="$1" '{ v[NR] = $1 } END { m = NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2;
                                                printf "%.*f %.*f", d, v[1], d, m }'
}
read -r amin amed <<< "$(cut -f1 "$work/table" | summary 1)"
printf '%d presets, minimum %sx, median %sx\n' "$(wc -l < "$work/table")" "$amin" "$amed"
if [ -n "$reference" ]; then
  read -r bmin bmed <<< "$(cut -f2 "$work/table" | summary 1)"
  read -r rmin rmed <<< "$(awk -F'\t' '{ print $1 / $2 }' "$work/table" | summary 2)"
  printf 'reference: minimum %sx, median %sx; ratio: minimum %s, median %s\n' "$bmin" "$bmed" "$rmin" "$rmed"
fi
