#include "audio/ModFx.h"
#include "engine/FastMath.h"

#include "audio/DelayRead.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace morvane
{
void ModDelayLine::prepare (double rate, int minimumSize)
{
    sampleRate = rate;
    buffer.assign ((size_t) juce::nextPowerOfTwo (minimumSize), 0.0f);
    mask = (int) buffer.size() - 1;
    writeIndex = 0;
}

float ModDelayLine::read (float delaySamples) const noexcept
{
    return readInterpolated (buffer, writeIndex, mask, std::clamp (delaySamples, 0.0f, (float) mask));
}

void ModFx::prepare (double rate)
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    line.prepare (sampleRate, (int) std::ceil (sampleRate * 0.040000003f) + 4);
    for (auto& stage : stages)
        stage = { sampleRate, 0.0f, 0.0f, 0.0f };
    lfoPhase = phaserLast = chorusLowpass = 0.0f;
    bypass();
    chorusCoefficient = (float) (1.0 - std::exp (-25132.742 / sampleRate)); // 4 kHz
}

float ModFx::sweepAt (float phaseAt) const noexcept
{
    return fast::exp (depth * 1.245f * fast::sin (phaseAt + lfoOffset) + 6.765f);
}

std::array<float, 4> ModFx::cornersFor (float f) const noexcept
{
    constexpr float multiples[] = { 0.5f, 0.85f, 1.2f, 1.6f };
    const float rate = (float) sampleRate;

    // One loop the compiler turns into vector code: each corner is (t - 1) / (t + 1) with
    // t = tan (pi fc / rate), written as (sin - cos) / (sin + cos). fc stays under 0.45 of the
    // rate, so the phase is under a quarter turn and needs no folding.
    std::array<float, 4> corners;
    for (size_t k = 0; k < corners.size(); ++k)
    {
        const float fc = std::clamp (multiples[k] * f, 20.0f, 0.45f * rate);
        const float turns = 0.5f * fc / rate;
        const float sine = fast::detail::sinQuarter (turns), cosine = fast::detail::sinQuarter (0.25f - turns);
        corners[k] = (sine - cosine) / (sine + cosine);
    }
    return corners;
}

void ModFx::nextGlide() noexcept
{
    // Exact where the LFO will stand a span ahead. A glide that goes on starts where the last
    // one ended, a few rounding steps from exact; a fresh one starts exact where the LFO is.
    const float increment = rateHz * 6.2831855f / (float) sampleRate;
    if (! glideGoesOn)
    {
        const auto now = cornersFor (sweepAt (lfoPhase));
        for (size_t k = 0; k < stages.size(); ++k)
            stages[k].coefficient = now[k];
    }
    const int span = glideSpan();
    const auto ahead = cornersFor (sweepAt (lfoPhase + increment * (float) span));
    for (size_t k = 0; k < stages.size(); ++k)
        cornerStep[k] = (ahead[k] - stages[k].coefficient) * (1.0f / (float) span);
    cornerCountdown = span;
    glideGoesOn = true;
}

__attribute__ ((always_inline)) inline float ModFx::phaserStep (float input) noexcept
{
    if (cornerCountdown <= 0)
        nextGlide();

    // Without feedback nothing is added: a term of 0 would still tie each sample to the whole
    // chain of the one before.
    float x = feedback == 0.0f ? input : feedback * phaserLast + input;
    for (size_t k = 0; k < stages.size(); ++k)
    {
        auto& stage = stages[k];
        // With (t - 1) / (t + 1) the pole sits at +|c|, so each stage turns a quarter cycle at fc.
        const float y = stage.coefficient * x + stage.lastInput - stage.coefficient * stage.lastOutput;
        stage.lastInput = x;
        stage.lastOutput = y;
        stage.coefficient += cornerStep[k];
        x = y;
    }
    --cornerCountdown;
    phaserLast = x;
    return x + input;
}

// One sample of an active unit; both entry points run this same step.
__attribute__ ((always_inline)) inline float ModFx::step (float input) noexcept
{
    float wet;
    if (mode == phaser)
    {
        wet = phaserStep (input);
    }
    else
    {
        bypass();
        const float s = fast::sin (lfoPhase + lfoOffset);
        if (mode == flanger)
        {
            const float delayMs = depth * 3.5f * s + 4.0f;
            const float tap = line.read (delayMs * 0.001f * (float) sampleRate);
            line.write (input + fast::tanh (tap * feedback));
            wet = tap;
        }
        else
        {
            const float delayMs = depth * 8.0f * s + 18.0f;
            const float tap = line.read (delayMs * 0.001f * (float) sampleRate);
            line.write (input);
            chorusLowpass += (tap - chorusLowpass) * chorusCoefficient;
            wet = fast::tanh (chorusLowpass * 1.2f) * 0.85f;
        }
    }

    lfoPhase += rateHz * 6.2831855f / (float) sampleRate;
    if (lfoPhase >= 6.2831855f)
        lfoPhase -= 6.2831855f;
    return (wet - input) * mix + input;
}

void ModFx::processActivePair (ModFx& leftUnit, ModFx& rightUnit, float& left, float& right) noexcept
{
    left = leftUnit.step (left);
    right = rightUnit.step (right);
}

// Two phasers whose glides keep in step, as the two lanes of one vector: each lane meets the
// operations of phaserStep in the same order, so each side gives the bits of its own unit. A
// stage's last input is the last output of the stage before it, so five vectors hold the chain.
//
// The corners where the coming glides end depend only on the LFO, so a batch of them is worked
// out first, each independent of the others, and the samples then wait for none of them: worked
// out one glide at a time, each one's exponential, sines and divisions stood between two stretches.
void ModFx::phaserPairRun (ModFx& a, ModFx& b, float* left, float* right, int numSamples) noexcept
{
    using fast::Lanes;
    Lanes chain[5];
    chain[0] = fast::sides (a.stages[0].lastInput, b.stages[0].lastInput);
    for (size_t k = 0; k < a.stages.size(); ++k)
        chain[k + 1] = fast::sides (a.stages[k].lastOutput, b.stages[k].lastOutput);
    Lanes last = fast::sides (a.phaserLast, b.phaserLast);
    Lanes coefficients[4];
    for (size_t k = 0; k < a.stages.size(); ++k)
        coefficients[k] = fast::sides (a.stages[k].coefficient, b.stages[k].coefficient);
    Lanes steps[4];
    for (size_t k = 0; k < a.stages.size(); ++k)
        steps[k] = fast::sides (a.cornerStep[k], b.cornerStep[k]);
    const Lanes feedback = fast::sides (a.feedback, b.feedback), mix = fast::sides (a.mix, b.mix);
    const bool open = a.feedback == 0.0f && b.feedback == 0.0f;
    const auto sideOpen = feedback == fast::splat (0.0f); // a unit without feedback adds no term
    const float incrementA = a.rateHz * 6.2831855f / (float) a.sampleRate;
    const float incrementB = b.rateHz * 6.2831855f / (float) b.sampleRate;
    const float span = (float) a.glideSpan(), perSample = 1.0f / span;

    constexpr int batch = 16;
    struct Stretch
    {
        int count;
        bool glides;
        std::array<float, 4> nowA, nowB, aheadA, aheadB;
    };
    std::array<Stretch, batch> plan;

    for (int i = 0; i < numSamples;)
    {
        // The batch's stretches and the LFO's phase at each one's start, by the same steps as
        // the samples would take it.
        int stretches = 0;
        std::array<float, batch> phasesA, phasesB;
        for (int at = i; at < numSamples && stretches < batch; ++stretches)
        {
            auto& stretch = plan[(size_t) stretches];
            stretch.glides = a.cornerCountdown <= 0;
            if (stretch.glides)
                a.cornerCountdown = b.cornerCountdown = a.glideSpan();
            stretch.count = std::min (numSamples - at, a.cornerCountdown);
            a.cornerCountdown -= stretch.count;
            b.cornerCountdown -= stretch.count;
            float phaseA = a.lfoPhase, phaseB = b.lfoPhase;
            phasesA[(size_t) stretches] = phaseA;
            phasesB[(size_t) stretches] = phaseB;
            for (int n = 0; n < stretch.count; ++n)
            {
                phaseA += incrementA;
                if (phaseA >= 6.2831855f)
                    phaseA -= 6.2831855f;
                phaseB += incrementB;
                if (phaseB >= 6.2831855f)
                    phaseB -= 6.2831855f;
            }
            a.lfoPhase = phaseA;
            b.lfoPhase = phaseB;
            at += stretch.count;
        }
        // Where each glide ends, and where a fresh one starts: exact where the LFO will stand.
        // The sweep's frequencies first, then the corners from them, each pass of independent steps.
        bool freshA = ! a.glideGoesOn, freshB = ! b.glideGoesOn;
        std::array<float, batch> sweepsA, sweepsB;
        for (int g = 0; g < stretches; ++g)
            if (plan[(size_t) g].glides)
            {
                sweepsA[(size_t) g] = a.sweepAt (phasesA[(size_t) g] + incrementA * span);
                sweepsB[(size_t) g] = b.sweepAt (phasesB[(size_t) g] + incrementB * span);
            }
        for (int g = 0; g < stretches; ++g)
        {
            auto& stretch = plan[(size_t) g];
            if (! stretch.glides)
                continue;
            stretch.aheadA = a.cornersFor (sweepsA[(size_t) g]);
            stretch.aheadB = b.cornersFor (sweepsB[(size_t) g]);
            if (freshA)
                stretch.nowA = a.cornersFor (a.sweepAt (phasesA[(size_t) g]));
            if (freshB)
                stretch.nowB = b.cornersFor (b.sweepAt (phasesB[(size_t) g]));
            freshA = freshB = false;
        }

        for (int g = 0; g < stretches; ++g)
        {
            const auto& stretch = plan[(size_t) g];
            if (stretch.glides)
            {
                // A glide that goes on starts where the last one ended, a fresh one exact.
                for (size_t k = 0; k < a.stages.size(); ++k)
                {
                    if (! a.glideGoesOn)
                        coefficients[k][0] = stretch.nowA[k];
                    if (! b.glideGoesOn)
                        coefficients[k][1] = stretch.nowB[k];
                    steps[k] = (fast::sides (stretch.aheadA[k], stretch.aheadB[k]) - coefficients[k]) * perSample;
                }
                a.glideGoesOn = b.glideGoesOn = true;
            }
            // One stretch of a glide, with every value in a register.
            Lanes c0 = coefficients[0], c1 = coefficients[1], c2 = coefficients[2], c3 = coefficients[3];
            const Lanes s0 = steps[0], s1 = steps[1], s2 = steps[2], s3 = steps[3];
            Lanes x0 = chain[0], y0 = chain[1], y1 = chain[2], y2 = chain[3], y3 = chain[4];
            for (int end = i + stretch.count; i < end; ++i)
            {
                const Lanes input = fast::sides (left[i], right[i]);
                const Lanes x = open ? input : (sideOpen ? input : feedback * last + input);
                const Lanes z0 = c0 * x + x0 - c0 * y0;
                const Lanes z1 = c1 * z0 + y0 - c1 * y1;
                const Lanes z2 = c2 * z1 + y1 - c2 * y2;
                const Lanes z3 = c3 * z2 + y2 - c3 * y3;
                x0 = x, y0 = z0, y1 = z1, y2 = z2, y3 = z3;
                c0 += s0, c1 += s1, c2 += s2, c3 += s3;
                last = z3;
                const Lanes wet = z3 + input;
                const Lanes out = (wet - input) * mix + input;
                left[i] = out[0];
                right[i] = out[1];
            }
            coefficients[0] = c0, coefficients[1] = c1, coefficients[2] = c2, coefficients[3] = c3;
            chain[0] = x0, chain[1] = y0, chain[2] = y1, chain[3] = y2, chain[4] = y3;
        }
    }

    for (auto [unit, lane] : { std::pair { &a, 0 }, std::pair { &b, 1 } })
    {
        for (size_t k = 0; k < unit->stages.size(); ++k)
        {
            unit->stages[k].lastInput = chain[k][lane];
            unit->stages[k].lastOutput = chain[k + 1][lane];
            unit->stages[k].coefficient = coefficients[k][lane];
            unit->cornerStep[k] = steps[k][lane];
        }
        unit->phaserLast = last[lane];
    }
}

void ModFx::processPair (ModFx& leftUnit, ModFx& rightUnit, float* left, float* right, int numSamples) noexcept
{
    if (leftUnit.active() && rightUnit.active())
    {
        if (leftUnit.mode == phaser && rightUnit.mode == phaser && leftUnit.cornerCountdown == rightUnit.cornerCountdown
            && leftUnit.glideSpan() == rightUnit.glideSpan())
        {
            phaserPairRun (leftUnit, rightUnit, left, right, numSamples);
            return;
        }
        for (int i = 0; i < numSamples; ++i)
        {
            left[i] = leftUnit.step (left[i]);
            right[i] = rightUnit.step (right[i]);
        }
        return;
    }
    // Both bypassed: the block passes as it is, and each unit's glide starts afresh.
    if (! leftUnit.active() && ! rightUnit.active())
    {
        leftUnit.bypass();
        rightUnit.bypass();
        return;
    }
    for (int i = 0; i < numSamples; ++i)
    {
        left[i] = leftUnit.process (left[i]);
        right[i] = rightUnit.process (right[i]);
    }
}

float ModFx::processActive (float input) noexcept
{
    return step (input);
}
}
