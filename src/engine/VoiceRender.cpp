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

// Here, beside its callers, so that it is inlined into the step.
__attribute__ ((always_inline)) inline float VoiceEngine::driveAndFilter (int bank, int side, float x, int position) noexcept
{
    auto& shaper = shaperBanks[(size_t) bank][(size_t) side];
    auto& filter = filterBanks[(size_t) bank][(size_t) side];
    // Full mix and full wet are the usual settings: there the blends are skipped, since each would
    // add three dependent operations to every step's way through the voice.
    auto drive = [&] (float v) __attribute__ ((always_inline))
    {
        if (driveBypassed)
            return v;
        const float shaped = shaper.process (v) * driveMakeup;
        const float driven = driveMixAmount == 1.0f ? shaped : v + (shaped - v) * driveMixAmount;
        return driveWet == 1.0f ? driven : driven * driveWet + v * driveDry;
    };
    auto filtered = [&] (float v) __attribute__ ((always_inline))
    {
        const float y = filter.process (v);
        return filterWetAmount == 1.0f ? y : v + (y - v) * filterWetAmount;
    };
    return position == preDrive ? filtered (drive (x)) : drive (filtered (x));
}

// The rare position fade runs both banks out of line, leaving the step's usual path short.
__attribute__ ((noinline)) float VoiceEngine::driveAndFilterFading (int side, float x, float leaving, float entering) noexcept
{
    return leaving * driveAndFilter (0, side, x, previousDrivePosition) + entering * driveAndFilter (1, side, x, drivePosition);
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
    toneStates[Side::right] = toneStates[Side::left];
    feedbackSamples[Side::right] = feedbackSamples[Side::left];
}

bool VoiceEngine::chainSidesEqual() const noexcept
{
    bool equal = sameBits (mixBlockers[Side::right], mixBlockers[Side::left])
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
    multibandCheckDue = true;
    multibandAppliedValid = false;

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
    const int leftMode = shaperBanks[0][Side::left].mode;

    // A group of host samples at a time, so that what the sources leave for the chain is still
    // in the nearest cache when the chain reads it.
    const bool controlsMove = anyControlSmoothing();
    const float chunkSubRatio = subRatio();
    for (int first = 0; first < n; first += sourceGroup / 2)
    {
        const int end = std::min (first + sourceGroup / 2, n);
        renderSources (first, end, controlsMove, chunkSubRatio);
        // A multiband drive that is off and stays off over the group leaves the chain's loop to
        // add the sub's post share, where it costs nothing.
        const bool multibandIdle = multibandStaysOff (first, end);
        renderChain (first, end, leftMode, multibandIdle);
        if (! multibandIdle)
            renderMultiband (first, end, leftMode);
    }

    // A locked side, and the right sub, have not run; they take the state they would have, for
    // whoever reads them.
    for (size_t p = 0; p < pairLocked.size(); ++p)
        if (pairLocked[p])
            oscillators[2 * p + 1].copyStepFrom (oscillators[2 * p]);
    subs[Side::right] = subs[Side::left];
    if (chainLocked)
        copyChainToRight();
    if (multibandLocked)
        multiband.copyLeftToRight();

    decimator.process (oversampledChannels[0], oversampledChannels[1], dryBuffer.getWritePointer (0),
                       dryBuffer.getWritePointer (1), n);
    outputStage (buffer, start, n);

    for (S s : { S::filterAttack, S::filterDecay, S::filterSustain, S::filterRelease })
        sm (s).skip (n);
}

void VoiceEngine::prepareCutoffs (int first, int end) noexcept
{
    auto& c = chainSlow;
    auto& g = groupCutoffs;
    const double overRate = sampleRate * 2.0;
    bool moves = false; // the loop works out coefficients only where the cut-off moves
    float last = cutoffKey;
    for (int i = first; i < end; ++i)
    {
        const auto& step = chainSteps[(size_t) i];
        // The cut-off's own value and its matrix terms, when the controls are worked out again.
        if (step.controlsUpdated)
        {
            c.envelopeSemitones = sm (S::envAmount).getNextValue() * velToFilterScale + step.sums.filterEnv;
            c.cutoffSemitones = step.sums.cutoff;
            c.cutoffHz = cutoff.getNextValue();
        }
        const float octaves = (c.envelopeSemitones * step.filterEnvValue + c.cutoffSemitones) * (1.0f / 12.0f);
        const float octaveFactor = cutoffOctaveCache.get (octaves, [] (float o) { return fast::exp2 (o); });
        const size_t k = (size_t) (i - first);
        g.hz[k] = std::clamp (c.cutoffHz * octaveFactor, 20.0f, 20000.0f);
        g.limited[k] = VoiceFilter::limitCutoff (g.hz[k], overRate);
        moves = moves || ! (g.hz[k] == last);
        last = g.hz[k];
    }
    if (! moves)
        return;
    // Four at a time, the whole group: lanes past its end hold the last step's values, harmlessly.
    for (size_t k = (size_t) (end - first); k < (size_t) GroupCutoffs::size; ++k)
        g.limited[k] = g.limited[(size_t) (end - first - 1)];
    const float rate = VoiceFilter::rateOrDefault (overRate);
    for (size_t k = 0; k < (size_t) GroupCutoffs::size; k += 4)
    {
        fast::Lanes limited;
        std::memcpy (&limited, g.limited.data() + k, sizeof (limited));
        const fast::Lanes gain = filterDetail::integratorGain (limited, rate);
        const fast::Lanes inverse = 1.0f / (1.0f + gain);
        std::memcpy (g.g.data() + k, &gain, sizeof (gain));
        std::memcpy (g.inverse.data() + k, &inverse, sizeof (inverse));
    }
}

void VoiceEngine::renderChain (int first, int end, int leftMode, bool multibandIdle) noexcept
{
    prepareCutoffs (first, end);
    float* overLeft = oversampledChannels[0];
    float* overRight = oversampledChannels[1];
    const float* sends = subSends.data();
    const float* posts = subPosts.data();

    for (int i = first; i < end; ++i)
    {
        const auto& step = chainSteps[(size_t) i];
        if (step.chainMoved)
            updateChainControls (leftMode, step.sums);
        const auto& c = chainSlow;

        // Filter cut-off: one for every filter, so its coefficients are worked out once.
        const size_t k = (size_t) (i - first);
        const float hz = groupCutoffs.hz[k];
        bool cutoffMoved = false;
        if (! (hz == cutoffKey))
        {
            cutoffKey = hz;
            cutoffCoefficients = VoiceFilter::coefficientsFrom (groupCutoffs.limited[k], groupCutoffs.g[k],
                                                                groupCutoffs.inverse[k], sampleRate * 2.0);
            cutoffMoved = true;
        }
        const float feedbackGain = c.feedbackGain, toneCoefficient = c.toneCoefficient;
        // Without feedback nothing is added: a term of 0 would still tie each step to the whole
        // of the one before.
        const bool feedbackPre = c.feedbackPre && feedbackGain != 0.0f;
        const bool feedbackPost = ! c.feedbackPre && feedbackGain != 0.0f;
        updateChainLock (step.sourcesAlike && c.filter.stereo == 0.0f);

        // Only the filters that run take the new values: the second bank's wait for a position
        // fade, which marks them stale, and a locked right side takes the left's when it parts.
        // A moving cut-off alone leaves the other controls as they stand.
        const bool controlsMoved = step.controlsUpdated && ! (c.filter == appliedFilterControls);
        if (! cutoffApplied || cutoffMoved || controlsMoved)
        {
            const bool all = ! cutoffApplied || controlsMoved;
            const size_t banks = positionFadeCounter > 0 ? 2 : 1;
            const int sides = chainLocked ? 1 : 2;
            for (size_t b = 0; b < banks; ++b)
                for (int side = 0; side < sides; ++side)
                {
                    auto& filter = filterBanks[b][(size_t) side];
                    filter.applyCutoff (cutoffCoefficients);
                    if (all)
                    {
                        filter.setResonance (c.filter.reso);
                        filter.setPhaseControls (c.filter.mix, c.filter.notch, side == left ? -c.filter.stereo : c.filter.stereo);
                    }
                }
            cutoffApplied = true;
            appliedFilterControls = c.filter;
        }

        for (int j = 2 * i; j < 2 * i + 2; ++j)
        {
            // Drive and filter in the order of the drive position; the filter runs while disabled.
            if (driveSwitchCounter > 0)
                stepDriveSwitch();
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
                x = mixBlockers[(size_t) side].process (x) + sends[j];
                if (feedbackPre)
                    x += feedbackGain * feedbackSamples[(size_t) side];
                x = positionFading ? driveAndFilterFading (side, x, leaving, entering) : driveAndFilter (0, side, x, drivePosition);
                if (feedbackPost)
                    x += feedbackGain * feedbackSamples[(size_t) side];
                // "diode" hardly saturates above its knee, so with heavy makeup the loop could gain more
                // than it loses; the held range is far above any level the loop reaches otherwise.
                auto& tone = toneStates[(size_t) side];
                tone = std::clamp (tone + (x - tone) * toneCoefficient, -feedbackLimit, feedbackLimit);
                feedbackSamples[(size_t) side] = tone;
                return x;
            };
            const float l = chain (Side::left, overLeft[j]);
            const float r = chainLocked ? l : chain (Side::right, overRight[j]);
            if (multibandIdle)
            {
                overLeft[j] = l + posts[j];
                overRight[j] = r + posts[j];
            }
            else
            {
                overLeft[j] = l;
                overRight[j] = r;
                chainLockedSteps[(size_t) (j - 2 * first)] = chainLocked;
            }

            if (positionFading && --positionFadeCounter == 0)
                finishDrivePositionFade();
            if (driveSwitchCounter > 0 && --driveSwitchCounter == 0)
                settleDriveSwitch();
        }
    }
}

bool VoiceEngine::multibandStaysOff (int first, int end) const noexcept
{
    // Its settings move only where the chain's controls were worked out again.
    if (multiband.running())
        return false;
    for (int i = first; i < end; ++i)
        if (chainSteps[(size_t) i].chainMoved)
            return false;
    return true;
}

// The multiband drive and the sub's share after it, over the group the chain's loop has just run,
// in runs over which its settings and its lock stand. Its settings move at the host samples where
// the chain's controls were worked out again, as they would inside that loop.
void VoiceEngine::renderMultiband (int first, int end, int leftMode) noexcept
{
    static_assert (sourceGroup <= MultibandDrive::maximumRun);
    float* overLeft = oversampledChannels[0];
    float* overRight = oversampledChannels[1];
    const float* posts = subPosts.data();
    const bool* alike = chainLockedSteps.data(); // from the group's first oversampled step
    const int offset = 2 * first;

    // Host samples whose settings are worked out, in order, each once; the first of them that
    // changes the settings in force ends the run before it.
    int worked = first, changeAt = -1;
    MultibandSettings change;
    const auto workAhead = [&]
    {
        for (; worked < end; ++worked)
            if (chainSteps[(size_t) worked].chainMoved)
            {
                const auto settings = multibandSettings (leftMode, chainSteps[(size_t) worked].sums);
                if (! (multibandAppliedValid && settings == multibandApplied))
                {
                    change = settings;
                    changeAt = worked++;
                    return;
                }
            }
    };

    for (int j = 2 * first; j < 2 * end;)
    {
        if (changeAt < 0)
            workAhead();
        if (2 * changeAt == j)
        {
            applyMultiband (change);
            multibandApplied = change;
            multibandAppliedValid = true;
            changeAt = -1;
            workAhead();
        }
        const bool sidesAlike = alike[j - offset];
        if (multibandLocked && ! sidesAlike)
        {
            multiband.copyLeftToRight();
            multibandLocked = false;
        }
        else if (! multibandLocked && sidesAlike && multibandCheckDue)
        {
            multibandCheckDue = false;
            multibandLocked = multiband.sidesEqual();
        }

        // The run ends where the settings change, at a host sample, or where the lock would.
        const int bound = changeAt >= 0 ? 2 * changeAt : 2 * end;
        const int runEnd = offset + (int) (std::find (alike + j + 1 - offset, alike + bound - offset, ! sidesAlike) - alike);
        multiband.process (overLeft + j, overRight + j, runEnd - j, multibandLocked);
        for (; j < runEnd; ++j)
        {
            overLeft[j] += posts[j];
            overRight[j] += posts[j];
        }
    }
}
}
