#pragma once

#include "engine/FastMath.h"

#include <array>

namespace morvane
{
// The oversampler's downward half-band filter: the framework's polyphase all-pass pairs, worked
// as four lanes (left and right of the direct path, left and right of the delayed path) instead
// of one channel after the other. Same coefficients, same operations in the same order, so the
// same bits.
struct HalfBandDecimator
{
    // The framework's maximum-quality 2x design has three all-pass stages on each path.
    static constexpr int stages = 3;

    // Takes the coefficients of that design.
    void prepare() noexcept;
    void reset() noexcept;

    // Two samples of each 2x-rate channel in, one sample of each host-rate channel out.
    void process (const float* overLeft, const float* overRight, float* left, float* right, int numSamples) noexcept;

private:
    using Lanes = fast::Lanes;

    std::array<Lanes, stages> alphas {}, states {};
    std::array<float, 2> delayed {};
};
}
