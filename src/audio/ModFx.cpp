#include "audio/ModFx.h"
#include "engine/FastMath.h"

#include "audio/DelayRead.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>

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

std::array<float, 4> ModFx::cornersAt (float phaseAt) const noexcept
{
    const float f = fast::exp (depth * 1.245f * fast::sin (phaseAt + lfoOffset) + 6.765f);
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
        const auto now = cornersAt (lfoPhase);
        for (size_t k = 0; k < stages.size(); ++k)
            stages[k].coefficient = now[k];
    }
    const auto ahead = cornersAt (lfoPhase + increment * (float) cornerSpan);
    for (size_t k = 0; k < stages.size(); ++k)
        cornerStep[k] = (ahead[k] - stages[k].coefficient) * (1.0f / (float) cornerSpan);
    cornerCountdown = cornerSpan;
    glideGoesOn = true;
}

__attribute__ ((always_inline)) inline float ModFx::phaserStep (float input) noexcept
{
    if (cornerCountdown <= 0)
        nextGlide();

    float x = feedback * phaserLast + input;
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

void ModFx::processPair (ModFx& leftUnit, ModFx& rightUnit, float* left, float* right, int numSamples) noexcept
{
    if (leftUnit.active() && rightUnit.active())
    {
        for (int i = 0; i < numSamples; ++i)
        {
            left[i] = leftUnit.step (left[i]);
            right[i] = rightUnit.step (right[i]);
        }
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
