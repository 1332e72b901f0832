#pragma once

#include "engine/DriveShaper.h"

#include <array>

namespace morvane
{
// Direct-form biquad history.
struct BiquadHistory
{
    float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;

    float run (float x, float b0, float b1, float b2, float a1, float a2) noexcept
    {
        const float y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }
};

// Fourth-order Linkwitz-Riley split: two Butterworth sections in series on each side.
struct Crossover
{
    double sampleRate = 44100.0;
    float frequency = 1000.0f;
    float lowB0 = 0.0f, lowB1 = 0.0f, lowB2 = 0.0f;
    float highB0 = 0.0f, highB1 = 0.0f, highB2 = 0.0f;
    float a1 = 0.0f, a2 = 0.0f;
    std::array<BiquadHistory, 2> lowSections, highSections;

    void prepare (double rate) noexcept;
    // Redesigns only on a move of 0.01 Hz or more.
    void setFrequency (float hz) noexcept;
    void process (float x, float& low, float& high) noexcept;

private:
    void design() noexcept;
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
