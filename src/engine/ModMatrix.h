#pragma once

#include <array>
#include <cstddef>

namespace morvane
{
inline constexpr int numModSlots = 8;
inline constexpr int numModSources = 13;
inline constexpr int numModDestinations = 35;

// Destination indices, in the order of the destination choice list.
namespace dest
{
    enum : int
    {
        off, cutoff, drive, amp, osc1Dcw, osc2Dcw, subLevel, pitch, osc1Level, osc2Level, osc2Detune,
        osc2DetuneHz, osc2Phase, subDcw, resonance, filterEnv, drift, lfo1Rate, lfo1Depth, output,
        noiseLevel, osc1Pw, osc2Pw, pdMorph, reeseBeat, reeseSpread, phaseMix, phaseNotch, feedback,
        mbdLow, mbdMid, mbdHigh, modFxRate, modFxDepth, eqNotchHz
    };
}

struct ModSlot
{
    int source = 0;
    int destination = 0;
    float amount = 0.0f;
    int curve = 0;
};

// Per-sample sums of the matrix, in destination units; "amp" is a product kept apart.
struct ModSums
{
    std::array<float, numModDestinations> sum {};
    float ampFactor = 1.0f;

    void clear() noexcept
    {
        sum.fill (0.0f);
        ampFactor = 1.0f;
    }

    float operator[] (int d) const noexcept { return sum[(std::size_t) d]; }
};
}
