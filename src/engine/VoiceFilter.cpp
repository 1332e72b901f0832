#include "engine/VoiceFilter.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace morvane
{
namespace
{
    // The phase chain's corner ratios, 4^(0.2 i), by the same operations as a general ratio would
    // take; set up before the audio thread runs, so that no first use waits on a guard.
    const std::array<float, 6> cornerPowers = []
    {
        std::array<float, 6> p {};
        const float ratio = std::pow (4.0f, 0.2f);
        for (size_t i = 0; i < p.size(); ++i)
            p[i] = std::pow (ratio, (float) i);
        return p;
    }();
}

void PhaseModel::rebuild (float r) noexcept
{
    if (! (octaveOffset == spreadOffset))
    {
        spreadOffset = octaveOffset;
        spread = std::exp2 (octaveOffset);
    }
    const float m = spread;
    const float low = 0.5f * centre * m;
    // The corners run from half to twice the centre, so their ratio is 4^0.2 whenever the lowest
    // is above 1 Hz: 2 c m and c m / 2 are the same rounded product scaled by powers of 2, so the
    // quotient is exactly 4. The centre never goes below 20 Hz, nor the spread below an octave
    // down, so only the table's powers of the ratio are used.
    const auto& powers = cornerPowers;
    std::array<float, 8> f {};
    if (low >= 1.0f)
    {
        for (size_t i = 0; i < powers.size(); ++i)
            f[i] = powers[i] * low;
    }
    else
    {
        const float ratio = std::pow ((2.0f * centre * m) / std::max (1.0f, low), 0.2f);
        for (size_t i = 0; i < powers.size(); ++i)
            f[i] = std::pow (ratio, (float) i) * low;
    }
    // Six corners' tangents as two vectors: a moving cut-off rebuilds them on every host sample.
    const fast::Lanes lowest = fast::splat (20.0f), highest = fast::splat (0.45f * r);
    for (size_t v = 0; v < 2; ++v)
    {
        fast::Lanes corner;
        std::memcpy (&corner, f.data() + 4 * v, sizeof (corner));
        const fast::Lanes t = filterDetail::integratorGain (fast::atMost (fast::atLeast (corner, lowest), highest), r);
        const fast::Lanes allPass = (1.0f - t) / (1.0f + t);
        for (size_t i = 0; i < 4 && 4 * v + i < a.size(); ++i)
            a[4 * v + i] = allPass[i];
    }
    stale = false;
}

void VoiceFilter::prepare (double oversampledRate) noexcept
{
    rate = oversampledRate > 0.0 ? oversampledRate : 44100.0;
    fadeLength = std::max ((int) (oversampledRate * 0.005 + 0.5), 1);
    fadeCounter = 0;
    clearSignalState();
    phaseModel.stale = true;
}

void VoiceFilter::clearSignalState() noexcept
{
    ladderModel.stages = diodeModel.stages = stateModel.stages = fast::Lanes { 0.0f, 0.0f, 0.0f, 0.0f };
    diodeModel.lowState = 0.0f;
    phaseModel.s.fill (0.0f);
    phaseModel.feedbackSample = 0.0f;
}

CutoffCoefficients VoiceFilter::coefficientsFor (float hz, double oversampledRate) noexcept
{
    const float limited = limitCutoff (hz, oversampledRate);
    const float g = filterDetail::integratorGain (limited, rateOrDefault (oversampledRate));
    return coefficientsFrom (limited, g, 1.0f / (1.0f + g), oversampledRate);
}

void VoiceFilter::changeModel (int newModel) noexcept
{
    newModel = std::clamp (newModel, 0, (int) numModels - 1);
    if (newModel == model)
        return;
    previousModel = model;
    model = newModel;
    fadeCounter = fadeLength;
}

float VoiceFilter::processFading (float x) noexcept
{
    const float before = runModel (previousModel, x);
    const float now = runModel (model, x);
    const float X = (1.0f - (float) fadeCounter / (float) fadeLength) * 1.5707964f;
    --fadeCounter;
    return std::cos (X) * before + std::sin (X) * now;
}

void VoiceFilter::setModelNow (int newModel) noexcept
{
    model = std::clamp (newModel, 0, (int) numModels - 1);
    previousModel = model;
    fadeCounter = 0;
}

}
