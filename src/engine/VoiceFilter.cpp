#include "engine/VoiceFilter.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr float pi = 3.1415927f;
}

void PhaseModel::rebuild (float r) noexcept
{
    const float m = std::exp2 (octaveOffset);
    const float low = 0.5f * centre * m;
    const float ratio = std::pow ((2.0f * centre * m) / std::max (1.0f, low), 0.2f);
    for (size_t i = 0; i < a.size(); ++i)
    {
        const float f = std::clamp (std::pow (ratio, (float) i) * low, 20.0f, 0.45f * r);
        const float t = std::tan (f * pi / r);
        a[i] = (1.0f - t) / (1.0f + t);
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
