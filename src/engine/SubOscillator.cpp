#include "engine/SubOscillator.h"
#include "engine/FastMath.h"

#include "engine/WaveShape.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void SubOscillator::prepare (double oversampledRate) noexcept
{
    sampleRate = oversampledRate > 0.0 ? oversampledRate : 88200.0;
    inverseRate = (float) (1.0 / sampleRate);
    phase = increment = oldPhase = 0.0f;
    fadeLength = std::max ((int) (sampleRate * 0.005 + 0.5), 1);
    fadeCounter = 0;
}

void SubOscillator::setShape (bool pd, int newWave) noexcept
{
    usePd = pd;
    wave = std::clamp (newWave, 0, numWaves - 1);
    rmsGain = waveRmsGain()[(size_t) wave];
}

void SubOscillator::resetPhase() noexcept
{
    oldPhase = phase;
    fadeCounter = fadeLength;
    phase = 0.0f;
}

float SubOscillator::valueAt (float p) const noexcept
{
    return usePd ? waveShape (wave, p, dcw, 16.0f) * rmsGain : fast::sin2pi (p);
}

void SubOscillator::completeRun (const PdOscillator::Run& run, float* values, int count) const noexcept
{
    const int first = run.firstDeferred (count);
    if (first == count)
        return;
    if (usePd)
        addWaveRun (run.forWave (wave, rmsGain, 0.0f, count, first, false), values, count);
    else
        addSineRun (run.phase, run.deferred, values, count);
}

float SubOscillator::step (bool audible, PdOscillator::Run* run, int j) noexcept
{
    const bool deferring = run != nullptr && audible && fadeCounter == 0;
    if (run != nullptr)
    {
        run->deferred[j] = deferring ? 1 : 0;
        if (deferring)
            run->defer (j, phase, dcw, 0.0f);
    }
    float y = audible && ! deferring ? valueAt (phase) : 0.0f;
    if (fadeCounter > 0)
    {
        if (audible)
        {
            const float old = valueAt (oldPhase);
            const float x = 1.0f - (float) fadeCounter / (float) fadeLength;
            const float s = (3.0f - 2.0f * x) * x * x;
            y = (1.0f - s) * old + s * y;
        }
        oldPhase += increment;
        if (oldPhase >= 1.0f)
            oldPhase -= std::floor (oldPhase);
        --fadeCounter;
    }

    phase += increment;
    if (phase >= 1.0f)
        phase -= std::floor (phase);
    return y;
}
}
