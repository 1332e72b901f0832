#include "HalfBandDecimator.h"

#include <juce_dsp/juce_dsp.h>

namespace morvane
{
void HalfBandDecimator::prepare() noexcept
{
    // The framework's downward filter for one 2x stage at maximum quality.
    auto structure = juce::dsp::FilterDesign<float>::designIIRLowpassHalfBandPolyphaseAllpassMethod (0.12f * 0.5f, -75.0f);
    const int direct = structure.directPath.size();
    // The delayed path's first entry is the one-sample delay itself.
    const int delayedStages = structure.delayedPath.size() - 1;
    jassert (direct == delayedStages || direct == delayedStages + 1);
    pairs = std::min (delayedStages, maxPairs);
    for (int k = 0; k < pairs; ++k)
    {
        const float a = structure.directPath.getObjectPointer (k)->coefficients[0];
        const float b = structure.delayedPath.getObjectPointer (k + 1)->coefficients[0];
        alphas[(size_t) k] = Lanes { a, a, b, b };
    }
    extraDirect = direct > delayedStages;
    extraAlpha = extraDirect ? structure.directPath.getObjectPointer (direct - 1)->coefficients[0] : 0.0f;
    reset();
}

void HalfBandDecimator::reset() noexcept
{
    states.fill (Lanes {});
    extraStates.fill (0.0f);
    delayed.fill (0.0f);
}

void HalfBandDecimator::process (const float* overLeft, const float* overRight, float* left, float* right,
                                 int numSamples) noexcept
{
    auto dl = delayed[0], dr = delayed[1];
    for (int i = 0; i < numSamples; ++i)
    {
        Lanes x { overLeft[2 * i], overRight[2 * i], overLeft[2 * i + 1], overRight[2 * i + 1] };
        for (int k = 0; k < pairs; ++k)
        {
            const auto y = alphas[(size_t) k] * x + states[(size_t) k];
            states[(size_t) k] = x - alphas[(size_t) k] * y;
            x = y;
        }
        float directLeft = x[0], directRight = x[1];
        if (extraDirect)
        {
            const float yl = extraAlpha * directLeft + extraStates[0];
            extraStates[0] = directLeft - extraAlpha * yl;
            const float yr = extraAlpha * directRight + extraStates[1];
            extraStates[1] = directRight - extraAlpha * yr;
            directLeft = yl;
            directRight = yr;
        }
        left[i] = (dl + directLeft) * 0.5f;
        right[i] = (dr + directRight) * 0.5f;
        dl = x[2];
        dr = x[3];
    }
    delayed = { dl, dr };

    // As the framework does after each block: tiny states go to zero, so a silent tail never
    // reaches denormals.
    const auto snap = [] (float& v) { if (! (v < -1.0e-8f || v > 1.0e-8f)) v = 0.0f; };
    for (int k = 0; k < pairs; ++k)
        for (int lane = 0; lane < 4; ++lane)
        {
            float v = states[(size_t) k][lane];
            snap (v);
            states[(size_t) k][lane] = v;
        }
    for (auto& v : extraStates)
        snap (v);
}
}
