#include "engine/VoiceEngine.h"

#include "engine/ModMatrixEval.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    // 2^(semitones / 12), exactly 1 at 0 so that an untouched control costs no pow.
    inline float semitoneRatio (float semitones) noexcept
    {
        return semitones == 0.0f ? 1.0f : std::exp2 (semitones * (1.0f / 12.0f));
    }
}

void VoiceEngine::render (juce::AudioBuffer<float>& buffer, int startSample, int numSamples) noexcept
{
    if (! ampEnvelope.isActive() || numSamples < 1 || oversampler == nullptr)
        return;

    int done = 0;
    while (done < numSamples)
    {
        const int n = std::min (maxChunk, numSamples - done);
        renderChunk (buffer, startSample + done, n);
        done += n;
    }
}

void VoiceEngine::renderChunk (juce::AudioBuffer<float>& buffer, int start, int n) noexcept
{
    if (! ampEnvelope.isActive())
        return;

    setSmootherTargets();
    readModSlots();
    updateEnvelopeParameters();

    if (currentNote >= 0)
    {
        updateTargetPitch();
        updateGlideCoefficient();
    }

    updateDiscreteSettings();

    lfo.bpm = hostBpm > 0.0f ? hostBpm : 120.0f;
    updateLfoRate (sm (S::lfoRate).getCurrentValue(), sm (S::lfoRate).getCurrentValue(), sm (S::lfoPhase).getCurrentValue());

    mode = params.index (P::mode);
    detuneMode = params.index (P::detuneMode);
    autoMakeup = params.on (P::driveAutoMakeup);

    dryBuffer.clear (0, n);
    juce::dsp::AudioBlock<float> dryBlock (dryBuffer.getArrayOfWritePointers(), 2, (size_t) n);
    auto upBlock = oversampler->processSamplesUp (dryBlock);
    upBlock.clear();
    float* overLeft = upBlock.getChannelPointer (0);
    float* overRight = upBlock.getChannelPointer (1);

    const float overRate = (float) (sampleRate * 2.0);
    const float inverseOverRate = overRate > 0.0f ? 1.0f / overRate : 0.0f;

    for (int i = 0; i < n; ++i)
    {
        // 1. Glide: a one-pole slew in note numbers.
        currentPitch += (targetPitch - currentPitch) * glideCoefficient;

        // 2. Sources that step every host sample.
        const float filterEnvValue = filterEnvelope.getNextSample();
        const float ampEnvValue = ampEnvelope.getNextSample();
        const float modWheelValue = sm (S::modWheel).getNextValue();
        const float aftertouchValue = sm (S::aftertouch).getNextValue();
        const float dcw1Value = dcw1Envelope.getNextSample();
        const float dcw2Value = dcw2Envelope.getNextSample();
        const float lfoRateValue = sm (S::lfoRate).getNextValue();
        const float lfoPhaseValue = sm (S::lfoPhase).getNextValue();

        // 3. LFO, with the matrix's rate and depth shares of the previous sample.
        updateLfoRate (std::clamp (lfoRateValue + lastLfoRateSum, 0.001f, 200.0f), lfoRateValue, lfoPhaseValue);
        const float lfoDepth = std::clamp (sm (S::lfoDepth).getNextValue() + lastLfoDepthSum, 0.0f, 1.0f);
        float lfoValue = 0.0f;
        if (sourceInUse[5])
            lfoValue = lfoDepth * lfo.wave();
        lfo.advance();

        // 4. Smooth random.
        const float smoothRandomValue = smoothRandom.step();

        // 5. Source array.
        sources[1] = noteVelocity;
        sources[2] = keyTrack;
        sources[3] = modWheelValue;
        sources[4] = aftertouchValue;
        sources[5] = lfoValue;
        sources[6] = dcw1Value;
        sources[7] = dcw2Value;
        sources[8] = filterEnvValue;
        sources[9] = ampEnvValue;
        sources[10] = noteRandom;
        sources[11] = smoothRandomValue;
        sources[12] = sourceInUse[12] ? std::sin (6.2831855f * beatPhase) : 0.0f;

        // 6. Matrix.
        evaluateMatrix (slots, sources, sums, slotOutputs);

        // 7. Pitch.
        const float semis = sm (S::bend).getNextValue() + sums[dest::pitch];
        const float f = 440.0f * std::exp2 ((currentPitch - 69.0f) * (1.0f / 12.0f)) * semitoneRatio (semis);

        // 8. Detune and beat.
        const float detuneCents = sm (S::detuneCents).getNextValue();
        const float detuneHz = sm (S::detuneHz).getNextValue();
        const float spread = std::clamp (sm (S::stereoWidth).getNextValue() + sm (S::spread).getNextValue()
                                             + sums[dest::reeseSpread], 0.0f, 1.0f);
        const float beat = std::clamp (sm (S::beat).getNextValue() + sums[dest::reeseBeat], 0.0f, 40.0f);
        const float w = 1.0f - 2.0f * spread; // 1 mono, 0 only left detuned, -1 opposite sides
        float fHigh, fLow;
        if (detuneMode == 1)
        {
            const float d = detuneHz + sums[dest::osc2DetuneHz] + beat;
            fHigh = f + d;
            fLow = f + w * d;
        }
        else
        {
            const float r = std::exp2 ((detuneCents + sums[dest::osc2Detune]) * 0.00083333335f);
            fHigh = r * f + beat;
            fLow = (w == 1.0f ? r : std::pow (r, w)) * f + w * beat;
        }
        beatPhase += std::abs (fHigh - fLow) / (float) sampleRate;
        if (beatPhase >= 1.0f)
            beatPhase -= std::floor (beatPhase);

        // 9. Drift, in opposite senses on the two pairs.
        const float driftRatio = drift.ratio (sm (S::drift).getNextValue() + sums[dest::drift]);

        // 10. Oscillator frequencies.
        const float tune1 = semitoneRatio (sm (S::osc1Tune).getNextValue());
        const float tune2 = semitoneRatio (sm (S::osc2Tune).getNextValue());
        oscillators[0].frequency = f * tune1 / driftRatio;
        oscillators[1].frequency = oscillators[0].frequency;
        oscillators[2].frequency = fHigh * tune2 * driftRatio;
        oscillators[3].frequency = fLow * tune2 * driftRatio;

        // 11. DCW depths, morph, pulse widths.
        const bool lock = params.on (P::reeseLock);
        const float dcw1Smoothed = sm (S::osc1Dcw).getNextValue();
        const float dcw2Smoothed = sm (S::osc2Dcw).getNextValue();
        const float depth1 = std::clamp (dcw1Smoothed + sums[dest::osc1Dcw], 0.0f, 1.0f);
        const float depth2 = std::clamp ((lock ? dcw1Smoothed : dcw2Smoothed) + sums[dest::osc2Dcw], 0.0f, 1.0f);
        const float morph = std::clamp (sm (S::morph).getNextValue() + sums[dest::pdMorph], 0.0f, 1.0f);
        const float width1 = std::clamp (sm (S::osc1Width).getNextValue() + sums[dest::osc1Pw], 0.05f, 0.95f);
        const float width2Smoothed = sm (S::osc2Width).getNextValue();
        const float width2 = std::clamp ((lock ? width1 : width2Smoothed) + sums[dest::osc2Pw], 0.05f, 0.95f);
        const float subDcwValue = sm (S::subDcw).getNextValue();
        juce::ignoreUnused (subDcwValue);
        for (int o = 0; o < 4; ++o)
        {
            auto& osc = oscillators[(size_t) o];
            osc.dcwDepth = o < 2 ? depth1 : depth2;
            osc.pulseWidth = o < 2 ? width1 : width2;
            osc.morph = morph;
        }

        // 12. Oscillator and sub gains.
        const float gain1 = sm (S::osc1Gain).getNextValue() * sumGainFactor (sums[dest::osc1Level]);
        const float gain2 = sm (S::osc2Gain).getNextValue() * sumGainFactor (sums[dest::osc2Level]);
        const float gainSub = sm (S::subGain).getNextValue();
        juce::ignoreUnused (gainSub);

        // 13. Drive gain, makeup, drive mix, filter wet.
        const float driveDb = sm (S::driveDb).getNextValue();
        const float makeup = sm (S::makeupGain).getNextValue();
        const float driveMix = sm (S::driveMix).getNextValue();
        const float filterWet = std::clamp (sm (S::filterWet).getNextValue(), 0.0f, 1.0f);
        juce::ignoreUnused (driveDb, makeup, driveMix);

        // 14. Filter controls.
        // 14. Filter controls: one cut-off for every filter, so its coefficients are worked out once.
        const float envAmount = sm (S::envAmount).getNextValue() * velToFilterScale;
        const float octaves = ((envAmount + sums[dest::filterEnv]) * filterEnvValue + sums[dest::cutoff]) * (1.0f / 12.0f);
        const float hz = std::clamp (cutoff.getNextValue() * std::exp2 (octaves), 20.0f, 20000.0f);
        const auto coefficients = VoiceFilter::coefficientsFor (hz, sampleRate * 2.0);
        const float reso = std::clamp (sm (S::resonance).getNextValue() + sums[dest::resonance], 0.0f, 1.0f);
        const float phaseMixValue = std::clamp (sm (S::phaseMix).getNextValue() + sums[dest::phaseMix], 0.0f, 1.0f);
        const float phaseNotchValue = std::clamp (sm (S::phaseNotch).getNextValue() + sums[dest::phaseNotch], 0.0f, 1.0f);
        const float phaseStereoValue = std::clamp (sm (S::phaseStereo).getNextValue(), 0.0f, 1.0f);
        for (auto& bank : filterBanks)
            for (int side = 0; side < 2; ++side)
            {
                auto& filter = bank[(size_t) side];
                filter.applyCutoff (coefficients);
                filter.setResonance (reso);
                filter.setPhaseControls (phaseMixValue, phaseNotchValue, side == left ? -phaseStereoValue : phaseStereoValue);
            }

        // 15. Multiband drive, Mod FX and post EQ controls.
        for (S s : { S::mbdMix, S::mbdLow, S::mbdMid, S::mbdHigh, S::modFxRate, S::modFxDepth,
                     S::modFxFeedback, S::modFxMix, S::tilt, S::notchDepth })
            sm (s).getNextValue();
        lowCross.getNextValue();
        highCross.getNextValue();
        notchHz.getNextValue();

        // 16. Output gain with the amp envelope and the matrix's amp factor.
        float outGain = sm (S::outputGain).getNextValue();
        outGain *= sumGainFactor (sums[dest::output]);
        gainBuffer[(size_t) i] = outGain * ampEnvValue * sums.ampFactor;

        // 17. Sums read by the LFO on the next sample.
        lastLfoRateSum = sums[dest::lfo1Rate];
        lastLfoDepthSum = sums[dest::lfo1Depth];
        osc2PhaseSum = sums[dest::osc2Phase];

        // 18. Noise split.
        sm (S::noiseGain).getNextValue();
        sm (S::noiseRouting).getNextValue();
        noisePostLeft[(size_t) i] = 0.0f;
        noisePostRight[(size_t) i] = 0.0f;

        // 19. Sub send and feedback.
        sm (S::subSend).getNextValue();
        sm (S::feedback).getNextValue();
        sm (S::feedbackTone).getNextValue();

        // 20. Two oversampled steps.
        for (int k = 0; k < 2; ++k)
        {
            const float a1 = oscillators[0].process();
            const float a2 = oscillators[1].process();
            const float b1 = oscillators[2].process();
            const float b2 = oscillators[3].process();

            float left, right;
            if (mode == 1)
            {
                left = (gain1 * a1) * (gain2 * b1);
                right = (gain1 * a2) * (gain2 * b2);
            }
            else
            {
                left = gain1 * a1 + gain2 * b1;
                right = gain1 * a2 + gain2 * b2;
            }

            left = mixBlockers[Side::left].process (left);
            right = mixBlockers[Side::right].process (right);

            // Drive and filter in the order of the drive position; the filter runs while disabled.
            left += (filterBanks[0][Side::left].process (left) - left) * filterWet;
            right += (filterBanks[0][Side::right].process (right) - right) * filterWet;

            overLeft[2 * i + k] = left;
            overRight[2 * i + k] = right;
        }
    }
    juce::ignoreUnused (inverseOverRate);

    oversampler->processSamplesDown (dryBlock);
    outputStage (buffer, start, n);

    for (S s : { S::filterAttack, S::filterDecay, S::filterSustain, S::filterRelease })
        sm (s).skip (n);
}

void VoiceEngine::outputStage (juce::AudioBuffer<float>& buffer, int start, int n) noexcept
{
    const float* dryLeft = dryBuffer.getReadPointer (0);
    const float* dryRight = dryBuffer.getReadPointer (1);
    const int channels = buffer.getNumChannels();
    float* outLeft = channels > 0 ? buffer.getWritePointer (0, start) : nullptr;
    float* outRight = channels > 1 ? buffer.getWritePointer (1, start) : nullptr;
    if (outLeft == nullptr)
        return;

    for (int i = 0; i < n; ++i)
    {
        float g = gainBuffer[(size_t) i];
        if (antiClickCounter > 0)
        {
            const float c = (float) antiClickCounter--;
            const float t = 1.0f - c / (float) antiClickLength;
            g *= (3.0f - 2.0f * t) * t * t;
        }

        float l = dryLeft[i] + noisePostLeft[(size_t) i];
        float r = dryRight[i] + noisePostRight[(size_t) i];

        // Mod FX and post EQ take their places here.

        l *= g;
        r *= g;

        l = outputBlockers[Side::left].process (l);
        r = outputBlockers[Side::right].process (r);

        // Mono low: the side signal is high-passed, so the lows sum to mono.
        const float m = (l + r) * 0.5f;
        const float s = (l - r) * 0.5f;
        const float monoLowOn = sm (S::monoLowOn).getNextValue();
        const float monoLowHz = sm (S::monoLowHz).getNextValue();
        monoLowBlocker.setCutoff (sampleRate > 0.0 ? std::clamp (monoLowHz, 0.0f, 0.45f * (float) sampleRate)
                                                   : std::min (monoLowHz, 20000.0f),
                                  sampleRate);
        const float h = monoLowBlocker.process (s);
        const float sOut = s + (h - s) * monoLowOn;

        const float left = m + sOut;
        const float right = m - sOut;
        if (outRight != nullptr)
        {
            outLeft[i] += left;
            outRight[i] += right;
        }
        else
        {
            outLeft[i] += (left + right) * 0.7071068f;
        }
    }
}
}
