#pragma once

#include "engine/FastMath.h"

#include <array>
#include <cmath>

namespace morvane
{
// Coefficients that depend only on the cut-off and the rate, worked out once per host sample and
// shared by every filter of the voice.
struct CutoffCoefficients
{
    float g = 0.0f;              // prewarped integrator gain of the three low-pass models
    float G = 0.0f;              // g / (1 + g), each one-pole stage's share
    float inverse = 1.0f;        // 1 / (1 + g)
    float G2 = 0.0f, G3 = 0.0f, G4 = 0.0f;
    float lowCoefficient = 0.0f; // one-pole coefficient of 30 Hz
    float centre = 1000.0f;      // centre of the phase chain
};

// The cut-off's share of each of four trapezoidal (zero-delay) one-pole low-pass stages in series,
// and its powers: the k-th stage's output is G^k times the input plus what the states alone give.
struct StageGains
{
    float G = 0.0f, G2 = 0.0f, G3 = 0.0f, G4 = 0.0f, inverse = 1.0f; // inverse = 1 - G = 1 / (1 + g)
};

struct LadderModel
{
    StageGains gains;
    float k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
    float process (float x) noexcept;
};

struct DiodeModel
{
    StageGains gains;
    float k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
    float lowState = 0.0f, lowCoefficient = 0.0f;
    float process (float x) noexcept;
};

struct StateModel
{
    StageGains gains;
    float k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
    float process (float x) noexcept;
};

struct PhaseModel
{
    float centre = 1000.0f, k = 0.0f, mix = 0.5f, notch = 1.0f, octaveOffset = 0.0f;
    float feedbackSample = 0.0f;
    std::array<float, 6> a {};
    std::array<float, 6> s {};
    bool stale = true; // corners wait for the next sample the chain actually runs

    void rebuild (float rate) noexcept;
    float process (float x) noexcept;
};

// The voice's one-channel filter: ladder, diode, state and phase models at the oversampled rate.
struct VoiceFilter
{
    enum Model { ladder, diode, state, phase, numModels };

    int model = ladder;
    int previousModel = ladder;
    int fadeLength = 1;
    int fadeCounter = 0;
    double rate = 88200.0;

    LadderModel ladderModel;
    DiodeModel diodeModel;
    StateModel stateModel;
    PhaseModel phaseModel;

    void prepare (double oversampledRate) noexcept;
    void clearSignalState() noexcept;

    static CutoffCoefficients coefficientsFor (float hz, double oversampledRate) noexcept;
    void setCutoff (float hz) noexcept { applyCutoff (coefficientsFor (hz, rate)); }
    void applyCutoff (const CutoffCoefficients& c) noexcept;

    void setResonance (float reso) noexcept;
    void setPhaseControls (float mix, float notch, float octaveOffset) noexcept;

    // Starts the equal-power crossfade from the model in force.
    void changeModel (int newModel) noexcept;
    // Takes a model at once, ending any fade.
    void setModelNow (int newModel) noexcept;

    float process (float x) noexcept;

private:
    float runModel (int m, float x) noexcept;
};

// The per-sample steps, inline so that the voice's loop runs them without calls.
namespace filterDetail
{
    // The fourth stage's output for an input of 0: what the states alone give.
    inline float predictedOutput (const StageGains& p, float s1, float s2, float s3, float s4) noexcept
    {
        return ((p.G3 * s1 + p.G2 * s2) + (p.G * s3 + s4)) * p.inverse;
    }

    // The four stages side by side rather than one after another: each output is its power of G
    // times the input plus a sum of the states alone, which is ready before the input is. The
    // input then meets one multiply and one add on its way to every stage, and a resonant step's
    // way round its feedback loop is a quarter shorter.
    inline float fourStages (float u, const StageGains& p, float& s1, float& s2, float& s3, float& s4) noexcept
    {
        const float y1 = p.G * u + p.inverse * s1;
        const float y2 = p.G2 * u + p.inverse * (p.G * s1 + s2);
        const float y3 = p.G3 * u + p.inverse * ((p.G2 * s1 + p.G * s2) + s3);
        const float y4 = p.G4 * u + predictedOutput (p, s1, s2, s3, s4);
        s1 = 2.0f * y1 - s1;
        s2 = 2.0f * y2 - s2;
        s3 = 2.0f * y3 - s3;
        s4 = 2.0f * y4 - s4;
        return y4;
    }
}

inline float LadderModel::process (float x) noexcept
{
    const float S = k == 0.0f ? 0.0f : filterDetail::predictedOutput (gains, s1, s2, s3, s4);
    // Without resonance the feedback term is exactly 0: skip its tanh.
    const float u = k == 0.0f ? x : (1.0f + 0.5f * k) * x - k * fast::tanh (S);
    return filterDetail::fourStages (u, gains, s1, s2, s3, s4);
}

inline float DiodeModel::process (float x) noexcept
{
    float u = x;
    if (k != 0.0f)
    {
        const float S = filterDetail::predictedOutput (gains, s1, s2, s3, s4);
        // The two directions limit differently.
        const float t = S >= 0.0f ? fast::tanh (S) : 0.85f * fast::tanh (S / 0.85f);
        u = x - k * t;
    }
    const float y4 = filterDetail::fourStages (u, gains, s1, s2, s3, s4);
    lowState += (y4 - lowState) * lowCoefficient;
    return (y4 - 0.6f * lowState) * 0.95f;
}

inline float StateModel::process (float x) noexcept
{
    const float u = k == 0.0f ? x : x - k * fast::tanh (s4);
    return 0.85f * filterDetail::fourStages (u, gains, s1, s2, s3, s4);
}

inline float PhaseModel::process (float x) noexcept
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

// Forced inline: the fade's second call site would otherwise keep it out of line, and with it
// every step's filter.
__attribute__ ((always_inline)) inline float VoiceFilter::runModel (int m, float x) noexcept
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

inline float VoiceFilter::process (float x) noexcept
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
