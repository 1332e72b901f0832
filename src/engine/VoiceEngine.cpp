#include "engine/VoiceEngine.h"

#include "engine/WaveShape.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    double positiveRate (double rate) noexcept { return rate > 0.0 ? rate : 44100.0; }

    bool sameParameters (const juce::ADSR::Parameters& a, const juce::ADSR::Parameters& b) noexcept
    {
        return a.attack == b.attack && a.decay == b.decay && a.sustain == b.sustain && a.release == b.release;
    }

    float load (const std::atomic<float>* v) noexcept
    {
        return v != nullptr ? v->load (std::memory_order_relaxed) : 0.0f;
    }
}

VoiceEngine::VoiceEngine (juce::AudioProcessorValueTreeState& t) : tree (&t)
{
    // Built here so that the audio thread never pays for the first use.
    waveRmsGain();
    for (auto& s : slotOutputs)
        s.store (0.0f);
}

int VoiceEngine::getLatencySamples() const noexcept
{
    return oversampler != nullptr ? (int) oversampler->getLatencyInSamples() : 0;
}

void VoiceEngine::prepare (double newSampleRate, int maximumBlockSize)
{
    sampleRate = newSampleRate;
    const double hostRate = positiveRate (sampleRate);
    inverseHostRate = (float) (1.0 / hostRate);
    const double overRate = sampleRate * 2.0;

    for (auto& osc : oscillators)
        osc.prepare (overRate);

    noteRandomGenerator.setSeed (0x51A7E11);
    noteRandom = 0.0f;
    smoothRandom.prepare (sampleRate);
    beatPhase = 0.0f;
    cutoffKey = std::numeric_limits<float>::quiet_NaN();
    cutoffApplied = false;
    appliedFilterControls = { -1.0f, -1.0f, -1.0f, -1.0f };
    pairLocked = {};
    matrixStale = true;
    // Cached values may hang on the rate.
    for (auto* cache : { &subRatioCache, &driveGainCache, &makeupCache, &toneCache, &pitchCache, &detuneCache,
                         &detuneLowCache, &cutoffOctaveCache, &monoLowCache })
        *cache = {};
    drift.prepare (sampleRate);

    for (auto& b : mixBlockers)
        b.prepare (15.0f, overRate);
    for (auto& b : outputBlockers)
        b.prepare (10.0f, sampleRate);
    monoLowBlocker.prepare (120.0f, sampleRate);

    for (auto& sub : subs)
        sub.prepare (overRate);
    noise.prepare (sampleRate, 0xA1B2C3D4u, 0xD4C3B2A1u);

    for (auto& bank : shaperBanks)
        for (auto& shaper : bank)
            shaper.prepare (overRate);
    for (auto& bank : filterBanks)
        for (auto& filter : bank)
            filter.prepare (overRate);
    positionFadeLength = routingFadeLength = std::max ((int) (positiveRate (overRate) * 0.005 + 0.5), 1);
    positionFadeCounter = routingFadeCounter = driveSwitchCounter = 0;
    feedbackSamples = {};
    toneStates = {};

    multiband.prepare (overRate);
    // The right side starts as a bit copy of the left, so that it compares equal while it runs alike.
    copyChainToRight();
    chainLocked = false;
    multiband.copyLeftToRight();
    multibandLocked = false;
    postEq.prepare (sampleRate);
    for (auto& unit : modFx)
        unit.prepare (sampleRate);
    modFx[Side::left].lfoOffset = 0.0f;
    modFx[Side::right].lfoOffset = 1.5707964f;

    // Sync partners: each oscillator listens to the other pair's instance on its side.
    oscillators[1].formPartner = &oscillators[0];
    oscillators[3].formPartner = &oscillators[2];
    oscillators[0].syncSource = &oscillators[2];
    oscillators[1].syncSource = &oscillators[3];
    oscillators[2].syncSource = &oscillators[0];
    oscillators[3].syncSource = &oscillators[1];

    for (auto* env : { &ampEnvelope, &filterEnvelope, &dcw1Envelope, &dcw2Envelope })
        env->setSampleRate (hostRate);

    lfo.prepare (sampleRate);

    maxChunk = std::max (maximumBlockSize, 64);
    oversampler = std::make_unique<juce::dsp::Oversampling<float>> (
        2, 1, juce::dsp::Oversampling<float>::filterHalfBandPolyphaseIIR, true, false);
    oversampler->initProcessing ((size_t) maxChunk);
    oversampler->reset();
    decimator.prepare();
    dryBuffer.setSize (2, maxChunk, false, true, false);
    // The upward path only lends the block the voice is written into. On silence from a reset
    // state it leaves its filters at 0, so one pass here gives the block for good.
    {
        dryBuffer.clear();
        juce::dsp::AudioBlock<float> dryBlock (dryBuffer);
        auto upBlock = oversampler->processSamplesUp (dryBlock);
        oversampledChannels = { upBlock.getChannelPointer (0), upBlock.getChannelPointer (1) };
    }

    gainBuffer.assign ((size_t) maxChunk, 0.0f);
    noisePostLeft.assign ((size_t) maxChunk, 0.0f);
    noisePostRight.assign ((size_t) maxChunk, 0.0f);
    outputControls.assign ((size_t) maxChunk, OutputControls {});
    chainSteps.assign ((size_t) maxChunk, ChainStep {});
    subSends.assign ((size_t) (2 * maxChunk), 0.0f);
    subPosts.assign ((size_t) (2 * maxChunk), 0.0f);
    antiClickLength = std::max ((int) (sampleRate * 0.003 + 0.5), 1);
    antiClickCounter = 0;

    params.fill (*tree);
    const char* prefixes[numGroups] = { "amp", "filter", "osc1Dcw", "osc2Dcw" };
    for (int g = 0; g < numGroups; ++g)
    {
        const juce::String p (prefixes[g]);
        groups[(size_t) g] = { tree->getRawParameterValue (p + "Attack"), tree->getRawParameterValue (p + "Decay"),
                               tree->getRawParameterValue (p + "Sustain"), tree->getRawParameterValue (p + "Release") };
        appliedGroups[(size_t) g] = { -1.0f, -1.0f, -1.0f, -1.0f };
    }
    for (int slot = 0; slot < numModSlots; ++slot)
    {
        const juce::String n (slot + 1);
        slotPointers[(size_t) slot] = { tree->getRawParameterValue ("mod" + n + "Source"),
                                        tree->getRawParameterValue ("mod" + n + "Dest"),
                                        tree->getRawParameterValue ("mod" + n + "Amount"),
                                        tree->getRawParameterValue ("matrix" + n + "Curve") };
    }
    lfo1ShapeValue = tree->getRawParameterValue ("lfo1Shape");
    lfo1SyncValue = tree->getRawParameterValue ("lfo1Sync");
    if (auto* rate = dynamic_cast<juce::RangedAudioParameter*> (tree->getParameter ("lfo1Rate")))
        lfoRateRange = rate->getNormalisableRange();

    for (auto& s : linear)
        s.reset (hostRate, 0.005);
    cutoff.reset (hostRate, 0.005);
    lowCross.reset (hostRate, 0.005);
    highCross.reset (hostRate, 0.005);
    notchHz.reset (hostRate, 0.005);

    setSmootherTargets();
    readModSlots();
    jumpSmoothersToTargets (true);
    lastPlainLfoRate = -1.0f;
    const float rate = sm (S::lfoRate).getCurrentValue();
    updateLfoRate (rate, rate, sm (S::lfoPhase).getCurrentValue());
}

void VoiceEngine::updateLfoRate (float rate, float plainRate, float phaseDegrees) noexcept
{
    appliedLfoArguments = { rate, plainRate, phaseDegrees };
    // The rate control's position picks the sync row; its pow is paid only when the rate moves.
    if (plainRate != lastPlainLfoRate)
    {
        lastPlainLfoRate = plainRate;
        lastNormalisedLfoRate = std::clamp (lfoRateRange.convertTo0to1 (std::clamp (plainRate, lfoRateRange.start, lfoRateRange.end)), 0.0f, 1.0f);
    }
    lfo.update (rate, lastNormalisedLfoRate, phaseDegrees, (int) load (lfo1ShapeValue), (int) load (lfo1SyncValue) == 1);
}

void VoiceEngine::setFilterModelNow (int model) noexcept
{
    filterModel = std::clamp (model, 0, (int) VoiceFilter::numModels - 1);
    for (auto& bank : filterBanks)
        for (auto& filter : bank)
            filter.setModelNow (filterModel);
}

void VoiceEngine::setSmootherTargets() noexcept
{
    auto set = [this] (S s, float v) { sm (s).setTargetValue (v); };
    auto clampOf = [this] (P p, float lo, float hi) { return std::clamp (params.get (p), lo, hi); };

    set (S::osc1Gain, decibelsToGain (params.get (P::osc1Level), -90.0f));
    set (S::osc2Gain, decibelsToGain (params.get (P::osc2Level), -90.0f));
    set (S::subGain, decibelsToGain (params.get (P::subLevel), -110.0f));
    set (S::driveDb, params.get (P::drive));
    set (S::detuneCents, params.get (P::osc2Detune));
    set (S::detuneHz, params.get (P::osc2DetuneHz));
    set (S::stereoWidth, clampOf (P::stereoWidth, 0.0f, 1.0f));
    set (S::osc1Dcw, clampOf (P::osc1DcwDepth, 0.0f, 1.0f));
    set (S::osc2Dcw, clampOf (P::osc2DcwDepth, 0.0f, 1.0f));
    set (S::drift, clampOf (P::oscDrift, 0.0f, 1.0f));
    set (S::subDcw, clampOf (P::subDcwDepth, 0.0f, 1.0f));
    cutoff.setTargetValue (clampOf (P::filterCutoff, 20.0f, 20000.0f));
    set (S::resonance, clampOf (P::filterReso, 0.0f, 1.0f));
    set (S::envAmount, params.get (P::filterEnvAmount));
    set (S::outputGain, decibelsToGain (params.get (P::outputGain), -90.0f));
    set (S::modWheel, modWheel.load());
    set (S::aftertouch, aftertouch.load());
    set (S::bend, pitchBendSemitones);
    set (S::lfoRate, clampOf (P::lfo1Rate, 0.05f, 20.0f));
    set (S::lfoDepth, clampOf (P::lfo1Depth, 0.0f, 1.0f));
    set (S::lfoPhase, clampOf (P::lfo1Phase, -180.0f, 180.0f));
    set (S::noiseGain, decibelsToGain (params.get (P::noiseLevel), -90.0f));
    set (S::noiseRouting, clampOf (P::noiseRouting, 0.0f, 1.0f));
    set (S::osc1Width, clampOf (P::osc1PulseWidth, 0.05f, 0.95f));
    set (S::osc2Width, clampOf (P::osc2PulseWidth, 0.05f, 0.95f));
    set (S::osc1Tune, params.get (P::osc1Semitone) + params.get (P::osc1Fine) * 0.01f);
    set (S::osc2Tune, params.get (P::osc2Semitone) + params.get (P::osc2Fine) * 0.01f);
    set (S::makeupGain, decibelsToGain (params.get (P::driveGain), -90.0f));
    set (S::driveMix, clampOf (P::driveMix, 0.0f, 1.0f));
    set (S::filterWet, params.on (P::filterEnabled) ? 1.0f : 0.0f);
    set (S::subSend, clampOf (P::subDriveSend, 0.0f, 1.0f));
    set (S::monoLowOn, params.on (P::monoLowEnabled) ? 1.0f : 0.0f);
    set (S::monoLowHz, clampOf (P::monoLowFreq, 40.0f, 300.0f));
    set (S::beat, clampOf (P::reeseBeat, 0.0f, 20.0f));
    set (S::spread, clampOf (P::reeseSpread, 0.0f, 1.0f));
    set (S::morph, clampOf (P::pdMorphAmount, 0.0f, 1.0f));
    set (S::phaseMix, clampOf (P::phaseMix, 0.0f, 1.0f));
    set (S::phaseStereo, clampOf (P::phaseStereo, 0.0f, 1.0f));
    set (S::phaseNotch, clampOf (P::phaseNotch, 0.0f, 1.0f));
    set (S::feedback, clampOf (P::feedbackAmount, 0.0f, 1.0f));
    set (S::feedbackTone, clampOf (P::feedbackTone, 80.0f, 12000.0f));
    set (S::mbdMix, clampOf (P::mbdMix, 0.0f, 1.0f));
    set (S::mbdLow, clampOf (P::mbdLowAmount, 0.0f, 24.0f));
    set (S::mbdMid, clampOf (P::mbdMidAmount, 0.0f, 24.0f));
    set (S::mbdHigh, clampOf (P::mbdHighAmount, 0.0f, 24.0f));
    lowCross.setTargetValue (clampOf (P::mbdLowCross, 60.0f, 600.0f));
    highCross.setTargetValue (clampOf (P::mbdHighCross, 800.0f, 8000.0f));
    set (S::modFxRate, clampOf (P::modFxRate, 0.05f, 8.0f));
    set (S::modFxDepth, clampOf (P::modFxDepth, 0.0f, 1.0f));
    set (S::modFxFeedback, clampOf (P::modFxFeedback, 0.0f, 0.95f));
    set (S::modFxMix, clampOf (P::modFxMix, 0.0f, 1.0f));
    set (S::tilt, clampOf (P::postEqTilt, -12.0f, 12.0f));
    notchHz.setTargetValue (clampOf (P::postEqNotchHz, 80.0f, 8000.0f));
    set (S::notchDepth, clampOf (P::postEqNotchDepth, 0.0f, 1.0f));

    const auto& f = groups[filterGroup];
    set (S::filterAttack, std::clamp (load (f.attack), 0.0f, 4.0f));
    set (S::filterDecay, std::clamp (load (f.decay), 0.0f, 4.0f));
    set (S::filterRelease, std::clamp (load (f.release), 0.0f, 4.0f));
    set (S::filterSustain, std::clamp (load (f.sustain), 0.0f, 1.0f));
}

void VoiceEngine::jumpSmoothersToTargets (bool includeSlowFrequencies) noexcept
{
    for (auto& s : linear)
        s.setCurrentAndTargetValue (s.getTargetValue());
    cutoff.setCurrentAndTargetValue (cutoff.getTargetValue());
    if (includeSlowFrequencies)
    {
        lowCross.setCurrentAndTargetValue (lowCross.getTargetValue());
        highCross.setCurrentAndTargetValue (highCross.getTargetValue());
        notchHz.setCurrentAndTargetValue (notchHz.getTargetValue());
    }
}

void VoiceEngine::readModSlots() noexcept
{
    for (size_t i = 0; i < slots.size(); ++i)
    {
        const auto& p = slotPointers[i];
        slots[i].source = (int) load (p.source);
        slots[i].destination = (int) load (p.destination);
        slots[i].amount = std::clamp (load (p.amount), -1.0f, 1.0f);
        slots[i].curve = (int) load (p.curve);
    }

    matrixStale = true;
    sourceInUse.fill (false);
    for (const auto& slot : slots)
        if (slot.source > 0 && slot.source < numModSources && slot.destination != 0 && slot.amount != 0.0f)
            sourceInUse[(size_t) slot.source] = true;
    numUsedSources = 0;
    for (int source = 1; source < numModSources; ++source)
        if (sourceInUse[(size_t) source])
            usedSources[(size_t) numUsedSources++] = source;
}

juce::ADSR::Parameters VoiceEngine::readGroup (EnvelopeGroup g) const noexcept
{
    if (g == filterGroup)
        return { linear[(size_t) S::filterAttack].getCurrentValue(), linear[(size_t) S::filterDecay].getCurrentValue(),
                 linear[(size_t) S::filterSustain].getCurrentValue(), linear[(size_t) S::filterRelease].getCurrentValue() };

    const auto& p = groups[(size_t) g];
    return { load (p.attack), load (p.decay), load (p.sustain), load (p.release) };
}

void VoiceEngine::applyGroup (EnvelopeGroup g, const juce::ADSR::Parameters& p) noexcept
{
    appliedGroups[(size_t) g] = p;
    switch (g)
    {
        case ampGroup:    ampEnvelope.setParameters (p); break;
        case filterGroup: filterEnvelope.setParameters (p); break;
        case dcw1Group:
            oscillators[0].dcwEnvelope.setParameters (p);
            oscillators[1].dcwEnvelope.setParameters (p);
            dcw1Envelope.setParameters (p);
            break;
        case dcw2Group:
            oscillators[2].dcwEnvelope.setParameters (p);
            oscillators[3].dcwEnvelope.setParameters (p);
            dcw2Envelope.setParameters (p);
            break;
        case numGroups: break;
    }
}

void VoiceEngine::updateEnvelopeParameters() noexcept
{
    for (int g = 0; g < numGroups; ++g)
    {
        const auto p = readGroup ((EnvelopeGroup) g);
        if (! sameParameters (p, appliedGroups[(size_t) g]))
            applyGroup ((EnvelopeGroup) g, p);
    }
}

void VoiceEngine::applyWaves() noexcept
{
    const int wave1 = params.index (P::osc1Wave);
    const int wave2 = params.on (P::reeseLock) ? wave1 : params.index (P::osc2Wave);
    oscillators[0].setWave (wave1);
    oscillators[1].setWave (wave1);
    oscillators[2].setWave (wave2);
    oscillators[3].setWave (wave2);
}

void VoiceEngine::applySettingsAtNote() noexcept
{
    applyWaves();
    for (int g = 0; g < numGroups; ++g)
        applyGroup ((EnvelopeGroup) g, readGroup ((EnvelopeGroup) g));

    const bool sync1 = params.on (P::syncOsc1);
    const bool sync2 = params.on (P::syncOsc2);
    oscillators[0].syncEnabled = sync1;
    oscillators[1].syncEnabled = sync1;
    oscillators[2].syncEnabled = sync2;
    oscillators[3].syncEnabled = sync2;

    setFilterModelNow (params.index (P::filterModel));
    applyStageSettingsAtNote();
}

void VoiceEngine::updateDiscreteSettings() noexcept
{
    applyWaves();

    const int model = std::clamp (params.index (P::filterModel), 0, (int) VoiceFilter::numModels - 1);
    if (model != filterModel)
    {
        filterModel = model;
        for (auto& bank : filterBanks)
            for (auto& filter : bank)
                filter.changeModel (model);
    }

    updateStageSettings();
}

void VoiceEngine::updateTargetPitch() noexcept
{
    const int octaveIndex = params.values[(size_t) P::octave] != nullptr ? params.index (P::octave) : 2;
    targetPitch = (float) std::clamp (currentNote + (octaveIndex - 2) * 12, 0, 127);
    keyTrack = targetPitch * 0.007874016f;
}

void VoiceEngine::updateGlideCoefficient() noexcept
{
    const float t = std::clamp (params.get (P::glideTime), 0.0f, 2.0f);
    glideCoefficient = t > 0.0f ? (float) (1.0 - std::exp (-1.0 / (positiveRate (sampleRate) * t))) : 1.0f;
}

void VoiceEngine::resetPhases (float phaseValue) noexcept
{
    const float osc2Phase = phaseValue - std::floor (phaseValue);
    oscillators[0].resetPhase (0.0f);
    oscillators[1].resetPhase (0.0f);
    oscillators[2].resetPhase (osc2Phase);
    oscillators[3].resetPhase (osc2Phase);
    for (auto& sub : subs)
        sub.resetPhase();

    lfo.resetPhase();
    lfo.heldValue = 0.0f;
    if (lfo.shape == EngineLfo::sampleAndHold)
        lfo.drawHeldValue();
}

void VoiceEngine::startNote (int note, float velocity, bool legato) noexcept
{
    const bool wasIdle = ! ampEnvelope.isActive();
    currentNote = note;
    updateTargetPitch();
    if (wasIdle)
        currentPitch = targetPitch;

    noteVelocity = std::clamp (velocity, 0.0f, 1.0f);
    noteRandom = 2.0f * noteRandomGenerator.nextFloat() - 1.0f;

    applySettingsAtNote();
    velToFilterScale = (noteVelocity - 1.0f) * std::clamp (params.get (P::velToFilterEnv), 0.0f, 1.0f) + 1.0f;
    velToDriveScale = (noteVelocity - 1.0f) * std::clamp (params.get (P::velToDrive), 0.0f, 1.0f) + 1.0f;
    updateGlideCoefficient();

    if (! legato)
    {
        const int phaseMode = params.index (P::phaseMode);
        if (phaseMode == 2 || (phaseMode == 1 && wasIdle))
            resetPhases ((params.get (P::osc2PhaseOffset) + osc2PhaseSum) * 0.0027777778f);

        if (params.index (P::lfo1Retrig) == 1)
        {
            lfo.resetPhase();
            if (lfo.shape == EngineLfo::sampleAndHold)
                lfo.drawHeldValue();
        }
    }

    if (wasIdle)
    {
        setSmootherTargets();
        jumpSmoothersToTargets (false);
        antiClickCounter = antiClickLength;
    }

    if (! legato)
    {
        for (auto& osc : oscillators)
            osc.dcwEnvelope.noteOn();
        ampEnvelope.noteOn();
        filterEnvelope.noteOn();
        dcw1Envelope.noteOn();
        dcw2Envelope.noteOn();
    }
}

void VoiceEngine::releaseAll() noexcept
{
    for (auto& osc : oscillators)
        osc.dcwEnvelope.noteOff();
    ampEnvelope.noteOff();
    filterEnvelope.noteOff();
    dcw1Envelope.noteOff();
    dcw2Envelope.noteOff();
    currentNote = -1;
}
}
