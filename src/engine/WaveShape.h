#pragma once

#include "engine/FastMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane
{
inline constexpr int numWaves = 10;
inline constexpr int pwmWave = 8;

// One phase-distortion wave at a given DCW. The constants that depend on DCW alone (with their
// divisions and roots) are worked out by make(); an oscillator keeps them while DCW holds and
// pays only for at() on each sample.
struct WaveForm
{
    int wave = 0;
    float a = 0.0f;        // knee slope after the bend, or the squeeze ratio of waves 1 and 2
    float b = 0.0f;        // knee slope before the bend, or 0.5 / k of wave 4
    float multiple = 1.0f; // resonance multiple of waves 5, 6, 7 and 9

    static WaveForm make (int wave, float dcw, float resonanceRatio) noexcept;

    float at (float p) const noexcept
    {
        const auto frac = [] (float x) { return x - std::floor (x); };
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

// Gains that give every wave the loudness of the full-DCW saw. Built once, on first use.
const std::array<float, numWaves>& waveRmsGain();
}
