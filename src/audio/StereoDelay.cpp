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

// The two sides always get the same time, so their smoothed times stay equal to the bit: one read
// position serves both lines, and the two sides' filters run as two lanes of one vector. Each
// lane meets the operations of step in the same order.
void StereoDelay::sharedTimeRun (float* left, float* right, int numSamples) noexcept
{
    using fast::Lanes;
    float current = currentLeft;
    const float target = targetLeft;
    Lanes tone = fast::sides (toneLeft, toneRight), dcInput = fast::sides (dcInputLeft, dcInputRight), dcOutput = fast::sides (dcOutputLeft, dcOutputRight);
    const float* readLeft = lineLeft.data();
    const float* readRight = lineRight.data();
    // Ping-pong crosses what is written: the left line takes the right side's input and feedback.
    float* writeFirst = pingPong ? lineRight.data() : lineLeft.data();
    float* writeSecond = pingPong ? lineLeft.data() : lineRight.data();
    // Held apart from the members, which the lines' stores might otherwise overwrite for all the
    // compiler knows.
    const float timeShare = smoothing, toneShare = toneCoefficient, dcShare = dcCoefficient;
    const float loop = feedback, wetShare = mix;
    const int wrap = mask;
    int write = writeIndex;

    for (int i = 0; i < numSamples; ++i)
    {
        current += (target - current) * timeShare;
        const int whole = (int) current;
        const float fraction = current - (float) whole;
        const int newer = (write - whole) & wrap;
        const int older = (newer - 1) & wrap;
        const Lanes a = fast::sides (readLeft[newer], readRight[newer]);
        const Lanes tap = a + (fast::sides (readLeft[older], readRight[older]) - a) * fraction;

        tone += (tap - tone) * toneShare;
        const Lanes y = (tone + dcOutput - dcInput) * dcShare;
        dcInput = tone;
        dcOutput = y;
        const Lanes feed = fast::tanh (y);

        const Lanes input = fast::sides (left[i], right[i]);
        const Lanes written = input + loop * feed;
        writeFirst[write] = written[0];
        writeSecond[write] = written[1];
        write = (write + 1) & wrap;

        const Lanes out = input + (tap - input) * wetShare;
        left[i] = out[0];
        right[i] = out[1];
    }

    writeIndex = write;
    currentLeft = currentRight = current;
    toneLeft = tone[0], toneRight = tone[1];
    dcInputLeft = dcInput[0], dcInputRight = dcInput[1];
    dcOutputLeft = dcOutput[0], dcOutputRight = dcOutput[1];
}

void StereoDelay::process (float* left, float* right, int numSamples) noexcept
{
    if (! active())
        return;
    if (currentLeft == currentRight && targetLeft == targetRight)
    {
        sharedTimeRun (left, right, numSamples);
        return;
    }
    for (int i = 0; i < numSamples; ++i)
        step (left[i], right[i]);
}
}
