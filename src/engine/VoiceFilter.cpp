#include "engine/VoiceFilter.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    constexpr float pi = 3.1415927f;

    // Prediction of the fourth stage's output from the present states.
    inline float predictedOutput (float G, float inverse, float s1, float s2, float s3, float s4) noexcept
    {
        return (G * G * G * s1 + G * G * s2 + G * s3 + s4) * inverse;
    }

    inline float fourStages (float u, float G, float& s1, float& s2, float& s3, float& s4) noexcept
    {
        u = onePoleStage (u, s1, G);
        u = onePoleStage (u, s2, G);
        u = onePoleStage (u, s3, G);
        return onePoleStage (u, s4, G);
    }
}

float LadderModel::process (float x) noexcept
{
    const float S = k == 0.0f ? 0.0f : predictedOutput (G, inverse, s1, s2, s3, s4);
    // Without resonance the feedback term is exactly 0: skip its tanh.
    const float u = k == 0.0f ? x : (1.0f + 0.5f * k) * x - k * fast::tanh (S);
    return fourStages (u, G, s1, s2, s3, s4);
}

float DiodeModel::process (float x) noexcept
{
    float u = x;
    if (k != 0.0f)
    {
        const float S = predictedOutput (G, inverse, s1, s2, s3, s4);
        // The two directions limit differently.
        const float t = S >= 0.0f ? fast::tanh (S) : 0.85f * fast::tanh (S / 0.85f);
        u = x - k * t;
    }
    const float y4 = fourStages (u, G, s1, s2, s3, s4);
    lowState += (y4 - lowState) * lowCoefficient;
    return (y4 - 0.6f * lowState) * 0.95f;
}

float StateModel::process (float x) noexcept
{
    const float u = k == 0.0f ? x : x - k * fast::tanh (s4);
    return 0.85f * fourStages (u, G, s1, s2, s3, s4);
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

float PhaseModel::process (float x) noexcept
{
    float u = x - k * feedbackSample;
    for (size_t i = 0; i < a.size(); ++i)
    {
        const float y = s[i] - a[i] * u;
        s[i] = a[i] * y + u;
        u = y;
    }
    feedbackSample = u;
    const float wet = (u - x) * notch + x;
    return (wet - x) * mix + x;
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
    ladderModel.s1 = ladderModel.s2 = ladderModel.s3 = ladderModel.s4 = 0.0f;
    diodeModel.s1 = diodeModel.s2 = diodeModel.s3 = diodeModel.s4 = 0.0f;
    diodeModel.lowState = 0.0f;
    stateModel.s1 = stateModel.s2 = stateModel.s3 = stateModel.s4 = 0.0f;
    phaseModel.s.fill (0.0f);
    phaseModel.feedbackSample = 0.0f;
}

CutoffCoefficients VoiceFilter::coefficientsFor (float hz, double oversampledRate) noexcept
{
    const float r = (float) (oversampledRate > 0.0 ? oversampledRate : 44100.0);
    const float limited = std::clamp (hz, 20.0f, 0.45f * r);
    const float g = fast::tan (limited * pi / r);
    return { g, g / (1.0f + g), 1.0f / (1.0f + g), std::clamp (188.49556f / r, 0.0f, 1.0f), limited };
}

void VoiceFilter::applyCutoff (const CutoffCoefficients& c) noexcept
{
    ladderModel.g = diodeModel.g = stateModel.g = c.g;
    ladderModel.G = diodeModel.G = stateModel.G = c.G;
    ladderModel.inverse = diodeModel.inverse = stateModel.inverse = c.inverse;
    diodeModel.lowCoefficient = c.lowCoefficient;
    if (c.centre != phaseModel.centre)
    {
        phaseModel.centre = c.centre;
        phaseModel.stale = true;
    }
}

void VoiceFilter::setResonance (float reso) noexcept
{
    ladderModel.k = reso * 3.95f;
    diodeModel.k = reso * 4.2f;
    stateModel.k = reso * 0.95f;
    phaseModel.k = reso * 0.95f;
}

void VoiceFilter::setPhaseControls (float mix, float notch, float octaveOffset) noexcept
{
    phaseModel.mix = mix;
    phaseModel.notch = notch;
    if (std::abs (octaveOffset - phaseModel.octaveOffset) >= 0.00001f)
    {
        phaseModel.octaveOffset = octaveOffset;
        phaseModel.stale = true;
    }
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

void VoiceFilter::setModelNow (int newModel) noexcept
{
    model = std::clamp (newModel, 0, (int) numModels - 1);
    previousModel = model;
    fadeCounter = 0;
}

float VoiceFilter::runModel (int m, float x) noexcept
{
    switch (m)
    {
        case ladder: return ladderModel.process (x);
        case diode:  return diodeModel.process (x);
        case state:  return stateModel.process (x);
        default:
            if (phaseModel.stale)
                phaseModel.rebuild ((float) rate);
            return phaseModel.process (x);
    }
}

float VoiceFilter::process (float x) noexcept
{
    if (fadeCounter > 0)
    {
        const float before = runModel (previousModel, x);
        const float now = runModel (model, x);
        const float X = (1.0f - (float) fadeCounter / (float) fadeLength) * 1.5707964f;
        --fadeCounter;
        return std::cos (X) * before + std::sin (X) * now;
    }
    return runModel (model, x);
}
}
