#pragma once

#include "engine/FastMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane
{
// The cut-off's share of each of four trapezoidal (zero-delay) one-pole low-pass stages in series.
// The k-th stage's output is G^k times the input plus a sum of the states alone; the four stages
// run as the four lanes of one vector, their states in the same lanes.
struct StageGains
{
    fast::Lanes powers { 0.0f, 0.0f, 0.0f, 0.0f }; // G, G^2, G^3, G^4
    fast::Lanes fromState[4] {};                   // state j's share of each stage k, (1 - G) G^(k - j)

    void set (float G, float inverse) noexcept
    {
        const float G2 = G * G, G3 = G2 * G;
        const fast::Lanes base { 1.0f, G, G2, G3 };
        powers = G * base;
        fromState[0] = inverse * base;
        // Each later state's shares are the first's, moved up a stage (inverse is positive, so
        // the zeros moved in are those the products would give).
        const fast::Lanes zero {};
        fromState[1] = __builtin_shufflevector (zero, fromState[0], 0, 4, 5, 6);
        fromState[2] = __builtin_shufflevector (zero, fromState[0], 0, 1, 4, 5);
        fromState[3] = __builtin_shufflevector (zero, fromState[0], 0, 1, 2, 4);
    }
};

// Coefficients that depend only on the cut-off and the rate, worked out once per host sample and
// shared by every filter of the voice.
struct CutoffCoefficients
{
    float g = 0.0f;              // prewarped integrator gain of the three low-pass models
    StageGains stages;           // the four low-pass stages' shares, from G = g / (1 + g)
    float lowCoefficient = 0.0f; // one-pole coefficient of 30 Hz
    float centre = 1000.0f;      // centre of the phase chain
};

struct LadderModel
{
    fast::Lanes stages { 0.0f, 0.0f, 0.0f, 0.0f }; // the four stages' states
    float k = 0.0f;
    float inputGain = 1.0f; // 1 + k / 2, made with k
    float process (float x, const StageGains& gains) noexcept;
};

struct DiodeModel
{
    fast::Lanes stages { 0.0f, 0.0f, 0.0f, 0.0f }; // the four stages' states
    float k = 0.0f;
    float lowState = 0.0f, lowCoefficient = 0.0f;
    float process (float x, const StageGains& gains) noexcept;
};

struct StateModel
{
    fast::Lanes stages { 0.0f, 0.0f, 0.0f, 0.0f }; // the four stages' states
    float k = 0.0f;
    float process (float x, const StageGains& gains) noexcept;
};

struct PhaseModel
{
    float centre = 1000.0f, k = 0.0f, mix = 0.5f, notch = 1.0f, octaveOffset = 0.0f;
    float feedbackSample = 0.0f;
    std::array<float, 6> a {};
    std::array<float, 6> s {};
    bool stale = true; // corners wait for the next sample the chain actually runs
    float spreadOffset = 0.0f, spread = 1.0f; // 2^octaveOffset, kept while the offset stands

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

    StageGains stageGains; // the cut-off's, shared by the three low-pass models
    LadderModel ladderModel;
    DiodeModel diodeModel;
    StateModel stateModel;
    PhaseModel phaseModel;

    void prepare (double oversampledRate) noexcept;
    void clearSignalState() noexcept;

    static CutoffCoefficients coefficientsFor (float hz, double oversampledRate) noexcept;
    // The same in two parts, for a caller that works out the gains of many cut-offs at once: the
    // cut-off held to what the rate allows, then the coefficients from its gains.
    static float limitCutoff (float hz, double oversampledRate) noexcept;
    static CutoffCoefficients coefficientsFrom (float limited, float g, float inverse, double oversampledRate) noexcept;
    static float rateOrDefault (double oversampledRate) noexcept { return (float) (oversampledRate > 0.0 ? oversampledRate : 44100.0); }
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
    float processFading (float x) noexcept;
};

// The per-sample steps, inline so that the voice's loop runs them without calls.
namespace filterDetail
{
    // The prewarped integrator gain tan(pi f / rate) of a cut-off held under 0.45 of the rate, a
    // float or a vector of them. The angle stays under a quarter turn: sine over cosine without
    // the folding that fast::tan does for any angle, to the same bits.
    template <typename T>
    inline T integratorGain (T limited, float rate) noexcept
    {
        const T turns = limited * 3.1415927f / rate * 0.15915494f;
        return fast::detail::sinQuarter (turns) / fast::detail::sinQuarter (0.25f - turns);
    }

    // What the states alone give each stage: its output for an input of 0. Lane 3 is the
    // fourth stage's, the prediction the resonance feeds back.
    inline fast::Lanes fromStates (const StageGains& p, fast::Lanes s) noexcept
    {
        using fast::broadcast;
        return (broadcast<0> (s) * p.fromState[0] + broadcast<1> (s) * p.fromState[1])
             + (broadcast<2> (s) * p.fromState[2] + broadcast<3> (s) * p.fromState[3]);
    }

    // The four stages side by side rather than one after another, given what the states alone
    // give: the input meets one multiply and one add on its way to every stage, and a resonant
    // step's way round its feedback loop is a quarter shorter.
    inline float fourStages (float u, const StageGains& p, fast::Lanes fromStates, fast::Lanes& s) noexcept
    {
        const fast::Lanes y = u * p.powers + fromStates;
        s = 2.0f * y - s;
        return y[3];
    }
}

inline float LadderModel::process (float x, const StageGains& gains) noexcept
{
    const auto c = filterDetail::fromStates (gains, stages);
    // Without resonance the feedback term is exactly 0: skip its tanh.
    const float u = k == 0.0f ? x : inputGain * x - k * fast::tanh (c[3]);
    return filterDetail::fourStages (u, gains, c, stages);
}

inline float DiodeModel::process (float x, const StageGains& gains) noexcept
{
    const auto c = filterDetail::fromStates (gains, stages);
    float u = x;
    if (k != 0.0f)
    {
        const float S = c[3];
        // The two directions limit differently.
        const float t = S >= 0.0f ? fast::tanh (S) : 0.85f * fast::tanh (S / 0.85f);
        u = x - k * t;
    }
    const float y4 = filterDetail::fourStages (u, gains, c, stages);
    lowState += (y4 - lowState) * lowCoefficient;
    return (y4 - 0.6f * lowState) * 0.95f;
}

inline float StateModel::process (float x, const StageGains& gains) noexcept
{
    const auto c = filterDetail::fromStates (gains, stages);
    const float u = k == 0.0f ? x : x - k * fast::tanh (stages[3]);
    return 0.85f * filterDetail::fourStages (u, gains, c, stages);
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

inline float VoiceFilter::limitCutoff (float hz, double oversampledRate) noexcept
{
    return std::clamp (hz, 20.0f, 0.45f * rateOrDefault (oversampledRate));
}

// Inline, as the next: with the cut-off moving, the voice works them out on every host sample.
inline CutoffCoefficients VoiceFilter::coefficientsFrom (float limited, float g, float inverse, double oversampledRate) noexcept
{
    StageGains stages;
    stages.set (g * inverse, inverse);
    return { g, stages, std::clamp (188.49556f / rateOrDefault (oversampledRate), 0.0f, 1.0f), limited };
}

inline void VoiceFilter::applyCutoff (const CutoffCoefficients& c) noexcept
{
    stageGains = c.stages;
    diodeModel.lowCoefficient = c.lowCoefficient;
    if (c.centre != phaseModel.centre)
    {
        phaseModel.centre = c.centre;
        phaseModel.stale = true;
    }
}

inline void VoiceFilter::setResonance (float reso) noexcept
{
    ladderModel.k = reso * 3.95f;
    ladderModel.inputGain = 1.0f + 0.5f * ladderModel.k;
    diodeModel.k = reso * 4.2f;
    stateModel.k = reso * 0.95f;
    phaseModel.k = reso * 0.95f;
}

inline void VoiceFilter::setPhaseControls (float mix, float notch, float octaveOffset) noexcept
{
    phaseModel.mix = mix;
    phaseModel.notch = notch;
    if (std::abs (octaveOffset - phaseModel.octaveOffset) >= 0.00001f)
    {
        phaseModel.octaveOffset = octaveOffset;
        phaseModel.stale = true;
    }
}

// Forced inline: the fade's second call site would otherwise keep it out of line, and with it
// every step's filter.
__attribute__ ((always_inline)) inline float VoiceFilter::runModel (int m, float x) noexcept
{
    switch (m)
    {
        case ladder: return ladderModel.process (x, stageGains);
        case diode:  return diodeModel.process (x, stageGains);
        case state:  return stateModel.process (x, stageGains);
        default:
            if (phaseModel.stale)
                phaseModel.rebuild ((float) rate);
            return phaseModel.process (x);
    }
}

// Inlined into the voice's step; the rare fade runs out of line.
__attribute__ ((always_inline)) inline float VoiceFilter::process (float x) noexcept
{
    return fadeCounter > 0 ? processFading (x) : runModel (model, x);
}
}
