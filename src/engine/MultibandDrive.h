#pragma once

#include "engine/DriveShaper.h"
#include "engine/FastMath.h"

#include <array>

namespace morvane
{
// Fourth-order Linkwitz-Riley split: two Butterworth sections in series on each side. The low and
// the high side share their poles and their input, so they run as two lanes of one vector (low in
// lane 0, high in lane 1): the same operations in the same order as two plain biquads, for half
// the instructions.
struct Crossover
{
    using Lanes = fast::Lanes;

    // Direct-form history of one section, both sides.
    struct Section
    {
        Lanes x1 {}, x2 {}, y1 {}, y2 {};
    };

    double sampleRate = 44100.0;
    float frequency = 1000.0f;
    float lowB0 = 0.0f, lowB1 = 0.0f, lowB2 = 0.0f;
    float highB0 = 0.0f, highB1 = 0.0f, highB2 = 0.0f;
    float a1 = 0.0f, a2 = 0.0f;
    Lanes b0Lanes {}, b1Lanes {}, b2Lanes {}, a1Lanes {}, a2Lanes {};
    std::array<Section, 2> sections;

    void prepare (double rate) noexcept;
    // Redesigns only on a move of 0.01 Hz or more.
    void setFrequency (float hz) noexcept;
    void process (float x, float& low, float& high) noexcept
    {
        const auto y = run (sections[1], run (sections[0], Lanes { x, x, x, x }));
        low = y[0];
        high = y[1];
    }

private:
    void design() noexcept;

    Lanes run (Section& h, Lanes x) const noexcept
    {
        const auto y = b0Lanes * x + b1Lanes * h.x1 + b2Lanes * h.x2 - a1Lanes * h.y1 - a2Lanes * h.y2;
        h.x2 = h.x1;
        h.x1 = x;
        h.y2 = h.y1;
        h.y1 = y;
        return y;
    }
};

// Three bands, each through its own shaper, blended with the dry signal. One per side.
struct MultibandDrive
{
    enum Band { low, mid, high, numBands };

    double sampleRate = 44100.0;
    bool enabled = false;
    float mix = 1.0f;
    Crossover lowCrossover, highCrossover;
    std::array<DriveShaper, numBands> bands;

    void prepare (double oversampledRate) noexcept;
    float process (float x) noexcept { return enabled && mix > 0.0f ? processBands (x) : x; }

private:
    float processBands (float x) noexcept;
};
}
