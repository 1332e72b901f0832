#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

namespace morvane
{
// Polynomial band-limited step: the correction for a unit step at phase 0 of an oscillator
// advancing by dt per sample. Scale by the step's full height.
float blep (float t, float dt) noexcept;

// One phase-distortion voice oscillator at the oversampled rate, with its own DCW envelope.
struct PdOscillator
{
    double sampleRate = 88200.0;
    float inverseRate = 1.0f / 88200.0f;

    float phase = 0.0f;
    float increment = 0.0f;
    float frequency = 0.0f;
    float dcwDepth = 0.0f;
    float rmsGain = 1.0f;
    int wave = 0;
    juce::ADSR dcwEnvelope;
    float pulseWidth = 0.5f;
    float morph = 0.0f;

    bool syncEnabled = false;
    const PdOscillator* syncSource = nullptr;
    bool wrapped = false;
    float wrapFraction = 0.0f;
    float pendingStep = 0.0f;

    int fadeLength = 1;
    int fadeCounter = 0;
    float oldPhase = 0.0f;
    float oldDcw = 0.0f;

    float dcwValue = 0.0f;

    void prepare (double oversampledRate) noexcept;
    void setWave (int newWave) noexcept;

    // Keeps running on the old phase while the new one fades in, hiding the jump.
    void resetPhase (float newPhase) noexcept;

    float process() noexcept;

private:
    float shapeAt (int w, float p, float dcw) const noexcept;
};
}
