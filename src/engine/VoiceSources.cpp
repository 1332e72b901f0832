#include "engine/VoiceEngine.h"
#include "engine/FastMath.h"

#include "engine/ModMatrixEval.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace morvane
{
namespace
{
    struct SourceMix
    {
        const float *a1, *a2, *b1, *b2, *gain1, *gain2, *noiseLeft, *noiseRight, *sub, *gainSub, *sendShare, *postShare;
        float *left, *right, *sends, *posts;
    };

    // The arrays alias nothing, so the loop runs in vector lanes.
    template <bool ring>
    void mixSources (const SourceMix& m, int count) noexcept
    {
#pragma GCC ivdep
        for (int q = 0; q < count; ++q)
        {
            const float l = ring ? (m.gain1[q] * m.a1[q]) * (m.gain2[q] * m.b1[q]) : m.gain1[q] * m.a1[q] + m.gain2[q] * m.b1[q];
            const float r = ring ? (m.gain1[q] * m.a2[q]) * (m.gain2[q] * m.b2[q]) : m.gain1[q] * m.a2[q] + m.gain2[q] * m.b2[q];
            m.left[q] = l + m.noiseLeft[q];
            m.right[q] = r + m.noiseRight[q];
            const float sub = m.sub[q] * m.gainSub[q];
            m.sends[q] = m.sendShare[q] * sub;
            m.posts[q] = m.postShare[q] * sub;
        }
    }
}

// An LFO or an envelope on the cut-off moves the sums on every host sample, and the chain alone
// follows them: the sources' controls would be worked out again to the same values. Compared by
// their bits, so that a sum's sign of zero is not lost either.
bool VoiceEngine::onlyChainMoved() const noexcept
{
    ModSums probe = sums;
    for (int d : { dest::cutoff, dest::filterEnv, dest::drive, dest::resonance, dest::phaseMix, dest::phaseNotch,
                   dest::feedback, dest::mbdLow, dest::mbdMid, dest::mbdHigh })
        probe.sum[(size_t) d] = settledSums.sum[(size_t) d];
    return std::memcmp (&probe, &settledSums, sizeof (ModSums)) == 0;
}

// The first of a chunk's two loops: per host sample the modulation sources, the matrix and the
// controls, then two oversampled steps of the oscillators, sub and noise, mixed into the
// oversampled block that the chain's loop then runs through in place.
void VoiceEngine::renderSources (int first, int end, bool controlsMove, float chunkSubRatio) noexcept
{
    auto& g = sourceGroupState;
    g.lockedSteps = {};

    for (int i = first; i < end; ++i)
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
        // values of the sample before stand. The chain's share waits for the chain's loop.
        auto& step = chainSteps[(size_t) i];
        step.filterEnvValue = filterEnvValue;
        step.controlsUpdated = controlsMove || sourcesMoved || i == 0;
        step.settingsMoved = controlsMove || i == 0 || (sourcesMoved && ! onlyChainMoved());
        step.chainMoved = false;
        if (step.settingsMoved)
        {
            updateSlowControls (controlsMove || i == 0);
            settledSums = sums;
        }
        if (step.controlsUpdated)
        {
            step.sums = { sums[dest::drive], sums[dest::cutoff], sums[dest::filterEnv], sums[dest::resonance],
                          sums[dest::phaseMix], sums[dest::phaseNotch], sums[dest::feedback],
                          sums[dest::mbdLow], sums[dest::mbdMid], sums[dest::mbdHigh] };
            // The cut-off's own sums are read by the cut-off alone, ahead of the chain's loop.
            auto probe = step.sums;
            probe.cutoff = settledChainSums.cutoff;
            probe.filterEnv = settledChainSums.filterEnv;
            step.chainMoved = controlsMove || i == 0 || std::memcmp (&probe, &settledChainSums, sizeof (ChainSums)) != 0;
            if (step.chainMoved)
                settledChainSums = step.sums;
        }
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
        beatPhase += std::abs (fHigh - fLow) * inverseHostRate;
        if (beatPhase >= 1.0f)
            beatPhase -= std::floor (beatPhase);

        // 9. Drift, in opposite senses on the two pairs.
        const auto driftRatio = drift.ratio (c.driftAmount);

        // 10. Oscillator frequencies.
        oscillators[0].frequency = f * c.tune1 * driftRatio.down;
        oscillators[1].frequency = oscillators[0].frequency;
        oscillators[2].frequency = fHigh * c.tune2 * driftRatio.up;
        oscillators[3].frequency = fLow * c.tune2 * driftRatio.up;
        const float subHz = f * chunkSubRatio;
        for (auto& sub : subs)
            sub.setFrequency (subHz);

        // 11. Host-rate output controls, output gain with the amp envelope, noise around the chain.
        if (step.settingsMoved)
            outputControls[(size_t) i] = c.output;
        gainBuffer[(size_t) i] = c.outGain * ampEnvValue * c.ampFactor;
        // Silent noise draws nothing, so a patch without noise pays nothing for it.
        const bool noiseHeard = c.noiseHeard;
        const auto post = noiseHeard ? noise.next() : NoisePair::Pair {};
        noisePostLeft[(size_t) i] = noiseHeard ? post.left * c.noisePostGain : 0.0f;
        noisePostRight[(size_t) i] = noiseHeard ? post.right * c.noisePostGain : 0.0f;
        const float gain1 = c.gain1, gain2 = c.gain2, gainSub = c.gainSub;
        const float preGain = c.noisePreGain, send = c.send, postShare = c.postShare;

        // 12. Two oversampled steps. A pair whose sides run alike is computed once.
        const bool audible1 = c.audible1, audible2 = c.audible2;
        // A pair's settings other than its frequencies are among the controls above, so the
        // locks need a look only when those were worked out again or a locked pair's frequencies
        // part. A pair already apart whose frequencies differ cannot lock.
        if (step.settingsMoved || (pairLocked[0] && oscillators[1].frequency != oscillators[0].frequency)
            || (pairLocked[1] && oscillators[3].frequency != oscillators[2].frequency))
            updatePairLocks();
        step.sourcesAlike = (pairLocked[0] || ! audible1) && (pairLocked[1] || ! audible2) && ! noiseHeard;
        // The two sides of a pair share their wave, morph and sync.
        const std::array<bool, 2> pairDefers { oscillators[0].settingsDefer(), oscillators[2].settingsDefer() };
        g.lockedSteps[0] += pairLocked[0] ? 2 : 0;
        g.lockedSteps[1] += pairLocked[1] ? 2 : 0;
        for (int j = 2 * i; j < 2 * i + 2; ++j)
        {
            const int q = j - 2 * first;
            // Pair 0 first: each pair's sync reads the other's wrap of the same step.
            const auto stepPair = [&] (size_t p, bool audible)
            {
                const size_t leftSide = 2 * p, rightSide = 2 * p + 1;
                g.values[leftSide][(size_t) q] = oscillators[leftSide].processDeferring (audible, pairDefers[p], g.runs[leftSide], q);
                g.locked[p][(size_t) q] = pairLocked[p];
                if (pairLocked[p])
                    g.runs[rightSide].deferred[q] = 0;
                else
                    g.values[rightSide][(size_t) q] = oscillators[rightSide].processDeferring (audible, pairDefers[p], g.runs[rightSide], q);
            };
            stepPair (0, audible1);
            stepPair (1, audible2);
            g.gain1[(size_t) q] = gain1;
            g.gain2[(size_t) q] = gain2;
            const auto pre = noiseHeard ? noise.next() : NoisePair::Pair {};
            g.noiseLeft[(size_t) q] = noiseHeard ? pre.left * preGain : 0.0f;
            g.noiseRight[(size_t) q] = noiseHeard ? pre.right * preGain : 0.0f;

            // The two subs share phase and increment by construction, so one is computed.
            g.subValues[(size_t) q] = subs[Side::left].processDeferring (gainSub != 0.0f, g.subRun, q);
            g.gainSub[(size_t) q] = gainSub;

            // Shares of the sub before the drive and after the multiband drive.
            float sendNow = send, postNow = postShare;
            if (routingFadeCounter > 0)
            {
                const float x = (1.0f - (float) routingFadeCounter / (float) routingFadeLength) * 1.5707964f;
                const float oldSend = previousSubRouting == postFilter ? 0.0f : send;
                const float fadeOut = fast::cos (x), fadeIn = fast::sin (x);
                postNow = (1.0f - oldSend) * fadeOut + postShare * fadeIn;
                sendNow = oldSend * fadeOut + send * fadeIn;
                if (--routingFadeCounter == 0)
                    previousSubRouting = subRouting;
            }

            g.sendShare[(size_t) q] = sendNow;
            g.postShare[(size_t) q] = postNow;
        }

    }
    mixSourceGroup (2 * first, 2 * (end - first));
}

void VoiceEngine::mixSourceGroup (int firstStep, int count) noexcept
{
    auto& g = sourceGroupState;
    for (size_t o = 0; o < oscillators.size(); ++o)
        oscillators[o].completeRun (g.runs[o], g.values[o].data(), count);
    subs[Side::left].completeRun (g.subRun, g.subValues.data(), count);

    // A locked right side did not run: its steps take the left's values. Locks seldom change
    // within a group, so mostly one side simply stands for the other.
    std::array<const float*, 2> rights {};
    for (size_t p = 0; p < 2; ++p)
    {
        auto& leftValues = g.values[2 * p];
        auto& rightValues = g.values[2 * p + 1];
        rights[p] = g.lockedSteps[p] == count ? leftValues.data() : rightValues.data();
        if (g.lockedSteps[p] > 0 && g.lockedSteps[p] < count)
            for (size_t q = 0; q < (size_t) count; ++q)
                if (g.locked[p][q])
                    rightValues[q] = leftValues[q];
    }

    const SourceMix m { g.values[0].data(), rights[0], g.values[2].data(), rights[1], g.gain1.data(), g.gain2.data(),
                        g.noiseLeft.data(), g.noiseRight.data(), g.subValues.data(), g.gainSub.data(),
                        g.sendShare.data(), g.postShare.data(), oversampledChannels[0] + firstStep,
                        oversampledChannels[1] + firstStep, subSends.data() + firstStep, subPosts.data() + firstStep };
    if (mode == 1)
        mixSources<true> (m, count);
    else
        mixSources<false> (m, count);
}
}
