#pragma once

namespace morvane
{
// One EQ section as a trapezoidal state-variable filter. Its response is that of the cookbook
// biquad of the same kind, but its state is two integrators, so a notch or shelf that jumps under
// modulation does not ring up the way a direct-form history does.
struct EqSection
{
    double sampleRate = 44100.0;
    float a1 = 1.0f, a2 = 0.0f, a3 = 0.0f;
    float m0 = 1.0f, m1 = 0.0f, m2 = 0.0f;
    float ic1eq = 0.0f, ic2eq = 0.0f;

    enum Kind { lowShelf, highShelf, peak };
    // gainA is the cookbook's A = 10^(dB / 40).
    void design (Kind kind, double frequency, double q, double gainA) noexcept;
    void clear() noexcept { ic1eq = ic2eq = 0.0f; }

    float process (float v0) noexcept
    {
        const float v3 = v0 - ic2eq;
        const float v1 = a1 * ic1eq + a2 * v3;
        const float v2 = ic2eq + a2 * ic1eq + a3 * v3;
        ic1eq = 2.0f * v1 - ic1eq;
        ic2eq = 2.0f * v2 - ic2eq;
        return m0 * v0 + m1 * v1 + m2 * v2;
    }
};

// Host-rate tilt (two shelves around a pivot) and a peaking notch. One per side.
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

    float process (float x) noexcept;

private:
    void designShelves() noexcept;
    void designNotch() noexcept;
};
}
