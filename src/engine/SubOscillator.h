#pragma once

#include "engine/PdOscillator.h"

#include <cmath>

namespace morvane
{
// The sub: a sine or a plain PD wave, no envelope, no sync, no band-limiting.
struct SubOscillator
{
    double sampleRate = 88200.0;
    float inverseRate = 1.0f / 88200.0f;
    float phase = 0.0f;
    float increment = 0.0f;
    bool usePd = false;
    int wave = 0;
    float dcw = 0.0f;
    float rmsGain = 1.0f;
    int fadeLength = 1;
    int fadeCounter = 0;
    float oldPhase = 0.0f;

    void prepare (double oversampledRate) noexcept;
    void setShape (bool pd, int newWave) noexcept;
    void setFrequency (float hz) noexcept { increment = hz * inverseRate; }

    // Runs on from the old phase while the new one fades in.
    void resetPhase() noexcept;

    // One step. An inaudible sub (its gain 0) keeps its phases running but shapes nothing.
    float process (bool audible = true) noexcept { return step (audible, nullptr, 0); }

    // As an oscillator's: a step outside a phase fade leaves its wave to completeRun.
    float processDeferring (bool audible, PdOscillator::Run& run, int j) noexcept
    {
        // The usual step, inline: outside a fade it only records its phase, if it is heard, and
        // moves it.
        if (fadeCounter > 0)
            return step (audible, &run, j);
        run.deferred[j] = audible ? 1 : 0;
        if (audible)
            run.defer (j, phase, dcw, 0.0f);
        phase += increment;
        if (phase >= 1.0f)
            phase -= std::floor (phase);
        return 0.0f;
    }
    void completeRun (const PdOscillator::Run& run, float* values, int count) const noexcept;

private:
    float step (bool audible, PdOscillator::Run* run, int j) noexcept;
    float valueAt (float p) const noexcept;
};
}
