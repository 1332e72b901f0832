#pragma once

#include <cstdint>

namespace morvane
{
// Sample-and-hold rate reducer on a jittering clock, then a quantiser with high-passed TPDF dither.
struct BitCrusher
{
    double sampleRate = 44100.0;
    bool enabled = false;
    bool dither = false;
    float bits = 12.0f;
    float rateHz = 22050.0f;
    float jitter = 0.0f;
    float mix = 0.5f;
    float holdLeft = 0.0f, holdRight = 0.0f;
    float clockPhase = 0.0f;
    float lastDitherLeft = 0.0f, lastDitherRight = 0.0f;
    std::uint32_t randomState = 0xC0FFEEu;

    void prepare (double rate) noexcept;
    bool active() const noexcept { return enabled && mix > 0.0f; }
    void process (float& left, float& right) noexcept;
    // The same, over a block of distinct left and right samples.
    void process (float* left, float* right, int numSamples) noexcept;
    float quantise (float x, float& lastDither) noexcept;

private:
    float nextUniform() noexcept;
    float quantise (float x, float& lastDither, float levels) noexcept;
    void step (float& left, float& right, float levels, float advance) noexcept;
};
}
