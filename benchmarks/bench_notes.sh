# Sourced by the benchmarks: their 40 notes over 10 s, a bass line of one 0.2 s note every quarter
# second, as morvane-render --note arguments in the array `notes`.
notes=()
line=(36 36 48 39 36 43 41 34)
for i in $(seq 0 39); do
  notes+=(--note "${line[$((i % 8))]}:0.9:$(awk -v i="$i" 'BEGIN { printf "%.2f", i * 0.25 }'):0.2")
done
