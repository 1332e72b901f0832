#pragma once

#include "engine/WaveShape.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace morvane
{
// Polynomial band-limited step: the correction for a unit step at phase 0 of an oscillator
// advancing by dt per sample. Scale by the step's full height.
inline float blep (float t, float dt) noexcept
{
    if (dt <= 0.0f)
        return 0.0f;

    if (t < dt)
    {
        const float u = t / dt;
        return 2.0f * u - u * u - 1.0f;
    }

    if (t > 1.0f - dt)
    {
        const float v = (t - 1.0f) / dt;
        return v * v + 2.0f * v + 1.0f;
    }

    return 0.0f;
}

// One phase-distortion voice oscillator at the oversampled rate, with its own DCW envelope.
struct PdOscillator
{
    double sampleRate = 88200.0;
    float inverseRate = 1.0f / 88200.0f;

    float phase = 0.0f;
    float increment = 0.0f;
    float frequency = 0.0f;
    float dcwDepth = 0.0f;
    float rmsGain = 1.0f;
    int wave = 0;
    juce::ADSR dcwEnvelope;
    float pulseWidth = 0.5f;
    float morph = 0.0f;

    bool syncEnabled = false;
    const PdOscillator* syncSource = nullptr;
    bool wrapped = false;
    float wrapFraction = 0.0f;
    float pendingStep = 0.0f;

    int fadeLength = 1;
    int fadeCounter = 0;
    float oldPhase = 0.0f;
    float oldDcw = 0.0f;

    float dcwValue = 0.0f;

    // The wave and the morph's next wave at the DCW they were made for.
    WaveForm form, morphForm;
    float formDcw = std::numeric_limits<float>::quiet_NaN();
    float morphFormDcw = std::numeric_limits<float>::quiet_NaN();
    // The other side of the pair, which steps first: its DCW envelope runs as this one's, so a
    // wave it has just made for the same DCW is taken rather than made again.
    const PdOscillator* formPartner = nullptr;

    void prepare (double oversampledRate) noexcept;
    void setWave (int newWave) noexcept;

    // Keeps running on the old phase while the new one fades in, hiding the jump.
    void resetPhase (float newPhase) noexcept;

    // One oversampled step. An inaudible oscillator (its gain 0) keeps its phase, envelope and
    // sync edges running but shapes nothing, and gives 0.
    float process (bool audible = true) noexcept { return step (audible, nullptr, 0); }

    // Steps whose value is the wave at their phase and DCW, with no sync edge or fade to blend
    // and no morph towards the pulse, can leave the wave to one pass over many steps, which runs
    // in vector lanes: the step records its phase, DCW and morph at slot j of the run and gives
    // only its other terms. completeRun then adds the waves where a step was deferred.
    struct Run
    {
        static constexpr int capacity = 128;
        float phase[capacity] {}, dcw[capacity] {}, morph[capacity] {}, increment[capacity] {};
        int deferred[capacity] {}; // 0 or 1, written for every step: an int, so that the passes vectorise

        void defer (int j, float p, float d, float m, float dt = 0.0f) noexcept
        {
            phase[j] = p;
            dcw[j] = d;
            morph[j] = m;
            increment[j] = dt;
        }
        // The first deferred step of the first count, or count if there is none. A wave that
        // never defers (the pulse) finds that out in one pass over the lanes.
        int firstDeferred (int count) const noexcept
        {
            int any = 0;
            for (int j = 0; j < count; ++j)
                any |= deferred[j];
            if (any == 0)
                return count;
            int first = 0;
            while (deferred[first] == 0)
                ++first;
            return first;
        }
        // The run's first count steps for one wave, gain and next wave's gain, from its first
        // deferred step. What the deferred steps share is gathered here in one pass over the
        // lanes, not at every step; steps not deferred hold stale values and are masked out.
        WaveRun forWave (int wave, float gain, float nextGain, int count, int first, bool bandLimited) const noexcept
        {
            // The bits are compared: a DCW is never NaN, and 0 against -0 only costs the run its
            // shortcut.
            const float heldDcw = dcw[first];
            const std::uint32_t held = bitsOf (heldDcw);
            int moved = 0, morphs = 0;
            for (int j = 0; j < count; ++j)
            {
                moved |= deferred[j] & (int) (bitsOf (dcw[j]) != held);
                morphs |= deferred[j] & (int) (morph[j] > 0.0f);
            }
            return { wave, phase, bandLimited ? increment : nullptr, dcw, morph, deferred, gain, nextGain, morphs != 0, moved == 0, heldDcw };
        }

    private:
        static std::uint32_t bitsOf (float x) noexcept
        {
            std::uint32_t b;
            std::memcpy (&b, &x, sizeof b);
            return b;
        }
    };
    // Whether the settings alone let a step leave its wave to a run: no sync, and no pulse to
    // shape or morph towards. They hold for a host sample, so the voice asks once for its steps.
    bool settingsDefer() const noexcept
    {
        return ! syncEnabled && wave != pwmWave && ! (morph > 0.0f && wave + 1 == pwmWave);
    }

    float processDeferring (bool audible, Run& run, int j) noexcept
    {
        return processDeferring (audible, settingsDefer(), run, j);
    }

    float processDeferring (bool audible, bool settingsLetDefer, Run& run, int j) noexcept
    {
        // The usual step, inline: no fade, and if heard no edge still to smooth, so it only
        // moves the clock and the DCW and leaves its wave to the run.
        if (! settingsLetDefer || fadeCounter > 0 || (audible && pendingStep != 0.0f))
            return plainPulse() ? pulseStep (audible, run, j) : step (audible, &run, j);
        increment = frequency * inverseRate;
        stepDcw();
        run.deferred[j] = audible ? 1 : 0;
        if (audible)
            run.defer (j, phase, dcwValue, morph, increment);
        else
            pendingStep = 0.0f;
        advancePhase();
        return 0.0f;
    }
    void completeRun (const Run& run, float* values, int count) const noexcept;

    // Whether other runs exactly as this one does, so that copying this one's state after each
    // step stands in for running it (the two sides of an undetuned, unsynced oscillator).
    bool inStepWith (const PdOscillator& other) const noexcept;
    bool sameSettingsAs (const PdOscillator& other) const noexcept;
    void copyStepFrom (const PdOscillator& other) noexcept;

private:
    float step (bool audible, Run* run, int j) noexcept;

    // The pulse's usual step, inline: unsynced, no fade, no edge left to smooth. The same
    // operations as step's for it.
    bool plainPulse() const noexcept { return wave == pwmWave && ! syncEnabled && fadeCounter == 0 && pendingStep == 0.0f; }
    float pulseStep (bool audible, Run& run, int j) noexcept
    {
        increment = frequency * inverseRate;
        stepDcw();
        run.deferred[j] = 0;
        const float y = audible ? pulseValue() * rmsGain : 0.0f;
        advancePhase();
        return y;
    }

    // The pulse at the present phase, both edges smoothed: the polynomial spans a step of 2, the
    // full height of each edge.
    float pulseValue() const noexcept
    {
        const float w = pulseWidth;
        const float y = (w > phase ? 1.0f : -1.0f) - (1.0f - 2.0f * w) + blep (phase, increment);
        float t = phase - w;
        if (t < 0.0f)
            t += 1.0f;
        return y - blep (t, increment);
    }

    void stepDcw() noexcept
    {
        const float raw = dcwEnvelope.getNextSample() * dcwDepth;
        // Bright shapes alias on high notes: DCW falls to 0 at a sixtieth of the oversampled rate.
        dcwValue = std::clamp (std::min (1.0f - 60.0f * increment, raw), 0.0f, 1.0f);
    }

    void advancePhase() noexcept
    {
        phase += increment;
        if (phase >= 1.0f)
            wrapPhase();
        else
        {
            wrapped = false;
            wrapFraction = 0.0f;
        }
    }
    void wrapPhase() noexcept;
    float shapeAt (int w, float p, float dcw) const noexcept;
    const WaveForm& formAt (float dcw) noexcept;
    // The wave's value with its edges smoothed, as a run gives it. A step that sync has just
    // restarted did not come round its wrap: the sync's own edge smooths that jump.
    float bandLimitedAt (const WaveForm& f, float p, bool edges) const noexcept
    {
        const float y = f.at (p);
        return edges && WaveForm::hasEdges (f.wave) ? y + f.edges().at (p, increment) : y;
    }
    const WaveForm& morphFormAt (float dcw) noexcept;
};
}
