#pragma once

#include "engine/DriveShaper.h"
#include "engine/FastMath.h"

#include <array>

namespace morvane
{
// Fourth-order Linkwitz-Riley split: two Butterworth sections in series on each side. The low and
// the high output share their poles and their input, and the two sides share the coefficients, so
// one vector carries all four: left low, left high, right low, right high. The same operations in
// the same order as four plain biquads, for a quarter of the instructions.
struct Crossover
{
    using Lanes = fast::Lanes;

    // Direct-form history of one section, all four lanes.
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

    // One side: x in, its low and high parts out.
    void process (float x, float& low, float& high) noexcept
    {
        const auto y = split (fast::splat (x));
        low = y[0];
        high = y[1];
    }

    // Both sides: { left, left, right, right } in, { left low, left high, right low, right high } out.
    Lanes split (Lanes x) noexcept { return run (sections[1], run (sections[0], x)); }

    // The right lanes take the left's history.
    void copyLeftToRight() noexcept;

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

// Three bands, each through its own shaper, blended with the dry signal; both sides in one record,
// their splits side by side in the crossovers' lanes.
struct MultibandDrive
{
    enum Band { low, mid, high, numBands };

    double sampleRate = 44100.0;
    bool enabled = false;
    float mix = 1.0f;
    Crossover lowCrossover, highCrossover;
    std::array<DriveShaper, numBands> bands;      // the left side's, or the one side's
    std::array<DriveShaper, numBands> rightBands; // the right side's

    void prepare (double oversampledRate) noexcept;
    bool running() const noexcept { return enabled && mix > 0.0f; }

    // One channel alone, in all four lanes: a record used this way holds no second side.
    float process (float x) noexcept { return running() ? processBands (x) : x; }

    // Both sides. While rightAsLeft, the right side's input is the left's and its shapers stand
    // for the left's: the right output is the left's, and the right shapers stand still.
    void process (float& left, float& right, bool rightAsLeft) noexcept
    {
        if (running())
            processBands (left, right, rightAsLeft);
    }

    // Both sides over a run of up to maximumRun samples with settings that stand: the same bits as
    // the run's samples one at a time, the splits first, then each shaper over the run.
    static constexpr int maximumRun = 128;
    void process (float* left, float* right, int numSamples, bool rightAsLeft) noexcept;

    void copyLeftToRight() noexcept;
    bool sidesEqual() const noexcept;

private:
    float processBands (float x) noexcept;
    void processBands (float& left, float& right, bool rightAsLeft) noexcept;
};
}
