#pragma once

#include "engine/FastMath.h"
#include "engine/ModMatrix.h"

#include <atomic>

namespace morvane
{
// What one unit of slot output means at each destination ("amp" is a product, not a scale).
float destinationScale (int destination) noexcept;

// One host sample of the matrix: clears the sums, adds every slot in order, reports each slot's
// output. Sources are indexed as the source list; an index beyond it reads 0.
void evaluateMatrix (const std::array<ModSlot, numModSlots>& slots, const std::array<float, numModSources>& sources,
                     ModSums& sums, std::array<std::atomic<float>, numModSlots>& slotOutputs) noexcept;

// A dB sum as a factor on a gain: 1 for a sum of exactly 0, 0 at -90 dB or below.
inline float sumGainFactor (float sumDb) noexcept
{
    if (sumDb == 0.0f)
        return 1.0f;
    return sumDb <= -90.0f ? 0.0f : fast::dbToGain (sumDb);
}
}
