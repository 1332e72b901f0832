#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace morvane
{
// Power-of-two delay line with a linearly interpolated read ahead of the write.
struct ModDelayLine
{
    double sampleRate = 44100.0;
    std::vector<float> buffer;
    int writeIndex = 0;
    int mask = 0;

    void prepare (double rate, int minimumSize);
    float read (float delaySamples) const noexcept;
    void write (float x) noexcept
    {
        buffer[(std::size_t) writeIndex] = x;
        writeIndex = (writeIndex + 1) & mask;
    }
};

// First-order all-pass section of the phaser.
struct PhaserStage
{
    double sampleRate = 44100.0;
    float coefficient = 0.0f;
    float lastInput = 0.0f;
    float lastOutput = 0.0f;
};

// One channel of chorus, flanger or phaser at the host rate.
struct ModFx
{
    enum Mode { chorus, flanger, phaser };

    double sampleRate = 44100.0;
    bool enabled = false;
    int mode = chorus;
    float rateHz = 0.6f;
    float depth = 0.5f;
    float feedback = 0.0f;
    float mix = 0.5f;
    float lfoOffset = 0.0f;
    float lfoPhase = 0.0f;
    float phaserLast = 0.0f;
    float chorusLowpass = 0.0f;
    float chorusCoefficient = 0.0f;
    ModDelayLine line;
    std::array<PhaserStage, 4> stages;

    // The phaser's corners glide in straight lines between exact values worked out every
    // cornerSpan samples; over a span the sharpest bend of the sweep moves them by less than
    // 1e-5 of their value (1 works every corner out on every sample).
    int cornerSpan = 8;
    int glideSpan() const noexcept { return cornerSpan > 1 ? cornerSpan : 1; } // a span below 1 is 1
    std::array<float, 4> cornerStep {};
    int cornerCountdown = 0;
    bool glideGoesOn = false;

    void prepare (double rate);

    bool active() const noexcept { return enabled && mix > 0.0f && ! line.buffer.empty(); }

    // Bypassed, it passes the input and its state stands still; the phaser's glide starts afresh.
    float process (float input) noexcept
    {
        if (! active())
        {
            bypass();
            return input;
        }
        return processActive (input);
    }

    // A left and a right unit, each on its own side: the same as each one's process, with the two
    // steps side by side, so that the processor overlaps their independent chains.
    static void processPair (ModFx& leftUnit, ModFx& rightUnit, float& left, float& right) noexcept
    {
        if (leftUnit.active() && rightUnit.active())
        {
            processActivePair (leftUnit, rightUnit, left, right);
            return;
        }
        left = leftUnit.process (left);
        right = rightUnit.process (right);
    }
    // The same, in place over a block of distinct left and right samples.
    static void processPair (ModFx& leftUnit, ModFx& rightUnit, float* left, float* right, int numSamples) noexcept;

private:
    void bypass() noexcept
    {
        cornerCountdown = 0;
        glideGoesOn = false;
    }
    float processActive (float input) noexcept;
    static void processActivePair (ModFx& leftUnit, ModFx& rightUnit, float& left, float& right) noexcept;
    static void phaserPairRun (ModFx& leftUnit, ModFx& rightUnit, float* left, float* right, int numSamples) noexcept;
    float step (float input) noexcept;
    float phaserStep (float input) noexcept;
    void nextGlide() noexcept;
    // The sweep's frequency where the LFO stands at a phase, and the four corners it gives.
    float sweepAt (float lfoPhaseAt) const noexcept;
    std::array<float, 4> cornersFor (float sweepHz) const noexcept;
};
}
