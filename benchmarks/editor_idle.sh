#!/usr/bin/env bash
# The message thread's load with the standalone's editor open and idle, on a virtual display:
# CPU time of the main thread over a window of seconds, as a share of one core.
# Usage: benchmarks/editor_idle.sh [SECONDS]   (builds nothing: run scripts/build first)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
app="$root/build/Morvane_artefacts/Release/Standalone/Morvane"
seconds="${1:-10}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work"

cat > "$work/inner.sh" <<'INNER'
#!/usr/bin/env bash
set -u
"$1" >/dev/null 2>&1 &
pid=$!
sleep 4
ticks() { awk '{ print $14 + $15 }' "/proc/$pid/task/$pid/stat"; }
all() { awk '{ print $14 + $15 }' "/proc/$pid/stat"; }
t0=$(ticks); a0=$(all)
sleep "$2"
t1=$(ticks); a1=$(all)
hz=$(getconf CLK_TCK)
awk -v t="$((t1 - t0))" -v a="$((a1 - a0))" -v s="$2" -v hz="$hz" 'BEGIN {
  printf "editor idle over %d s: message thread %.2f%% of a core, whole process %.2f%%\n", s, 100 * t / hz / s, 100 * a / hz / s }'
kill -TERM "$pid"; wait "$pid" 2>/dev/null || true
INNER
chmod +x "$work/inner.sh"
xvfb-run -a -s "-screen 0 1600x1000x24" "$work/inner.sh" "$app" "$seconds"
