#pragma once

#include <juce_core/juce_core.h>

#include <array>

namespace morvane
{
// The voice's one LFO at host rate: free or tempo-synced, four shapes, phase offset.
struct EngineLfo
{
    enum Shape { sine, tri, sqr, sampleAndHold };

    struct SyncRow
    {
        const char* label;
        float beats;
    };

    static const std::array<SyncRow, 10>& syncTable();

    // Row of the sync table that a position (0..1) of the rate control selects.
    static int syncIndexFor (float normalisedRate) noexcept;

    double sampleRate = 44100.0;
    float inverseRate = 1.0f / 44100.0f;
    float phase = 0.0f;
    float increment = 0.0f;
    float rateHz = 1.0f;
    float bpm = 120.0f;
    float phaseOffset = 0.0f;
    float heldValue = 0.0f;
    int shape = sine;
    float beats = 0.5f;
    bool synced = false;
    juce::Random random { 0xC0FFEE };

    void prepare (double hostRate) noexcept;

    // rate carries the matrix's share, which reaches only the free rate; normalisedRate is the
    // position of the plain rate on its control and picks the sync row.
    void update (float rate, float normalisedRate, float phaseDegrees, int newShape, bool newSynced) noexcept;

    void drawHeldValue() noexcept { heldValue = 2.0f * random.nextFloat() - 1.0f; }
    void resetPhase() noexcept { phase = 0.0f; }

    // One host sample of the wave, before depth.
    float step() noexcept
    {
        const float w = wave();
        advance();
        return w;
    }

    float wave() const noexcept;
    void advance() noexcept;
};

// A new random goal every interval, followed by a one-pole slew.
struct SmoothRandom
{
    float value = 0.0f, target = 0.0f, coefficient = 1.0f;
    int interval = 1, counter = 0;
    juce::Random random { 0x5A771CE };

    void prepare (double hostRate) noexcept;
    float step() noexcept;
};
}
