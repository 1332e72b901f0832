#pragma once

#include "FastMath.h"

#include <array>

namespace morvane
{
// The oversampler's downward half-band filter: the framework's polyphase all-pass pairs, worked
// as four lanes (left and right of the direct path, left and right of the delayed path) instead
// of one channel after the other. Same coefficients, same operations in the same order, so the
// same bits.
struct HalfBandDecimator
{
    // Takes the all-pass coefficients of the framework's maximum-quality 2x design.
    void prepare() noexcept;
    void reset() noexcept;

    // Two samples of each 2x-rate channel in, one sample of each host-rate channel out.
    void process (const float* overLeft, const float* overRight, float* left, float* right, int numSamples) noexcept;

    int pairCount() const noexcept { return pairs; }

private:
    using Lanes = fast::Lanes;
    static constexpr int maxPairs = 8;

    std::array<Lanes, maxPairs> alphas {}, states {};
    int pairs = 0;
    // The direct path has one stage more than the delayed one when the count is odd.
    bool extraDirect = false;
    float extraAlpha = 0.0f;
    std::array<float, 2> extraStates {};
    std::array<float, 2> delayed {};
};
}
