#include "engine/VoiceEngine.h"
#include "engine/FastMath.h"

#include "engine/ModMatrixEval.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

namespace morvane
{
namespace
{
    // 2^(semitones / 12), exactly 1 at 0 so that an untouched control costs no pow. Pitch keeps
    // the library's exp2: a frequency error of 1e-7 grows into audible phase drift over a note.
    inline float semitoneRatio (float semitones) noexcept
    {
        return semitones == 0.0f ? 1.0f : std::exp2 (semitones * (1.0f / 12.0f));
    }
}

bool VoiceEngine::anyControlSmoothing() const noexcept
{
    // The filter envelope's smoothers are skipped a chunk at a time and feed no control here.
    for (size_t s = 0; s < (size_t) S::filterAttack; ++s)
        if (linear[s].isSmoothing())
            return true;
    return cutoff.isSmoothing() || lowCross.isSmoothing() || highCross.isSmoothing() || notchHz.isSmoothing();
}

void VoiceEngine::updateSlowControls (bool all) noexcept
{
    auto& c = slow;
    // Without a moving smoother each group of controls follows its own sums alone, so a group
    // whose sums hold their bits is left as it stands (its smoothers would return their targets).
    const auto moved = [&] (std::initializer_list<int> destinations)
    {
        if (all)
            return true;
        for (int d : destinations)
            if (std::memcmp (&sums.sum[(size_t) d], &settledSums.sum[(size_t) d], sizeof (float)) != 0)
                return true;
        return false;
    };

    // Pitch bend and the matrix's pitch.
    if (moved ({ dest::pitch }))
        c.pitchRatio = semitoneRatio (sm (S::bend).getNextValue() + sums[dest::pitch]);

    // Detune and beat: mode 1 adds hertz, mode 0 multiplies.
    if (moved ({ dest::reeseSpread, dest::reeseBeat, dest::osc2DetuneHz, dest::osc2Detune }))
    {
        const float detuneCents = sm (S::detuneCents).getNextValue();
        const float detuneHz = sm (S::detuneHz).getNextValue();
        const float spread = std::clamp (sm (S::stereoWidth).getNextValue() + sm (S::spread).getNextValue()
                                             + sums[dest::reeseSpread], 0.0f, 1.0f);
        c.beat = std::clamp (sm (S::beat).getNextValue() + sums[dest::reeseBeat], 0.0f, 40.0f);
        c.w = 1.0f - 2.0f * spread; // 1 mono, 0 only left detuned, -1 opposite sides
        if (detuneMode == 1)
        {
            c.detuneOffset = detuneHz + sums[dest::osc2DetuneHz] + c.beat;
        }
        else
        {
            const float octaves = (detuneCents + sums[dest::osc2Detune]) * 0.00083333335f;
            const auto exp2 = [] (float o) { return std::exp2 (o); };
            c.detuneRatio = detuneCache.get (octaves, exp2);
            c.detuneLowRatio = c.w == 1.0f ? c.detuneRatio : detuneLowCache.get (c.w * octaves, exp2);
        }
    }

    if (moved ({ dest::drift }))
    {
        c.driftAmount = sm (S::drift).getNextValue() + sums[dest::drift];
        c.tune1 = semitoneRatio (sm (S::osc1Tune).getNextValue());
        c.tune2 = semitoneRatio (sm (S::osc2Tune).getNextValue());
    }

    // DCW depths, morph, pulse widths.
    if (moved ({ dest::osc1Dcw, dest::osc2Dcw, dest::pdMorph, dest::osc1Pw, dest::osc2Pw, dest::subDcw }))
    {
        const bool lock = params.on (P::reeseLock);
        const float dcw1Smoothed = sm (S::osc1Dcw).getNextValue();
        const float dcw2Smoothed = sm (S::osc2Dcw).getNextValue();
        const float depth1 = std::clamp (dcw1Smoothed + sums[dest::osc1Dcw], 0.0f, 1.0f);
        const float depth2 = std::clamp ((lock ? dcw1Smoothed : dcw2Smoothed) + sums[dest::osc2Dcw], 0.0f, 1.0f);
        const float morph = std::clamp (sm (S::morph).getNextValue() + sums[dest::pdMorph], 0.0f, 1.0f);
        const float width1 = std::clamp (sm (S::osc1Width).getNextValue() + sums[dest::osc1Pw], 0.05f, 0.95f);
        const float width2Smoothed = sm (S::osc2Width).getNextValue();
        const float width2 = std::clamp ((lock ? width1 : width2Smoothed) + sums[dest::osc2Pw], 0.05f, 0.95f);
        const float subDcw = std::clamp (sm (S::subDcw).getNextValue() + sums[dest::subDcw], 0.0f, 1.0f);
        for (auto& sub : subs)
            sub.dcw = subDcw;
        for (int o = 0; o < 4; ++o)
        {
            auto& osc = oscillators[(size_t) o];
            osc.dcwDepth = o < 2 ? depth1 : depth2;
            osc.pulseWidth = o < 2 ? width1 : width2;
            osc.morph = morph;
        }
    }

    // Oscillator and sub gains. An oscillator at gain 0 is not heard (in ring mode, neither is
    // heard unless both are).
    if (moved ({ dest::osc1Level, dest::osc2Level, dest::subLevel }))
    {
        c.gain1 = sm (S::osc1Gain).getNextValue() * sumGainFactor (sums[dest::osc1Level]);
        c.gain2 = sm (S::osc2Gain).getNextValue() * sumGainFactor (sums[dest::osc2Level]);
        c.gainSub = sm (S::subGain).getNextValue() * sumGainFactor (sums[dest::subLevel]);
        c.audible1 = c.gain1 != 0.0f && (mode != 1 || c.gain2 != 0.0f);
        c.audible2 = c.gain2 != 0.0f && (mode != 1 || c.gain1 != 0.0f);
    }

    // Mod FX and post EQ.
    if (moved ({ dest::modFxRate, dest::modFxDepth, dest::eqNotchHz }))
    {
        auto& out = c.output;
        out.fxEnabled = params.on (P::modFxEnable);
        out.fxMode = std::clamp (params.index (P::modFxMode), 0, 2);
        out.fxRate = std::clamp (sm (S::modFxRate).getNextValue() + sums[dest::modFxRate], 0.05f, 8.0f);
        out.fxDepth = std::clamp (sm (S::modFxDepth).getNextValue() + sums[dest::modFxDepth], 0.0f, 1.0f);
        out.fxFeedback = std::clamp (sm (S::modFxFeedback).getNextValue(), 0.0f, 0.95f);
        out.fxMix = std::clamp (sm (S::modFxMix).getNextValue(), 0.0f, 1.0f);
        out.eqEnabled = params.on (P::postEqEnable);
        out.tilt = std::clamp (sm (S::tilt).getNextValue(), -12.0f, 12.0f);
        const float notchSum = sums[dest::eqNotchHz];
        out.notchHz = std::clamp (notchHz.getNextValue() * (notchSum != 0.0f ? fast::exp2 (notchSum * (1.0f / 12.0f)) : 1.0f),
                                  50.0f, 12000.0f);
        out.notchDepth = std::clamp (sm (S::notchDepth).getNextValue(), 0.0f, 1.0f);
    }

    // Output gain and the matrix's amp factor; the amp envelope joins them per sample.
    if (moved ({ dest::output }))
        c.outGain = sm (S::outputGain).getNextValue() * sumGainFactor (sums[dest::output]);
    c.ampFactor = sums.ampFactor;

    // Sums read by the LFO on the next sample.
    lastLfoRateSum = sums[dest::lfo1Rate];
    lastLfoDepthSum = sums[dest::lfo1Depth];
    osc2PhaseSum = sums[dest::osc2Phase];

    // Noise split: a balance between noise through drive and filter and noise around them.
    if (moved ({ dest::noiseLevel }))
    {
        const float noiseGain = sm (S::noiseGain).getNextValue() * sumGainFactor (sums[dest::noiseLevel]);
        const float route = std::clamp (sm (S::noiseRouting).getNextValue(), 0.0f, 1.0f);
        c.noisePreGain = (1.0f - route) * noiseGain;
        c.noisePostGain = route * noiseGain;
        c.noiseHeard = noiseGain != 0.0f;
    }

    // Sub send: its smoother alone.
    if (all)
    {
        const float sendValue = sm (S::subSend).getNextValue();
        c.send = subRouting == postFilter ? 0.0f : std::clamp (sendValue, 0.0f, 1.0f);
        c.postShare = 1.0f - c.send;
    }
}

void VoiceEngine::updateChainControls (int leftMode, const ChainSums& chainSums) noexcept
{
    auto& c = chainSlow;

    // Drive gain, makeup, drive mix, filter wet.
    const float driveDb = sm (S::driveDb).getNextValue() * velToDriveScale + chainSums.drive;
    const float driveGain = driveGainCache.get (std::clamp (driveDb, 0.0f, 24.0f),
                                                [] (float d) { return std::pow (10.0f, d * 0.05f); });
    for (auto& bank : shaperBanks)
        for (auto& shaper : bank)
            shaper.gain = driveGain;
    float autoGain = 1.0f;
    if (autoMakeup)
    {
        if (leftMode != makeupCacheMode)
        {
            makeupCacheMode = leftMode;
            makeupCache.key = std::numeric_limits<float>::quiet_NaN();
        }
        autoGain = makeupCache.get (driveDb, [leftMode] (float d) { return DriveShaper::autoMakeup (leftMode, d); });
    }
    driveMakeup = sm (S::makeupGain).getNextValue() * autoGain;
    driveMixAmount = std::clamp (sm (S::driveMix).getNextValue(), 0.0f, 1.0f);
    filterWetAmount = std::clamp (sm (S::filterWet).getNextValue(), 0.0f, 1.0f);

    // Filter; its cut-off is worked out ahead, by prepareCutoffs.
    c.filter = {
        std::clamp (sm (S::resonance).getNextValue() + chainSums.resonance, 0.0f, 1.0f),
        std::clamp (sm (S::phaseMix).getNextValue() + chainSums.phaseMix, 0.0f, 1.0f),
        std::clamp (sm (S::phaseNotch).getNextValue() + chainSums.phaseNotch, 0.0f, 1.0f),
        std::clamp (sm (S::phaseStereo).getNextValue(), 0.0f, 1.0f)
    };

    // Feedback.
    c.feedbackGain = std::clamp (sm (S::feedback).getNextValue() + chainSums.feedback, 0.0f, 1.0f) * 0.35f;
    c.toneCoefficient = toneCache.get (sm (S::feedbackTone).getNextValue(), [this] (float tone)
                                       { return 1.0f - std::exp (-6.2831855f * tone / (2.0f * (float) sampleRate)); });
    c.feedbackPre = params.index (P::feedbackPosition) == preDrive;
}
}
