#include "engine/PdOscillator.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void PdOscillator::prepare (double oversampledRate) noexcept
{
    sampleRate = oversampledRate;
    inverseRate = oversampledRate > 0.0 ? (float) (1.0 / oversampledRate) : 0.0f;
    phase = 0.0f;
    wrapped = false;
    wrapFraction = 0.0f;
    pendingStep = 0.0f;
    fadeLength = std::max ((int) (oversampledRate * 0.005 + 0.5), 1);
    fadeCounter = 0;
    if (oversampledRate > 0.0)
        dcwEnvelope.setSampleRate (oversampledRate);
}

void PdOscillator::setWave (int newWave) noexcept
{
    wave = std::clamp (newWave, 0, numWaves - 1);
    rmsGain = waveRmsGain()[(size_t) wave];
    formDcw = morphFormDcw = std::numeric_limits<float>::quiet_NaN();
}

const WaveForm& PdOscillator::formAt (float dcw) noexcept
{
    if (! (dcw == formDcw))
    {
        formDcw = dcw;
        if (formPartner != nullptr && formPartner->formDcw == dcw && formPartner->wave == wave)
            form = formPartner->form;
        else
            form = WaveForm::make (wave, dcw, 16.0f);
    }
    return form;
}

const WaveForm& PdOscillator::morphFormAt (float dcw) noexcept
{
    if (! (dcw == morphFormDcw))
    {
        morphFormDcw = dcw;
        morphForm = WaveForm::make ((wave + 1) % numWaves, dcw, 16.0f);
    }
    return morphForm;
}

bool PdOscillator::sameSettingsAs (const PdOscillator& o) const noexcept
{
    return frequency == o.frequency && wave == o.wave && dcwDepth == o.dcwDepth && pulseWidth == o.pulseWidth
        && morph == o.morph && ! syncEnabled && ! o.syncEnabled;
}

bool PdOscillator::inStepWith (const PdOscillator& o) const noexcept
{
    return sameSettingsAs (o) && phase == o.phase && dcwValue == o.dcwValue
        && pendingStep == o.pendingStep && fadeCounter == o.fadeCounter && (fadeCounter == 0 || (oldPhase == o.oldPhase && oldDcw == o.oldDcw));
}

void PdOscillator::copyStepFrom (const PdOscillator& o) noexcept
{
    phase = o.phase;
    increment = o.increment;
    wrapped = o.wrapped;
    wrapFraction = o.wrapFraction;
    pendingStep = o.pendingStep;
    fadeCounter = o.fadeCounter;
    oldPhase = o.oldPhase;
    oldDcw = o.oldDcw;
    dcwValue = o.dcwValue;
    dcwEnvelope = o.dcwEnvelope;
}

void PdOscillator::resetPhase (float newPhase) noexcept
{
    oldPhase = phase;
    oldDcw = dcwValue;
    fadeCounter = fadeLength;
    phase = newPhase;
}

float PdOscillator::shapeAt (int w, float p, float dcw) const noexcept
{
    if (w == pwmWave)
        return pulseWidth > p ? 1.0f : -1.0f;
    return waveShape (w, p, dcw, 16.0f);
}

void PdOscillator::completeRun (const Run& run, float* values, int count) const noexcept
{
    const int first = run.firstDeferred (count);
    if (first == count)
        return;
    const int next = (wave + 1) % numWaves;
    addWaveRun (run.forWave (wave, rmsGain, waveRmsGain()[(size_t) next], count, first, true), values, count);
}

float PdOscillator::step (bool audible, Run* run, int j) noexcept
{
    increment = frequency * inverseRate;

    bool synced = false;
    float syncStep = 0.0f;
    if (syncEnabled && syncSource != nullptr && syncSource->wrapped)
    {
        const float f = std::clamp (syncSource->wrapFraction, 0.0f, 1.0f);
        const float before = audible ? shapeAt (wave, phase, dcwValue) : 0.0f;
        phase = (1.0f - f) * increment;
        if (phase >= 1.0f)
            phase -= std::floor (phase);
        syncStep = audible ? shapeAt (wave, phase, dcwValue) - before : 0.0f;
        synced = true;
    }

    stepDcw();

    const bool deferring = run != nullptr && audible && wave != pwmWave && ! synced && fadeCounter == 0
                           && ! (morph > 0.0f && (wave + 1) % numWaves == pwmWave);
    if (run != nullptr)
        run->deferred[j] = deferring ? 1 : 0;

    float y = 0.0f;
    if (audible)
    {
        if (wave == pwmWave)
        {
            y = pulseValue();
        }
        else if (deferring)
        {
            run->defer (j, phase, dcwValue, morph, increment);
        }
        else
        {
            y = bandLimitedAt (formAt (dcwValue), phase, ! synced);
        }

        y *= rmsGain;

        if (morph > 0.0f && wave != pwmWave && ! deferring)
        {
            const int next = (wave + 1) % numWaves;
            const float n = next == pwmWave ? (pulseWidth > phase ? 1.0f : -1.0f) : bandLimitedAt (morphFormAt (dcwValue), phase, ! synced);
            y += (n * waveRmsGain()[(size_t) next] - y) * morph;
        }

        if (synced && std::abs (syncStep) > 1.0e-9f)
        {
            // Halved: the polynomial spans a step of 2.
            y += blep (phase, increment) * 0.5f * syncStep;
            pendingStep = -0.5f * syncStep;
        }
        else if (pendingStep != 0.0f)
        {
            y += blep (phase + 1.0f - increment, increment) * pendingStep;
            pendingStep = 0.0f;
        }
    }
    else
    {
        pendingStep = 0.0f;
    }

    if (fadeCounter > 0)
    {
        if (audible)
        {
            const float old = rmsGain * shapeAt (wave, oldPhase, oldDcw);
            const float x = 1.0f - (float) fadeCounter / (float) fadeLength;
            const float s = (3.0f - 2.0f * x) * x * x;
            y = (1.0f - s) * old + s * y;
        }
        oldPhase += increment;
        if (oldPhase >= 1.0f)
            oldPhase -= std::floor (oldPhase);
        --fadeCounter;
    }

    advancePhase();
    return y;
}

void PdOscillator::wrapPhase() noexcept
{
    wrapped = true;
    wrapFraction = increment > 0.0f ? std::clamp (1.0f - (phase - 1.0f) / increment, 0.0f, 1.0f) : 0.0f;
    phase -= std::floor (phase);
}
}
