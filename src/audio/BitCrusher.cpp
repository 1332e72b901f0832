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

float BitCrusher::nextUniform() noexcept
{
    randomState ^= randomState << 13;
    randomState ^= randomState >> 17;
    randomState ^= randomState << 5;
    return (float) (randomState & 0xFFFFFFu) * 5.9604645e-8f;
}

float BitCrusher::quantise (float x, float& lastDither) noexcept
{
    const float levels = std::exp2 (bits - 1.0f);
    if (levels < 1.0f)
        return 0.0f;
    const float q = 1.0f / levels;
    if (dither)
    {
        const float u1 = nextUniform();
        const float u2 = nextUniform();
        const float t = (u2 + u1 - 1.0f) * q * 0.5f;
        x += t - lastDither; // first-order high-passed triangular dither
        lastDither = t;
    }
    return std::clamp (std::round (x / q) * q, -1.0f, 1.0f);
}

void BitCrusher::process (float& left, float& right) noexcept
{
    if (! enabled || mix <= 0.0f)
        return;

    const float step = rateHz / (float) sampleRate;
    float factor = 1.0f;
    if (jitter > 0.0f)
        factor = (nextUniform() - 0.5f) * 1.5f * jitter + 1.0f;
    clockPhase += factor * step;
    if (clockPhase >= 1.0f)
    {
        clockPhase -= std::floor (clockPhase);
        holdLeft = quantise (left, lastDitherLeft);
        holdRight = quantise (right, lastDitherRight);
    }
    left += (holdLeft - left) * mix;
    right += (holdRight - right) * mix;
}
}
