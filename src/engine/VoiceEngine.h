#pragma once

#include "audio/ModFx.h"
#include "engine/DcBlocker.h"
#include "engine/DriveShaper.h"
#include "engine/EngineLfo.h"
#include "engine/EngineParameters.h"
#include "engine/HalfBandDecimator.h"
#include "engine/ModMatrix.h"
#include "engine/MultibandDrive.h"
#include "engine/NoiseSource.h"
#include "engine/PdOscillator.h"
#include "engine/PostEq.h"
#include "engine/SubOscillator.h"
#include "engine/VoiceFilter.h"

#include <juce_audio_processors/juce_audio_processors.h>
#include <juce_dsp/juce_dsp.h>

#include <array>
#include <atomic>
#include <limits>
#include <memory>
#include <vector>

namespace morvane
{
// The one monophonic stereo voice: oscillators to output stage. Everything up to the decimator
// runs at twice the host rate. Audio-thread only, apart from prepare.
class VoiceEngine
{
public:
    explicit VoiceEngine (juce::AudioProcessorValueTreeState& tree);

    void prepare (double sampleRate, int maximumBlockSize);
    int getLatencySamples() const noexcept;

    void startNote (int note, float velocity, bool legato) noexcept;
    void releaseAll() noexcept;

    // Adds the voice into buffer[startSample, startSample + numSamples); one or two channels.
    void render (juce::AudioBuffer<float>& buffer, int startSample, int numSamples) noexcept;

    bool isIdle() const noexcept { return ! ampEnvelope.isActive(); }

    // Performance inputs, written by the processor.
    std::atomic<float> modWheel { 0.0f };
    std::atomic<float> aftertouch { 0.0f };
    float pitchBendSemitones = 0.0f;
    float hostBpm = 120.0f;

    // Live output of each matrix slot, for the editor.
    std::array<std::atomic<float>, numModSlots> slotOutputs {};

    // Note state.
    double sampleRate = 44100.0;
    float inverseHostRate = 1.0f / 44100.0f;
    float currentPitch = 60.0f;
    float targetPitch = 60.0f;
    float glideCoefficient = 1.0f;
    float noteVelocity = 0.0f;
    float keyTrack = 0.0f;
    float velToFilterScale = 1.0f;
    float velToDriveScale = 1.0f;
    int currentNote = -1;
    float noteRandom = 0.0f;

    // osc 1 left, osc 1 right, osc 2 left, osc 2 right
    std::array<PdOscillator, 4> oscillators;

    juce::ADSR ampEnvelope, filterEnvelope, dcw1Envelope, dcw2Envelope;

    // Left and right; the two subs always share phase and increment.
    std::array<SubOscillator, 2> subs;
    NoisePair noise;

    // Two banks of one shaper and one filter per side; the second runs only while the drive
    // position fades, warming up the new order before the banks swap.
    enum Side { left, right };
    std::array<std::array<DriveShaper, 2>, 2> shaperBanks;
    std::array<std::array<VoiceFilter, 2>, 2> filterBanks;
    int filterModel = 0;

    enum Routing { preDrive, postFilter };
    int drivePosition = 0, previousDrivePosition = 0, positionFadeLength = 1, positionFadeCounter = 0;
    // The drive switch: off passes the stage's input. A change fades equal-power over the
    // position fade's length; the weights are those of the present oversampled step.
    bool driveOn = true, driveBypassed = false;
    int driveSwitchCounter = 0;
    float driveWet = 1.0f, driveDry = 0.0f;
    int subRouting = preDrive, previousSubRouting = preDrive, routingFadeLength = 1, routingFadeCounter = 0;

    // The feedback loop: one oversampled sample of delay through a one-pole tone filter.
    std::array<float, 2> feedbackSamples {};
    std::array<float, 2> toneStates {};

    MultibandDrive multiband; // both sides
    std::array<ModFx, 2> modFx;
    PostEq postEq; // both sides

    EngineLfo lfo;
    SmoothRandom smoothRandom;
    float beatPhase = 0.0f;
    OscillatorDrift drift;

    // 15 Hz on the oversampled mix, 10 Hz on the output, and the mono-low high-pass of the side.
    std::array<DcBlocker, 2> mixBlockers, outputBlockers;
    DcBlocker monoLowBlocker;

    // Source values of the present host sample, by source index (0 is "off").
    std::array<float, numModSources> sources {};
    // Sources that some active slot reads; the others are not evaluated.
    std::array<bool, numModSources> sourceInUse {};
    std::array<int, numModSources> usedSources {};
    int numUsedSources = 0;

    std::array<ModSlot, numModSlots> slots;
    ModSums sums;
    // The sources the sums were last worked out from; equal sources give equal sums.
    std::array<float, numModSources> evaluatedSources {};
    bool matrixStale = true;
    // The sums the sources' controls were last worked out from.
    ModSums settledSums;
    float lastLfoRateSum = 0.0f;
    float lastLfoDepthSum = 0.0f;
    float osc2PhaseSum = 0.0f;

    int antiClickLength = 1;
    int antiClickCounter = 0;

private:
    enum EnvelopeGroup { ampGroup, filterGroup, dcw1Group, dcw2Group, numGroups };

    // The matrix sums of the chain's destinations, for one host sample.
    struct ChainSums
    {
        float drive = 0.0f, cutoff = 0.0f, filterEnv = 0.0f, resonance = 0.0f, phaseMix = 0.0f, phaseNotch = 0.0f;
        float feedback = 0.0f, mbdLow = 0.0f, mbdMid = 0.0f, mbdHigh = 0.0f;
    };

    struct EnvelopePointers
    {
        std::atomic<float>* attack = nullptr;
        std::atomic<float>* decay = nullptr;
        std::atomic<float>* sustain = nullptr;
        std::atomic<float>* release = nullptr;
    };

    struct SlotPointers
    {
        std::atomic<float>* source = nullptr;
        std::atomic<float>* destination = nullptr;
        std::atomic<float>* amount = nullptr;
        std::atomic<float>* curve = nullptr;
    };

    juce::SmoothedValue<float>& sm (S s) noexcept { return linear[(size_t) s]; }

    void setSmootherTargets() noexcept;
    void jumpSmoothersToTargets (bool includeSlowFrequencies) noexcept;
    void readModSlots() noexcept;
    juce::ADSR::Parameters readGroup (EnvelopeGroup g) const noexcept;
    void applyGroup (EnvelopeGroup g, const juce::ADSR::Parameters& p) noexcept;
    void updateEnvelopeParameters() noexcept;
    void applySettingsAtNote() noexcept;
    void updateDiscreteSettings() noexcept;
    void applyWaves() noexcept;
    void updateTargetPitch() noexcept;
    void updateGlideCoefficient() noexcept;
    void resetPhases (float phaseValue) noexcept;
    void updateLfoRate (float rate, float plainRate, float phaseDegrees) noexcept;
    void setFilterModelNow (int model) noexcept;
    void applyStageSettingsAtNote() noexcept;
    void updateStageSettings() noexcept;
    void changeDrivePosition (int position) noexcept;
    void finishDrivePositionFade() noexcept;
    void stepDriveSwitch() noexcept;
    void settleDriveSwitch() noexcept;
    float subRatio() noexcept;
    // The multiband drive's settings at a host sample whose controls were worked out again, and
    // their application. Applying the same settings twice changes nothing, so a run of the drive
    // goes on past a host sample whose settings are those in force.
    struct MultibandSettings
    {
        bool enabled = false, heard = false;
        float mix = 0.0f, lowHz = 0.0f, highHz = 0.0f;
        std::array<float, 3> gains {};
        std::array<int, 3> modes {};
        bool operator== (const MultibandSettings& o) const noexcept
        {
            return enabled == o.enabled && heard == o.heard && mix == o.mix && lowHz == o.lowHz && highHz == o.highHz
                && gains == o.gains && modes == o.modes;
        }
    };
    MultibandSettings multibandSettings (int voiceDriveMode, const ChainSums& chainSums) noexcept;
    void applyMultiband (const MultibandSettings& settings) noexcept;
    MultibandSettings multibandApplied;
    bool multibandAppliedValid = false; // within a chunk: notes and resets change the drive too
    float driveAndFilter (int bank, int side, float x, int position) noexcept;
    float driveAndFilterFading (int side, float x, float leaving, float entering) noexcept;

    void renderChunk (juce::AudioBuffer<float>& buffer, int start, int n) noexcept;
    void updatePairLocks() noexcept;
    void updateChainLock (bool sidesAlike) noexcept;
    void copyChainToRight() noexcept;
    bool chainSidesEqual() const noexcept;
    void outputStage (juce::AudioBuffer<float>& buffer, int start, int n) noexcept;

    juce::AudioProcessorValueTreeState* tree = nullptr;
    ParamCache params;
    std::array<EnvelopePointers, numGroups> groups {};
    std::array<juce::ADSR::Parameters, numGroups> appliedGroups {};
    std::array<SlotPointers, numModSlots> slotPointers {};
    std::atomic<float>* lfo1ShapeValue = nullptr;
    std::atomic<float>* lfo1SyncValue = nullptr;
    juce::NormalisableRange<float> lfoRateRange { 0.05f, 20.0f };
    float lastPlainLfoRate = -1.0f;
    float lastNormalisedLfoRate = 0.5f;
    // The LFO's rate, plain rate and phase last handed to it; the shape and sync change only
    // between chunks, so the same three give the same LFO.
    std::array<float, 3> appliedLfoArguments {};

    std::array<juce::SmoothedValue<float>, (size_t) S::count> linear;
    juce::SmoothedValue<float, juce::ValueSmoothingTypes::Multiplicative> cutoff { 20000.0f };
    juce::SmoothedValue<float, juce::ValueSmoothingTypes::Multiplicative> lowCross { 200.0f };
    juce::SmoothedValue<float, juce::ValueSmoothingTypes::Multiplicative> highCross { 2200.0f };
    juce::SmoothedValue<float, juce::ValueSmoothingTypes::Multiplicative> notchHz { 800.0f };

    juce::Random noteRandomGenerator { 0x51A7E11 };

    // Lends the 2x block and tells the latency; its downward filter runs as `decimator`.
    std::unique_ptr<juce::dsp::Oversampling<float>> oversampler;
    HalfBandDecimator decimator;
    juce::AudioBuffer<float> dryBuffer;
    std::array<float*, 2> oversampledChannels {};
    std::vector<float> gainBuffer, noisePostLeft, noisePostRight;
    int maxChunk = 64;

    int mode = 0;
    int detuneMode = 0;
    bool autoMakeup = false;

    // Per-sample drive values of the present host sample.
    float driveMakeup = 1.0f;
    float driveMixAmount = 1.0f;
    float filterWetAmount = 1.0f;

    // Controls of the host-rate output stage, worked out in the main loop for each host sample.
    struct OutputControls
    {
        bool eqEnabled = false;
        float tilt = 0.0f, notchHz = 800.0f, notchDepth = 0.0f;
        bool fxEnabled = false;
        int fxMode = 0;
        float fxRate = 0.6f, fxDepth = 0.5f, fxFeedback = 0.0f, fxMix = 0.5f;
    };
    // Written, and handed to the Mod FX pair and the EQs, only for the host samples whose controls
    // were worked out again (the chunk's first always is).
    std::vector<OutputControls> outputControls;
    void applyModFxControls (const OutputControls& controls) noexcept;
    void applyEqControls (const OutputControls& controls) noexcept;

    // A power of ten recomputed only when its exponent moves: static patches pay no pow.
    struct CachedExp
    {
        float key = std::numeric_limits<float>::quiet_NaN();
        float value = 1.0f;
        template <typename Fn> float get (float k, Fn&& compute) noexcept
        {
            if (! (k == key))
            {
                key = k;
                value = compute (k);
            }
            return value;
        }
    };
    CachedExp subRatioCache, driveGainCache, makeupCache, toneCache;
    CachedExp pitchCache, detuneCache, detuneLowCache, cutoffOctaveCache, monoLowCache;
    // The filters' cut-off coefficients, worked out again only when the cut-off moves.
    float cutoffKey = std::numeric_limits<float>::quiet_NaN();
    CutoffCoefficients cutoffCoefficients {};
    // The filter controls last handed to the filters; unchanged ones are not handed again.
    struct FilterControls
    {
        float reso, mix, notch, stereo;
        bool operator== (const FilterControls& o) const noexcept
        {
            return reso == o.reso && mix == o.mix && notch == o.notch && stereo == o.stereo;
        }
    };
    FilterControls appliedFilterControls { -1.0f, -1.0f, -1.0f, -1.0f };

    // Control values that move only with a smoother or a matrix sum, for the present host sample:
    // those of the sources and the output stage, and those of the chain from the mix blocker to
    // the feedback's tone filter.
    struct SlowControls
    {
        float pitchRatio = 1.0f;
        float beat = 0.0f, w = 1.0f, detuneOffset = 0.0f, detuneRatio = 1.0f, detuneLowRatio = 1.0f;
        float driftAmount = 0.0f, tune1 = 1.0f, tune2 = 1.0f;
        float gain1 = 0.0f, gain2 = 0.0f, gainSub = 0.0f;
        bool audible1 = false, audible2 = false;
        OutputControls output;
        float outGain = 1.0f, ampFactor = 1.0f;
        float noisePreGain = 0.0f, noisePostGain = 0.0f;
        bool noiseHeard = false;
        float send = 0.0f, postShare = 1.0f;
    };
    struct ChainControls
    {
        float envelopeSemitones = 0.0f, cutoffSemitones = 0.0f, cutoffHz = 20000.0f;
        FilterControls filter { 0.0f, 0.0f, 0.0f, 0.0f };
        float feedbackGain = 0.0f, toneCoefficient = 0.0f;
        bool feedbackPre = true;
    };
    SlowControls slow;
    ChainControls chainSlow;
    bool anyControlSmoothing() const noexcept;
    void updateSlowControls (bool all) noexcept;
    bool onlyChainMoved() const noexcept;

    // The sources and the chain run as two loops over each group of host samples, so that the
    // oscillators' waves of a whole group can be worked out in one vectorised pass between them.
    // What the chain's loop needs of each host sample is kept here by the first: the matrix sums
    // of the chain's destinations (when the controls were worked out again), the filter envelope,
    // and whether the sources let the two sides of the chain run as one.
    struct ChainStep
    {
        float filterEnvValue = 0.0f;
        bool controlsUpdated = false;
        // The sources' and output's controls, and the chain's other than the cut-off, each worked
        // out again only when a smoother moves, the chunk starts, or one of their own matrix sums
        // has changed: otherwise they stand as they were.
        bool settingsMoved = false, chainMoved = false;
        bool sourcesAlike = false;
        ChainSums sums;
    };
    std::vector<ChainStep> chainSteps;
    ChainSums settledChainSums; // those the chain's controls beside the cut-off were last worked out from
    // The sub's shares before the drive and after the multiband drive, per oversampled sample.
    std::vector<float> subSends, subPosts;
    // One group of oversampled steps of the sources: each oscillator's deferred waves and its
    // values, the mix's gains and the noise that joins it.
    static constexpr int sourceGroup = PdOscillator::Run::capacity;
    struct SourceGroup
    {
        std::array<PdOscillator::Run, 4> runs;
        PdOscillator::Run subRun;
        std::array<std::array<float, sourceGroup>, 4> values {};
        std::array<float, sourceGroup> subValues {};
        std::array<std::array<bool, sourceGroup>, 2> locked {};
        std::array<int, 2> lockedSteps {}; // how many of the group's steps each pair was locked
        std::array<float, sourceGroup> gain1 {}, gain2 {}, gainSub {}, noiseLeft {}, noiseRight {};
        std::array<float, sourceGroup> sendShare {}, postShare {};
    };
    SourceGroup sourceGroupState;
    void mixSourceGroup (int firstStep, int count) noexcept;
    void renderSources (int first, int end, bool controlsMove, float chunkSubRatio) noexcept;
    void renderChain (int first, int end, int leftMode, bool multibandIdle) noexcept;
    void updateChainControls (int leftMode, const ChainSums& chainSums) noexcept;
    bool cutoffApplied = false;
    // Each host sample's cut-off and its filters' gains over the group, worked out before the
    // chain's loop: none of it waits for the signal, and inside the loop each step's way round
    // the feedback would wait for its divisions.
    struct GroupCutoffs
    {
        static constexpr int size = sourceGroup / 2;
        static_assert (size % 4 == 0);
        std::array<float, size> hz {}, limited {}, g {}, inverse {};
    };
    GroupCutoffs groupCutoffs;
    void prepareCutoffs (int first, int end) noexcept;

    // Each oscillator's right side, while it runs exactly as its left, is not run at all: the
    // left's output stands for both, and its state is copied over when the two part.
    std::array<bool, 2> pairLocked {};
    // Likewise the right side of the chain from the mix blocker to the feedback's tone filter,
    // while both sides get the same signal and hold the same state; the lock is tried once a chunk.
    bool chainLocked = false;
    bool chainCheckDue = true;
    // The multiband drive runs behind the chain's loop, over the whole group, since nothing in the
    // loop waits for it. It keeps its own lock: its right side stands still while the chain's
    // sides were locked at a step and its own sides hold the same bytes.
    std::array<bool, sourceGroup> chainLockedSteps {};
    bool multibandLocked = false;
    bool multibandCheckDue = true;
    bool multibandStaysOff (int first, int end) const noexcept;
    void renderMultiband (int first, int end, int leftMode) noexcept;
    std::array<CachedExp, 3> bandGainCaches;
    int makeupCacheMode = -1;
};
}
