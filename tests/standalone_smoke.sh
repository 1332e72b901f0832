#!/usr/bin/env bash
# Starts the standalone app on a virtual display, checks that it stays up and shows a window,
# then closes it. Usage: standalone_smoke.sh PATH_TO_APP [SCREENSHOT.png]
set -u
app="$1"
shot="${2:-}"
if ! command -v xvfb-run >/dev/null; then
  echo "standalone-smoke: xvfb-run is missing (scripts/setup installs it)" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work"   # a fresh settings folder, so a stale state file cannot change the result

cat > "$work/inner.sh" <<'INNER'
#!/usr/bin/env bash
set -u
"$1" >"$3/app.log" 2>&1 &
pid=$!
for _ in $(seq 1 40); do
  sleep 0.25
  if ! kill -0 "$pid" 2>/dev/null; then
    echo "standalone-smoke: the app exited early"; cat "$3/app.log"; exit 1
  fi
  if xwininfo -root -tree 2>/dev/null | grep -q '"Morvane"'; then
    found=1; break
  fi
done
if [ -z "${found:-}" ]; then
  echo "standalone-smoke: no window titled Morvane appeared"; cat "$3/app.log"; kill "$pid"; exit 1
fi
sleep 1
if [ -n "$2" ] && command -v xwd >/dev/null; then xwd -root -silent > "$3/screen.xwd" && cp "$3/screen.xwd" "$2.xwd"; fi
kill -0 "$pid" 2>/dev/null || { echo "standalone-smoke: the app died after opening"; exit 1; }
kill -TERM "$pid"; wait "$pid" 2>/dev/null
echo "standalone-smoke: window up, app closed"
exit 0
INNER
chmod +x "$work/inner.sh"
xvfb-run -a -s "-screen 0 1600x1000x24" "$work/inner.sh" "$app" "$shot" "$work"
