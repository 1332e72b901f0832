#include "engine/VoiceEngine.h"
#include "engine/FastMath.h"

#include "engine/ModMatrixEval.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace morvane
{
namespace
{
    constexpr float feedbackLimit = 4.0f;

    // Bit copies and comparisons: two sides that ran alike hold the same bytes, padding included,
    // so equal bytes are proof that the one can stand for the other.
    template <typename T>
    void copyBits (T& to, const T& from) noexcept
    {
        static_assert (std::is_trivially_copyable_v<T>);
        std::memcpy (&to, &from, sizeof (T));
    }

    template <typename T>
    bool sameBits (const T& a, const T& b) noexcept
    {
        static_assert (std::is_trivially_copyable_v<T>);
        return std::memcmp (&a, &b, sizeof (T)) == 0;
    }
}

// Here, beside its one caller, so that it is inlined into the step.
inline float VoiceEngine::driveAndFilter (int bank, int side, float x, int position) noexcept
{
    auto& shaper = shaperBanks[(size_t) bank][(size_t) side];
    auto& filter = filterBanks[(size_t) bank][(size_t) side];
    // Full mix and full wet are the usual settings: there the blends are skipped, since each would
    // add three dependent operations to every step's way through the voice.
    auto drive = [&] (float v)
    {
        const float shaped = shaper.process (v) * driveMakeup;
        return driveMixAmount == 1.0f ? shaped : v + (shaped - v) * driveMixAmount;
    };
    auto filtered = [&] (float v)
    {
        const float y = filter.process (v);
        return filterWetAmount == 1.0f ? y : v + (y - v) * filterWetAmount;
    };
    return position == preDrive ? filtered (drive (x)) : drive (filtered (x));
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

void VoiceEngine::updatePairLocks() noexcept
{
    // A synced right side follows its own master, and a locked one would leave its own slave a
    // stale edge, so sync anywhere parts both pairs.
    const bool anySync = oscillators[0].syncEnabled || oscillators[1].syncEnabled
                      || oscillators[2].syncEnabled || oscillators[3].syncEnabled;
    for (size_t p = 0; p < pairLocked.size(); ++p)
    {
        auto& leftSide = oscillators[2 * p];
        auto& rightSide = oscillators[2 * p + 1];
        if (pairLocked[p])
        {
            if (anySync || ! rightSide.sameSettingsAs (leftSide))
            {
                rightSide.copyStepFrom (leftSide);
                pairLocked[p] = false;
            }
        }
        else if (! anySync && rightSide.inStepWith (leftSide))
        {
            pairLocked[p] = true;
        }
    }
}

void VoiceEngine::copyChainToRight() noexcept
{
    copyBits (mixBlockers[Side::right], mixBlockers[Side::left]);
    for (auto& bank : shaperBanks)
        copyBits (bank[Side::right], bank[Side::left]);
    for (auto& bank : filterBanks)
        copyBits (bank[Side::right], bank[Side::left]);
    copyBits (multiband[Side::right], multiband[Side::left]);
    toneStates[Side::right] = toneStates[Side::left];
    feedbackSamples[Side::right] = feedbackSamples[Side::left];
}

bool VoiceEngine::chainSidesEqual() const noexcept
{
    bool equal = sameBits (mixBlockers[Side::right], mixBlockers[Side::left])
              && sameBits (multiband[Side::right], multiband[Side::left])
              && sameBits (toneStates[Side::right], toneStates[Side::left])
              && sameBits (feedbackSamples[Side::right], feedbackSamples[Side::left]);
    for (size_t b = 0; b < 2 && equal; ++b)
        equal = sameBits (shaperBanks[b][Side::right], shaperBanks[b][Side::left])
             && sameBits (filterBanks[b][Side::right], filterBanks[b][Side::left]);
    return equal;
}

void VoiceEngine::updateChainLock (bool sidesAlike) noexcept
{
    if (chainLocked && ! sidesAlike)
    {
        copyChainToRight();
        chainLocked = false;
    }
    else if (! chainLocked && sidesAlike && chainCheckDue)
    {
        chainCheckDue = false;
        chainLocked = chainSidesEqual();
    }
}

void VoiceEngine::renderChunk (juce::AudioBuffer<float>& buffer, int start, int n) noexcept
{
    if (! ampEnvelope.isActive())
        return;

    setSmootherTargets();
    readModSlots();
    updateEnvelopeParameters();
    chainCheckDue = true;

    if (currentNote >= 0)
    {
        updateTargetPitch();
        updateGlideCoefficient();
    }

    updateDiscreteSettings();

    lfo.bpm = hostBpm > 0.0f ? hostBpm : 120.0f;
    updateLfoRate (sm (S::lfoRate).getCurrentValue(), sm (S::lfoRate).getCurrentValue(), sm (S::lfoPhase).getCurrentValue());

    const float chunkSubRatio = subRatio();
    mode = params.index (P::mode);
    detuneMode = params.index (P::detuneMode);
    autoMakeup = params.on (P::driveAutoMakeup);
    const int leftMode = shaperBanks[0][Side::left].mode;
    const bool controlsMove = anyControlSmoothing();

    juce::dsp::AudioBlock<float> dryBlock (dryBuffer.getArrayOfWritePointers(), 2, (size_t) n);
    float* overLeft = oversampledChannels[0];
    float* overRight = oversampledChannels[1];

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
        const std::array<float, 3> lfoArguments { std::clamp (lfoRateValue + lastLfoRateSum, 0.001f, 200.0f), lfoRateValue, lfoPhaseValue };
        if (lfoArguments != appliedLfoArguments)
            updateLfoRate (lfoArguments[0], lfoArguments[1], lfoArguments[2]);
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
        sources[12] = sourceInUse[12] ? fast::sin2pi (beatPhase) : 0.0f;

        // 6. Matrix: the same slots reading the same values give the same sums, so a patch
        // modulated only by velocity, key or note random works them out once a chunk.
        bool sourcesMoved = matrixStale;
        for (int u = 0; u < numUsedSources && ! sourcesMoved; ++u)
            sourcesMoved = sources[(size_t) usedSources[(size_t) u]] != evaluatedSources[(size_t) usedSources[(size_t) u]];
        if (sourcesMoved)
        {
            evaluateMatrix (slots, sources, sums, slotOutputs);
            evaluatedSources = sources;
            matrixStale = false;
        }

        // 7. Controls that move only with a smoother or a matrix sum: while neither moves, the
        // values of the sample before stand.
        const bool controlsUpdated = controlsMove || sourcesMoved || i == 0;
        if (controlsUpdated)
            updateSlowControls (leftMode);
        const auto& c = slow;

        // 8. Pitch, detune and beat.
        const float f = pitchCache.get (currentPitch, [] (float p) { return 440.0f * std::exp2 ((p - 69.0f) * (1.0f / 12.0f)); })
                        * c.pitchRatio;
        float fHigh, fLow;
        if (detuneMode == 1)
        {
            fHigh = f + c.detuneOffset;
            fLow = f + c.w * c.detuneOffset;
        }
        else
        {
            fHigh = c.detuneRatio * f + c.beat;
            fLow = c.detuneLowRatio * f + c.w * c.beat;
        }
        beatPhase += std::abs (fHigh - fLow) / (float) sampleRate;
        if (beatPhase >= 1.0f)
            beatPhase -= std::floor (beatPhase);

        // 9. Drift, in opposite senses on the two pairs.
        const float driftRatio = drift.ratio (c.driftAmount);

        // 10. Oscillator frequencies.
        oscillators[0].frequency = f * c.tune1 / driftRatio;
        oscillators[1].frequency = oscillators[0].frequency;
        oscillators[2].frequency = fHigh * c.tune2 * driftRatio;
        oscillators[3].frequency = fLow * c.tune2 * driftRatio;
        const float subHz = f * chunkSubRatio;
        for (auto& sub : subs)
            sub.setFrequency (subHz);

        // 11. Filter cut-off: one for every filter, so its coefficients are worked out once.
        const float octaves = (c.envelopeSemitones * filterEnvValue + c.cutoffSemitones) * (1.0f / 12.0f);
        const float octaveFactor = cutoffOctaveCache.get (octaves, [] (float o) { return fast::exp2 (o); });
        const float hz = std::clamp (c.cutoffHz * octaveFactor, 20.0f, 20000.0f);
        if (! (hz == cutoffKey))
        {
            cutoffKey = hz;
            cutoffCoefficients = VoiceFilter::coefficientsFor (hz, sampleRate * 2.0);
            cutoffApplied = false;
        }
        if (! cutoffApplied || ! (c.filter == appliedFilterControls))
        {
            for (auto& bank : filterBanks)
                for (int side = 0; side < 2; ++side)
                {
                    auto& filter = bank[(size_t) side];
                    filter.applyCutoff (cutoffCoefficients);
                    filter.setResonance (c.filter.reso);
                    filter.setPhaseControls (c.filter.mix, c.filter.notch, side == left ? -c.filter.stereo : c.filter.stereo);
                }
            cutoffApplied = true;
            appliedFilterControls = c.filter;
        }

        // 12. Host-rate output controls, output gain with the amp envelope, noise around the chain.
        outputControls[(size_t) i] = c.output;
        gainBuffer[(size_t) i] = c.outGain * ampEnvValue * c.ampFactor;
        // Silent noise draws nothing, so a patch without noise pays nothing for it.
        const bool noiseHeard = c.noiseHeard;
        noisePostLeft[(size_t) i] = noiseHeard ? noise[Side::left].next() * c.noisePostGain : 0.0f;
        noisePostRight[(size_t) i] = noiseHeard ? noise[Side::right].next() * c.noisePostGain : 0.0f;
        const float gain1 = c.gain1, gain2 = c.gain2, gainSub = c.gainSub;
        const float preGain = c.noisePreGain, send = c.send, postShare = c.postShare;
        const float feedbackGain = c.feedbackGain, toneCoefficient = c.toneCoefficient;
        const bool feedbackPre = c.feedbackPre;

        // 13. Two oversampled steps. A pair whose sides run alike is computed once.
        const bool audible1 = c.audible1, audible2 = c.audible2;
        // A pair's settings other than its frequencies are among the controls above, so the
        // locks need a look only when those were worked out again or the frequencies part.
        if (controlsUpdated || oscillators[1].frequency != oscillators[0].frequency
            || oscillators[3].frequency != oscillators[2].frequency)
            updatePairLocks();
        const bool sidesAlike = (pairLocked[0] || ! audible1) && (pairLocked[1] || ! audible2) && ! noiseHeard
                             && c.filter.stereo == 0.0f;
        updateChainLock (sidesAlike);
        for (int k = 0; k < 2; ++k)
        {
            const float a1 = oscillators[0].process (audible1);
            const float a2 = pairLocked[0] ? a1 : oscillators[1].process (audible1);
            const float b1 = oscillators[2].process (audible2);
            const float b2 = pairLocked[1] ? b1 : oscillators[3].process (audible2);
            // The two subs share phase and increment by construction, so one is computed.
            const float sub = subs[Side::left].process (gainSub != 0.0f) * gainSub;

            float l, r;
            if (mode == 1)
            {
                l = (gain1 * a1) * (gain2 * b1);
                r = (gain1 * a2) * (gain2 * b2);
            }
            else
            {
                l = gain1 * a1 + gain2 * b1;
                r = gain1 * a2 + gain2 * b2;
            }

            if (noiseHeard)
            {
                l += noise[Side::left].next() * preGain;
                r += noise[Side::right].next() * preGain;
            }
            // Shares of the sub before the drive and after the multiband drive.
            float sendNow = send, postNow = postShare;
            if (routingFadeCounter > 0)
            {
                const float x = (1.0f - (float) routingFadeCounter / (float) routingFadeLength) * 1.5707964f;
                const float oldSend = previousSubRouting == postFilter ? 0.0f : send;
                const float c = fast::cos (x), s = fast::sin (x);
                postNow = (1.0f - oldSend) * c + postShare * s;
                sendNow = oldSend * c + send * s;
                if (--routingFadeCounter == 0)
                    previousSubRouting = subRouting;
            }

            // Drive and filter in the order of the drive position; the filter runs while disabled.
            const bool positionFading = positionFadeCounter > 0;
            float leaving = 0.0f, entering = 1.0f;
            if (positionFading)
            {
                const float x = (1.0f - (float) positionFadeCounter / (float) positionFadeLength) * 1.5707964f;
                leaving = fast::cos (x);
                entering = fast::sin (x);
            }

            const auto chain = [&] (int side, float x) noexcept
            {
                x = mixBlockers[(size_t) side].process (x) + sendNow * sub;
                if (feedbackPre)
                    x += feedbackGain * feedbackSamples[(size_t) side];
                x = positionFading ? leaving * driveAndFilter (0, side, x, previousDrivePosition)
                                         + entering * driveAndFilter (1, side, x, drivePosition)
                                   : driveAndFilter (0, side, x, drivePosition);
                if (! feedbackPre)
                    x += feedbackGain * feedbackSamples[(size_t) side];
                // "diode" hardly saturates above its knee, so with heavy makeup the loop could gain more
                // than it loses; the held range is far above any level the loop reaches otherwise.
                auto& tone = toneStates[(size_t) side];
                tone = std::clamp (tone + (x - tone) * toneCoefficient, -feedbackLimit, feedbackLimit);
                feedbackSamples[(size_t) side] = tone;
                return multiband[(size_t) side].process (x) + postNow * sub;
            };
            l = chain (Side::left, l);
            r = chainLocked ? l : chain (Side::right, r);

            if (positionFading && --positionFadeCounter == 0)
                finishDrivePositionFade();

            overLeft[2 * i + k] = l;
            overRight[2 * i + k] = r;
        }
    }

    // A locked side, and the right sub, have not run; they take the state they would have, for
    // whoever reads them.
    for (size_t p = 0; p < pairLocked.size(); ++p)
        if (pairLocked[p])
            oscillators[2 * p + 1].copyStepFrom (oscillators[2 * p]);
    subs[Side::right] = subs[Side::left];
    if (chainLocked)
        copyChainToRight();

    oversampler->processSamplesDown (dryBlock);
    outputStage (buffer, start, n);

    for (S s : { S::filterAttack, S::filterDecay, S::filterSustain, S::filterRelease })
        sm (s).skip (n);
}
}
