#include "audio/BitCrusher.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void BitCrusher::prepare (double rate) noexcept
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    holdLeft = holdRight = clockPhase = 0.0f;
    lastDitherLeft = lastDitherRight = 0.0f;
    randomState = 0xC0FFEEu;
}

__attribute__ ((always_inline)) inline float BitCrusher::nextUniform() noexcept
{
    randomState ^= randomState << 13;
    randomState ^= randomState >> 17;
    randomState ^= randomState << 5;
    return (float) (randomState & 0xFFFFFFu) * 5.9604645e-8f;
}

__attribute__ ((always_inline)) inline float BitCrusher::quantise (float x, float& lastDither, float levels) noexcept
{
    if (levels < 1.0f)
        return 0.0f;
    if (dither)
    {
        const float u1 = nextUniform();
        const float u2 = nextUniform();
        const float t = (u2 + u1 - 1.0f) * 0.5f / levels;
        x += t - lastDither; // first-order high-passed triangular dither
        lastDither = t;
    }
    // Within [-1, 1] every level is below 2^15, where adding and taking away 1.5 * 2^23 leaves
    // the nearest integer without a call.
    constexpr float shifter = 12582912.0f;
    return ((std::clamp (x, -1.0f, 1.0f) * levels + shifter) - shifter) / levels;
}

float BitCrusher::quantise (float x, float& lastDither) noexcept
{
    return quantise (x, lastDither, std::exp2 (bits - 1.0f));
}

// One sample of an active crusher; levels is 2^(bits - 1) and advance the clock's step, worked out
// once a block.
__attribute__ ((always_inline)) inline void BitCrusher::step (float& left, float& right, float levels, float advance) noexcept
{
    float factor = 1.0f;
    if (jitter > 0.0f)
        factor = (nextUniform() - 0.5f) * 1.5f * jitter + 1.0f;
    clockPhase += factor * advance;
    if (clockPhase >= 1.0f)
    {
        clockPhase -= std::floor (clockPhase);
        holdLeft = quantise (left, lastDitherLeft, levels);
        holdRight = quantise (right, lastDitherRight, levels);
    }
    left += (holdLeft - left) * mix;
    right += (holdRight - right) * mix;
}

void BitCrusher::process (float& left, float& right) noexcept
{
    if (active())
        step (left, right, std::exp2 (bits - 1.0f), rateHz / (float) sampleRate);
}

void BitCrusher::process (float* left, float* right, int numSamples) noexcept
{
    if (! active())
        return;
    const float levels = std::exp2 (bits - 1.0f);
    const float advance = rateHz / (float) sampleRate;
    for (int i = 0; i < numSamples; ++i)
        step (left[i], right[i], levels, advance);
}
}
