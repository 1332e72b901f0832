#pragma once

#include "engine/FastMath.h"

#include <cmath>

namespace morvane
{
// One EQ section as a trapezoidal state-variable filter. Its response is that of the cookbook
// biquad of the same kind, but its state is two integrators, so a notch or shelf that jumps under
// modulation does not ring up the way a direct-form history does. The two sides share the
// coefficients and run as lanes of one vector: left in lane 0, right in lane 1.
struct EqSection
{
    using Lanes = fast::Lanes;

    double sampleRate = 44100.0;
    float a1 = 1.0f, a2 = 0.0f, a3 = 0.0f;
    float m0 = 1.0f, m1 = 0.0f, m2 = 0.0f;
    Lanes ic1eq {}, ic2eq {};

    enum Kind { lowShelf, highShelf, peak };
    // gainA is the cookbook's A = 10^(dB / 40).
    void design (Kind kind, double frequency, double q, double gainA) noexcept;
    void clear() noexcept { ic1eq = ic2eq = Lanes {}; }

    Lanes process (Lanes v0) noexcept
    {
        const Lanes v3 = v0 - ic2eq;
        const Lanes v1 = a1Lanes * ic1eq + a2Lanes * v3;
        const Lanes v2 = ic2eq + a2Lanes * ic1eq + a3Lanes * v3;
        ic1eq = 2.0f * v1 - ic1eq;
        ic2eq = 2.0f * v2 - ic2eq;
        return m0Lanes * v0 + m1Lanes * v1 + m2Lanes * v2;
    }

private:
    // As the scalars above: a section not yet designed passes its input.
    Lanes a1Lanes = fast::splat (1.0f), a2Lanes {}, a3Lanes {}, m0Lanes = fast::splat (1.0f), m1Lanes {}, m2Lanes {};
};

// Host-rate tilt (two shelves around a pivot) and a peaking notch, for both sides.
struct PostEq
{
    bool enabled = false;
    float tilt = 0.0f;
    float notchHz = 800.0f;
    float notchDepth = 0.0f;
    EqSection lowShelf, highShelf, notch;

    void prepare (double hostRate) noexcept;
    // Each redesigns only when its value moves past its threshold.
    void setTilt (float dB) noexcept;
    void setNotch (float hz, float depth) noexcept;

    // One side alone.
    float process (float x) noexcept { return process (fast::splat (x))[0]; }
    // Both sides.
    void process (float& left, float& right) noexcept
    {
        const auto y = process (fast::sides (left, right));
        left = y[0];
        right = y[1];
    }

    EqSection::Lanes process (EqSection::Lanes x) noexcept
    {
        if (! enabled)
            return x;
        if (std::abs (tilt) > 0.01f)
            x = highShelf.process (lowShelf.process (x));
        if (notchDepth > 0.001f)
            x = notch.process (x);
        return x;
    }

private:
    void designShelves() noexcept;
    void designNotch() noexcept;
};
}
