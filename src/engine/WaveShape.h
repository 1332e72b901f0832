#pragma once

#include "engine/FastMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane
{
inline constexpr int numWaves = 10;
inline constexpr int pwmWave = 8;

// Band-limiting residuals over one sample on each side of an edge at x = 0 (x in samples, after
// the edge positive): what a unit step's smoothed form differs from the step itself by (the
// pulse's polynomial, for a step of 1 rather than 2), and its integral, for a unit change of
// slope. Branch-free, so that loops over them run in vector lanes; 0 from a sample away.
namespace edgeDetail
{
    inline float stepResidual (float x) noexcept
    {
        const float a = std::min (std::abs (x), 1.0f);
        const float g = 0.5f * (1.0f - a) * (1.0f - a);
        return x >= 0.0f ? -g : g;
    }

    inline float slopeResidual (float x) noexcept
    {
        const float a = std::min (std::abs (x), 1.0f);
        return (1.0f - a) * (1.0f - a) * (1.0f - a) * 0.16666667f;
    }

    // Where p stands from an edge at e, in samples of dt, within half a cycle either way.
    inline float samplesFrom (float p, float e, float inverseDt) noexcept
    {
        float d = p - e;
        d = d >= 0.5f ? d - 1.0f : d;
        d = d < -0.5f ? d + 1.0f : d;
        return d * inverseDt;
    }
}

// The jumps of a windowed resonant wave (5, 6, 7 and 9 run an inner cosine or sine at a multiple
// of the fundamental under a window): where its phase wraps, the inner oscillation restarts at
// whatever point it had reached, a jump in value and in slope; where the window turns at half
// the cycle, a jump in slope. Slopes are per unit of phase.
struct WaveEdges
{
    float step = 0.0f, slope = 0.0f, middleSlope = 0.0f;

    // The smoothing of all three at phase p, for a phase step of dt (0 < dt < 1/4).
    float at (float p, float dt) const noexcept
    {
        const float inverse = 1.0f / dt;
        const float x = edgeDetail::samplesFrom (p, 0.0f, inverse);
        const float h = edgeDetail::samplesFrom (p, 0.5f, inverse);
        const float y = step * edgeDetail::stepResidual (x) + dt * (slope * edgeDetail::slopeResidual (x) + middleSlope * edgeDetail::slopeResidual (h));
        return dt > 0.0f ? y : 0.0f; // a standing oscillator has no edges to smooth
    }
};

// One phase-distortion wave at a given DCW. The constants that depend on DCW alone (with their
// divisions and roots) are worked out by make(); an oscillator keeps them while DCW holds and
// pays only for at() on each sample.
struct WaveForm
{
    int wave = 0;
    float a = 0.0f;        // knee slope after the bend, or the squeeze ratio of waves 1 and 2
    float b = 0.0f;        // knee slope before the bend, or 0.5 / k of wave 4
    float multiple = 1.0f; // resonance multiple of waves 5, 6, 7 and 9

    // Inline, so that a loop over many steps of one wave folds both switches and vectorises.
    static WaveForm make (int wave, float dcw, float resonanceRatio) noexcept
    {
        // Slopes of the bent phase that runs 0..1 and passes 0.5 at p = k.
        const auto knee = [] (float k, float& after, float& before)
        {
            after = (0.5f - k) / (1.0f - k);
            before = (0.5f - k) / k;
        };
        const float d = std::clamp (dcw, 0.0f, 1.0f);
        WaveForm f;
        f.wave = wave;
        switch (wave)
        {
            case 0: knee (std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f), f.a, f.b); break;
            case 1:
            {
                const float s = std::clamp (std::sqrt (std::sqrt (d)), 0.0f, 0.999f);
                f.a = s / (1.0f - s);
                break;
            }
            case 2:
            {
                const float s = std::clamp (d, 0.0f, 0.99f);
                f.a = s / (1.0f - s);
                break;
            }
            case 3: knee (std::clamp (0.5f - 0.49f * d, 0.01f, 0.5f), f.a, f.b); break;
            case 4: f.b = 0.5f / std::clamp (0.5f - 0.5f * d, 0.01f, 0.5f); break;
            case 5: case 6: case 7: case 9: f.multiple = std::max ((resonanceRatio - 1.0f) * d + 1.0f, 1.0f); break;
            default: break;
        }
        return f;
    }

    // The wave's edges, for the waves that band-limit them (6, 7 and 9): with u the inner phase
    // reached at the end of the cycle and at its middle, from the wave's value and slope at both
    // sides of those points.
    static constexpr bool hasEdges (int w) noexcept { return w == 6 || w == 7 || w == 9; }
    WaveEdges edges() const noexcept
    {
        // The multiple is at least 1, so a truncation is its floor (and vectorises, where floor
        // is a call without SSE4.1).
        const float m = multiple, half = 0.5f * m;
        const float end = m - (float) (int) m, middle = half - (float) (int) half;
        WaveEdges e;
        switch (wave)
        {
            case 6: // the window's corners at 0 and 1/2; it is 0 at the wrap, so no step
                e.slope = 4.0f + 2.0f * (fast::cos2pi (end) + 1.0f);
                e.middleSlope = -4.0f * (fast::cos2pi (middle) + 1.0f);
                break;
            case 7: // the window falls to 0 at the wrap and turns down at 1/2
                e.slope = 6.2831855f * m + 2.0f * fast::sin2pi (end);
                e.middleSlope = -2.0f * fast::sin2pi (middle);
                break;
            case 9: // the window is 1 at the wrap and 0, turning, at 1/2
            {
                const float c = fast::cos2pi (end);
                e.step = 1.0f - c;
                e.slope = -2.0f + 6.2831855f * m * fast::sin2pi (end) - 2.0f * c;
                e.middleSlope = 4.0f * fast::cos2pi (middle);
                break;
            }
            default: break;
        }
        return e;
    }

    float at (float p) const noexcept
    {
        // x - floor (x), written with a truncation so that loops over it vectorise; x is a phase
        // times at most the resonance ratio, far inside the range of an int.
        const auto frac = [] (float x)
        {
            const float t = (float) (int) x;
            return x - (t > x ? t - 1.0f : t);
        };
        switch (wave)
        {
            case 0: return fast::cos2pi (p + std::min (a * (1.0f - p), b * p));
            case 1:
            {
                const float u = frac (2.0f * p + 1.0f);
                const float q = u - std::min (a * (1.0f - u), u) + (p >= 0.5f ? 1.0f : 0.0f);
                return fast::cos2pi (0.5f * q);
            }
            case 2: return fast::cos2pi (p - std::min (a * (1.0f - p), p));
            case 3: return fast::cos2pi (2.0f * (p + std::min (a * (1.0f - p), b * p)));
            case 4: return fast::cos2pi (p < 0.5f ? p : std::min ((p - 0.5f) * b + 0.5f, 1.0f));
            case 5: return 1.0f - (0.5f - 0.5f * fast::cos2pi (frac (multiple * p))) * 2.0f * (1.0f - p);
            case 6:
            {
                const float w = p < 0.5f ? 2.0f * p : 2.0f - 2.0f * p;
                return 2.0f * w * (0.5f * fast::cos2pi (frac (multiple * p)) + 0.5f) - 1.0f;
            }
            case 7: return fast::sin2pi (frac (multiple * p)) * std::min (2.0f * (1.0f - p), 1.0f);
            case 8: return p < 0.5f ? 1.0f : -1.0f;
            case 9:
            {
                const float w = p < 0.5f ? 1.0f - 2.0f * p : 2.0f * (p - 0.5f);
                return fast::cos2pi (frac (multiple * p)) * w;
            }
            default: return 0.0f;
        }
    }
};

// One sample of a phase-distortion wave. Stateless; safe on any thread. Waves beyond 9 give 0.
float waveShape (int wave, float phase, float dcw, float resonanceRatio);

// Many samples of one wave at once: out[j] += gain * the wave at phase[j] and dcw[j], then, with
// morph, moved towards nextGain * the next wave by morph[j], the same operations as an
// oscillator's single step, where keep[j] is 1, with the edges of waves 6, 7 and 9 smoothed for
// the phase steps increment[j] when it is given. The loop has no branch, so the compiler runs it
// in vector lanes; each lane makes its own constants unless dcwHolds says that every kept step
// has heldDcw.
struct WaveRun
{
    int wave = 0;
    const float* phase = nullptr;
    const float* increment = nullptr; // with it the edges of waves 6, 7 and 9 are smoothed
    const float* dcw = nullptr;
    const float* morph = nullptr;
    const int* keep = nullptr;
    float gain = 1.0f, nextGain = 1.0f;
    bool withMorph = false;
    bool dcwHolds = false;
    float heldDcw = 0.0f;
};
void addWaveRun (const WaveRun& run, float* out, int count) noexcept;

// The same for a plain sine: out[j] += sin (2 pi phase[j]) where keep[j] is 1.
void addSineRun (const float* phase, const int* keep, float* out, int count) noexcept;

// Gains that give every wave the loudness of the full-DCW saw. Built once, on first use.
const std::array<float, numWaves>& waveRmsGain();
}
