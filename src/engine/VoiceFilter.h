#pragma once

#include <array>

namespace morvane
{
// Coefficients that depend only on the cut-off and the rate, worked out once per host sample and
// shared by every filter of the voice.
struct CutoffCoefficients
{
    float g = 0.0f;              // prewarped integrator gain of the three low-pass models
    float G = 0.0f;              // g / (1 + g), each one-pole stage's share
    float inverse = 1.0f;        // 1 / (1 + g)
    float lowCoefficient = 0.0f; // one-pole coefficient of 30 Hz
    float centre = 1000.0f;      // centre of the phase chain
};

// Trapezoidal (zero-delay) one-pole low-pass stage.
inline float onePoleStage (float u, float& s, float G) noexcept
{
    const float v = (u - s) * G;
    const float y = v + s;
    s = y + v;
    return y;
}

struct LadderModel
{
    float g = 0.0f, G = 0.0f, inverse = 1.0f, k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
    float process (float x) noexcept;
};

struct DiodeModel
{
    float g = 0.0f, G = 0.0f, inverse = 1.0f, k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
    float lowState = 0.0f, lowCoefficient = 0.0f;
    float process (float x) noexcept;
};

struct StateModel
{
    float g = 0.0f, G = 0.0f, inverse = 1.0f, k = 0.0f, s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, s4 = 0.0f;
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
}
