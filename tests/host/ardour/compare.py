#!/usr/bin/env python3
"""compare.py HOST.wav REFERENCE.wav LIMIT_DB: aligns the two within a few samples (the host
compensates the plug-in's latency, so the best offset should be 0), then prints the offset, both
levels and how far below the reference the difference lies; fails when it is above LIMIT_DB."""
import math, struct, sys

def read_float_wav(path):
    data = open(path, 'rb').read()
    i, fmt = 12, None
    while i + 8 <= len(data):
        cid, size = data[i:i + 4], struct.unpack('<I', data[i + 4:i + 8])[0]
        if cid == b'fmt ':
            fmt = struct.unpack('<HHIIHH', data[i + 8:i + 24])
        elif cid == b'data':
            if fmt is None or fmt[5] != 32 or fmt[0] not in (3, 0xFFFE):
                sys.exit(f'{path}: not a 32-bit float WAV')
            raw = data[i + 8:i + 8 + size]
            x = struct.unpack(f'<{len(raw) // 4}f', raw)
            return [x[c::fmt[1]] for c in range(fmt[1])]
        i += 8 + size + (size & 1)
    sys.exit(f'{path}: no audio')

host, ref = read_float_wav(sys.argv[1]), read_float_wav(sys.argv[2])
limit = float(sys.argv[3])
n = min(len(host[0]), len(ref[0])) - 32

def difference(offset):
    err = sig = 0.0
    for ch in range(min(len(host), len(ref))):
        a, b = host[ch], ref[ch]
        for i in range(16, n):
            d = a[i + offset] - b[i]
            err += d * d
            sig += b[i] * b[i]
    return err, sig

best = min((difference(o) + (o,) for o in range(-8, 9)), key=lambda t: t[0])
err, sig, offset = best
level = lambda x: 10 * math.log10(max(sum(v * v for v in x[0]) / len(x[0]), 1e-30))
below = 10 * math.log10(max(err, 1e-30) / max(sig, 1e-30))
print(f'offset {offset} samples, levels {level(host):.1f} / {level(ref):.1f} dB RMS, difference {below:.1f} dB')
sys.exit(0 if sig > 0 and below <= limit else 1)
