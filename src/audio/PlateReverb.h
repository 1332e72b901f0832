#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace morvane
{
struct AllpassLine
{
    std::vector<float> buffer;
    int mask = 0;
    int delay = 1;
    int writeIndex = 0;
    float coefficient = 0.0f;

    float process (float x) noexcept;
    // Reads at delay + excursion, interpolated: the tank's slowly moving all-pass.
    float processModulated (float x, float excursion) noexcept;
    float tap (int offset) const noexcept { return buffer[(std::size_t) ((writeIndex - offset) & mask)]; }
    // The same over a run of n <= delay samples, in place: every read then comes from before the run.
    void processRun (float* x, int n) noexcept;
};

struct DelayLine
{
    std::vector<float> buffer;
    int mask = 0;
    int delay = 1;
    int writeIndex = 0;

    float process (float x) noexcept
    {
        buffer[(std::size_t) writeIndex] = x;
        writeIndex = (writeIndex + 1) & mask;
        return buffer[(std::size_t) ((writeIndex - delay) & mask)];
    }
    float tap (int offset) const noexcept { return buffer[(std::size_t) ((writeIndex - offset) & mask)]; }
};

// A figure-of-eight plate tank: predelay, bandwidth, four diffusers, two cross-coupled tanks and
// seven output taps per side. Lengths are those of a 29761 Hz design, scaled to the rate.
struct PlateReverb
{
    struct Tank
    {
        AllpassLine allpass1;
        DelayLine delay1;
        AllpassLine allpass2;
        DelayLine delay2;
        float dampingState = 0.0f;
    };

    double sampleRate = 44100.0;
    float rateRatio = 1.0f;
    bool enabled = false;
    float bandwidth = 0.7f;
    float bandwidthCoefficient = 0.7f;
    float damping = 0.4f;
    float dampingCoefficient = 0.6f;
    float decay = 0.6f;
    float mix = 0.25f;
    int predelaySamples = 0;
    std::vector<float> predelayLine;
    int predelayWrite = 0, predelayMask = 0;
    std::array<AllpassLine, 4> diffusers;
    std::array<Tank, 2> tanks;
    float inputLowpass = 0.0f;
    float lfoPhase = 0.0f;
    float feedbackToFirst = 0.0f, feedbackToSecond = 0.0f;
    // The fourteen output tap offsets, scaled once in prepare.
    std::array<int, 14> taps {};
    // The longest run of samples that can go through one stage after another rather than one
    // sample at a time: shorter than every line's delay, so no read of a run waits for a write of
    // the same run. Below minimumRun (at very low rates) the samples go one at a time.
    static constexpr int maximumRun = 64, minimumRun = 8;
    int run = 1;

    void prepare (double rate);
    void reset() noexcept;

    // Block-rate settings with their derived coefficients.
    void setBandwidth (float b) noexcept;
    void setDamping (float d) noexcept;
    void setDecay (float d) noexcept;
    void setPredelayMs (float ms) noexcept;

    bool active() const noexcept { return enabled && mix > 0.0f && ! predelayLine.empty(); }
    void process (float& left, float& right) noexcept;
    // The same, over a block of distinct left and right samples.
    void process (float* left, float* right, int numSamples) noexcept;

private:
    void step (float& left, float& right) noexcept;
    void processRun (float* left, float* right, int n) noexcept;
    void tanksRun (float* in1, float* in2, const float* excursion1, const float* excursion2, int n) noexcept;
    int scaled (int length) const noexcept;
    float tankStep (Tank& tank, float input, float excursion) noexcept;
};
}
