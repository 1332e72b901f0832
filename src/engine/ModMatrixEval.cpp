#include "engine/ModMatrixEval.h"
#include "engine/FastMath.h"

#include <cmath>

namespace morvane
{
namespace
{
    constexpr float scales[numModDestinations] = {
        0.0f,  // off
        48.0f, // cutoff, semitones
        24.0f, // drive, dB
        0.0f,  // amp, a product
        1.0f, 1.0f,           // osc1 dcw, osc2 dcw
        60.0f,                // sub level, dB
        48.0f,                // pitch, semitones
        60.0f, 60.0f,         // osc1 level, osc2 level, dB
        100.0f,               // osc2 detune, cents
        20.0f,                // osc2 detune hz
        180.0f,               // osc2 phase, degrees
        1.0f, 1.0f,           // sub dcw, resonance
        48.0f,                // filter env, semitones
        1.0f,                 // drift
        20.0f, 1.0f,          // lfo1 rate (Hz), lfo1 depth
        24.0f,                // output, dB
        60.0f,                // noise level, dB
        0.45f, 0.45f,         // osc1 pw, osc2 pw
        1.0f,                 // pd morph
        20.0f, 1.0f,          // reese beat (Hz), reese spread
        1.0f, 1.0f, 1.0f,     // phase mix, phase notch, feedback
        24.0f, 24.0f, 24.0f,  // mbd low, mid, high, dB
        8.0f, 1.0f,           // modfx rate (Hz), modfx depth
        48.0f                 // eq notch hz, semitones
    };
}

float destinationScale (int destination) noexcept
{
    return destination >= 0 && destination < numModDestinations ? scales[destination] : 0.0f;
}

void evaluateMatrix (const std::array<ModSlot, numModSlots>& slots, const std::array<float, numModSources>& sources,
                     ModSums& sums, std::array<std::atomic<float>, numModSlots>& slotOutputs) noexcept
{
    sums.clear();
    for (size_t i = 0; i < slots.size(); ++i)
    {
        const auto& slot = slots[i];
        float out = 0.0f;
        if (slot.source != 0 && slot.destination != 0 && slot.amount != 0.0f)
        {
            float v = slot.source > 0 && slot.source < numModSources ? sources[(size_t) slot.source] : 0.0f;
            if (slot.curve == 1)
                v = std::copysign (v * v, v); // deepens small values, keeps the sign

            out = slot.amount * v;
            if (slot.destination == dest::amp)
            {
                const float a = std::abs (slot.amount);
                sums.ampFactor *= slot.amount >= 0.0f ? a * v + (1.0f - a) : a * (1.0f - v) + (1.0f - a);
            }
            else if (slot.destination > 0 && slot.destination < numModDestinations)
            {
                sums.sum[(size_t) slot.destination] += out * scales[slot.destination];
            }
        }
        slotOutputs[i].store (out, std::memory_order_relaxed);
    }
}
}
