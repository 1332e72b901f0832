#pragma once

#include <vector>

namespace morvane
{
// Two-line echo with a smoothed time, a saturating feedback path holding a tone low-pass and a
// 120 Hz high-pass, and ping-pong.
struct StereoDelay
{
    double sampleRate = 44100.0;
    std::vector<float> lineLeft, lineRight;
    int writeIndex = 0;
    int mask = 0;
    bool enabled = false;
    bool pingPong = false;
    float mix = 0.3f;
    float feedback = 0.4f;
    float currentLeft = 0.0f, currentRight = 0.0f;
    float targetLeft = 0.0f, targetRight = 0.0f;
    float smoothing = 0.001f;
    float toneHz = 6000.0f;
    float toneCoefficient = 0.5f;
    float dcCoefficient = 0.99f;
    float toneLeft = 0.0f, toneRight = 0.0f;
    float dcInputLeft = 0.0f, dcOutputLeft = 0.0f, dcInputRight = 0.0f, dcOutputRight = 0.0f;

    void prepare (double rate);
    void updateCoefficients() noexcept;
    // Both lines get the same time, limited to what the lines hold.
    void setDelayTimeMs (float ms) noexcept;
    bool active() const noexcept { return enabled && mix > 0.0f && ! lineLeft.empty(); }
    void process (float& left, float& right) noexcept;
    // The same, over a block of distinct left and right samples.
    void process (float* left, float* right, int numSamples) noexcept;

private:
    float read (const std::vector<float>& line, float delay) const noexcept;
    void step (float& left, float& right) noexcept;
    void sharedTimeRun (float* left, float* right, int numSamples) noexcept;
};
}
