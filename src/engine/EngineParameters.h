#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <atomic>

namespace morvane
{
// The raw parameters the engine reads, in the order they are fetched.
enum class P
{
    phaseMode, mode, detuneMode, stereoMode, stereoWidth, osc1Wave, osc2Wave, subWave, subMode, subOctave,
    subSemitone, subFine, syncOsc1, syncOsc2, driveMode, drivePosition, driveAutoMakeup, filterModel,
    noiseColour, subRouting, velToFilterEnv, velToDrive, osc2PhaseOffset, lfo1Retrig, glideTime, octave,
    osc1Level, osc2Level, subLevel, subDriveSend, drive, osc2Detune, osc2DetuneHz, osc1DcwDepth,
    osc2DcwDepth, oscDrift, subDcwDepth, filterCutoff, filterReso, filterEnvAmount, outputGain, lfo1Rate,
    lfo1Depth, lfo1Phase, noiseLevel, noiseRouting, osc1PulseWidth, osc2PulseWidth, osc1Semitone, osc1Fine,
    osc2Semitone, osc2Fine, driveGain, driveMix, filterEnabled, monoLowEnabled, monoLowFreq, reeseBeat,
    reeseSpread, reeseLock, pdMorphAmount, phaseMix, phaseStereo, phaseNotch, feedbackAmount, feedbackTone,
    feedbackPosition, mbdEnable, mbdMix, mbdLowAmount, mbdMidAmount, mbdHighAmount, mbdLowCross,
    mbdHighCross, mbdLowMode, mbdMidMode, mbdHighMode, modFxEnable, modFxMode, modFxRate, modFxDepth,
    modFxFeedback, modFxMix, postEqEnable, postEqTilt, postEqNotchHz, postEqNotchDepth, driveOn,
    count
};

inline constexpr int numCachedParameters = (int) P::count;
static_assert (numCachedParameters == 88);

const char* cachedParameterId (P p) noexcept;

// Pointers to the tree's atomics, filled in prepare. An absent parameter reads as 0.
struct ParamCache
{
    std::array<std::atomic<float>*, (size_t) P::count> values {};

    void fill (juce::AudioProcessorValueTreeState& tree);

    float get (P p) const noexcept
    {
        const auto* v = values[(size_t) p];
        return v != nullptr ? v->load (std::memory_order_relaxed) : 0.0f;
    }

    int index (P p) const noexcept { return (int) get (p); }
    bool on (P p) const noexcept { return get (p) > 0.5f; }
};

// Linear 5 ms smoothers of the engine, one per control value.
enum class S
{
    osc1Gain, osc2Gain, subGain, driveDb, detuneCents, detuneHz, stereoWidth, osc1Dcw, osc2Dcw, drift,
    subDcw, resonance, envAmount, outputGain, modWheel, aftertouch, bend, lfoRate, lfoDepth, lfoPhase,
    noiseGain, noiseRouting, osc1Width, osc2Width, osc1Tune, osc2Tune, makeupGain, driveMix, filterWet,
    subSend, monoLowOn, monoLowHz, beat, spread, morph, phaseMix, phaseStereo, phaseNotch, feedback,
    feedbackTone, mbdMix, mbdLow, mbdMid, mbdHigh, modFxRate, modFxDepth, modFxFeedback, modFxMix, tilt,
    notchDepth, filterAttack, filterDecay, filterRelease, filterSustain,
    count
};

inline constexpr int numLinearSmoothers = (int) S::count;
static_assert (numLinearSmoothers == 54);

// dB to gain, 0 at or below the floor.
inline float decibelsToGain (float db, float floorDb) noexcept
{
    return db > floorDb ? std::pow (10.0f, db * 0.05f) : 0.0f;
}
}
