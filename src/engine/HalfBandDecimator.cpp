#include "engine/HalfBandDecimator.h"

#include <juce_dsp/juce_dsp.h>

namespace morvane
{
void HalfBandDecimator::prepare() noexcept
{
    // The framework's downward filter for one 2x stage at maximum quality. The delayed path's
    // first entry is the one-sample delay itself.
    auto structure = juce::dsp::FilterDesign<float>::designIIRLowpassHalfBandPolyphaseAllpassMethod (0.12f * 0.5f, -75.0f);
    jassert (structure.directPath.size() == stages && structure.delayedPath.size() == stages + 1);
    for (int k = 0; k < stages; ++k)
    {
        const float a = structure.directPath.getObjectPointer (k)->coefficients[0];
        const float b = structure.delayedPath.getObjectPointer (k + 1)->coefficients[0];
        alphas[(size_t) k] = Lanes { a, a, b, b };
    }
    reset();
}

void HalfBandDecimator::reset() noexcept
{
    states.fill (Lanes {});
    delayed.fill (0.0f);
}

void HalfBandDecimator::process (const float* overLeft, const float* overRight, float* left, float* right,
                                 int numSamples) noexcept
{
    auto s = states;
    const auto a = alphas;
    auto dl = delayed[0], dr = delayed[1];
    for (int i = 0; i < numSamples; ++i)
    {
        Lanes x { overLeft[2 * i], overRight[2 * i], overLeft[2 * i + 1], overRight[2 * i + 1] };
        for (size_t k = 0; k < (size_t) stages; ++k)
        {
            const auto y = a[k] * x + s[k];
            s[k] = x - a[k] * y;
            x = y;
        }
        left[i] = (dl + x[0]) * 0.5f;
        right[i] = (dr + x[1]) * 0.5f;
        dl = x[2];
        dr = x[3];
    }
    delayed = { dl, dr };

    // As the framework does after each block: tiny states go to zero, so a silent tail never
    // reaches denormals.
    for (auto& lanes : s)
        for (int lane = 0; lane < 4; ++lane)
            if (! (lanes[lane] < -1.0e-8f || lanes[lane] > 1.0e-8f))
                lanes[lane] = 0.0f;
    states = s;
}
}
