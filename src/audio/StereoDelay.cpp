#include "audio/StereoDelay.h"
#include "engine/FastMath.h"

#include "audio/DelayRead.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>

namespace morvane
{
void StereoDelay::prepare (double rate)
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    const int size = juce::nextPowerOfTwo ((int) std::ceil (sampleRate * 1.5) + 4);
    lineLeft.assign ((size_t) size, 0.0f);
    lineRight.assign ((size_t) size, 0.0f);
    mask = size - 1;
    writeIndex = 0;
    updateCoefficients();
    toneLeft = toneRight = 0.0f;
    dcInputLeft = dcOutputLeft = dcInputRight = dcOutputRight = 0.0f;
    currentLeft = targetLeft; // a re-prepare does not sweep
    currentRight = targetRight;
}

void StereoDelay::updateCoefficients() noexcept
{
    const float r = (float) sampleRate;
    if (r > 0.0f)
    {
        smoothing = 1.0f - std::exp (-1.0f / (r * 0.03f));
        dcCoefficient = std::exp (-753.98224f / r);
        toneCoefficient = 1.0f - std::exp (-6.2831855f * toneHz / r);
    }
    else
    {
        smoothing = 0.001f;
        dcCoefficient = 0.99f;
        toneCoefficient = 0.5f;
    }
}

void StereoDelay::setDelayTimeMs (float ms) noexcept
{
    const int size = mask + 1;
    const float maxSeconds = std::min ((float) (size - 2) / (float) sampleRate, 1.5f);
    const float seconds = std::clamp (ms * 0.001f, 0.001f, std::max (maxSeconds, 0.001f));
    targetLeft = targetRight = (float) sampleRate * seconds;
}

float StereoDelay::read (const std::vector<float>& line, float delay) const noexcept
{
    return readInterpolated (line, writeIndex, mask, delay);
}

// One sample of an active delay; both entry points below run this same step.
__attribute__ ((always_inline)) inline void StereoDelay::step (float& left, float& right) noexcept
{
    currentLeft += (targetLeft - currentLeft) * smoothing;
    currentRight += (targetRight - currentRight) * smoothing;
    const float tapLeft = read (lineLeft, currentLeft);
    const float tapRight = read (lineRight, currentRight);

    toneLeft += (tapLeft - toneLeft) * toneCoefficient;
    const float yLeft = (toneLeft + dcOutputLeft - dcInputLeft) * dcCoefficient;
    dcInputLeft = toneLeft;
    dcOutputLeft = yLeft;
    const float feedLeft = fast::tanh (yLeft);

    toneRight += (tapRight - toneRight) * toneCoefficient;
    const float yRight = (toneRight + dcOutputRight - dcInputRight) * dcCoefficient;
    dcInputRight = toneRight;
    dcOutputRight = yRight;
    const float feedRight = fast::tanh (yRight);

    if (pingPong)
    {
        // Input and feedback cross together: a left input comes back first on the right.
        lineLeft[(size_t) writeIndex] = right + feedback * feedRight;
        lineRight[(size_t) writeIndex] = left + feedback * feedLeft;
    }
    else
    {
        lineLeft[(size_t) writeIndex] = left + feedback * feedLeft;
        lineRight[(size_t) writeIndex] = right + feedback * feedRight;
    }
    writeIndex = (writeIndex + 1) & mask;

    left += (tapLeft - left) * mix;
    right += (tapRight - right) * mix;
}

void StereoDelay::process (float& left, float& right) noexcept
{
    if (active())
        step (left, right);
}

void StereoDelay::process (float* left, float* right, int numSamples) noexcept
{
    if (active())
        for (int i = 0; i < numSamples; ++i)
            step (left[i], right[i]);
}
}
