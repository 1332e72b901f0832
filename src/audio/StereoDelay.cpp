#include "audio/StereoDelay.h"
#include "engine/FastMath.h"

#include "audio/DelayRead.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>
#include <cstring>

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
//
// In runs no longer than the delay, in two passes: the reads and the filters, whose states carry
// from sample to sample, then the saturation, the writes and the mix, two samples to a vector.
// A run's reads then reach no sample written in the same run.
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
    const Lanes loop = fast::splat (feedback), wetShare = fast::splat (mix);
    const int wrap = mask;
    int write = writeIndex;

    constexpr int longest = 64;
    // Each sample's two sides side by side, and room for a last odd sample's empty pair.
    alignas (16) float taps[2 * longest + 2], ys[2 * longest + 2];
    for (int start = 0; start < numSamples;)
    {
        // The smoothed time moves straight towards its target, so it stays above the nearer of
        // the two over the run; one sample is always safe, its read coming before its write.
        const int n = std::max (1, std::min ({ numSamples - start, longest, (int) std::min (current, target) }));

        for (int i = 0; i < n; ++i)
        {
            current += (target - current) * timeShare;
            const Lanes tap = fast::sides (readInterpolated (readLeft, write + i, wrap, current),
                                           readInterpolated (readRight, write + i, wrap, current));

            tone += (tap - tone) * toneShare;
            const Lanes y = (tone + dcOutput - dcInput) * dcShare;
            dcInput = tone;
            dcOutput = y;
            taps[2 * i] = tap[0];
            taps[2 * i + 1] = tap[1];
            ys[2 * i] = y[0];
            ys[2 * i + 1] = y[1];
        }
        if (n % 2 != 0)
            taps[2 * n] = taps[2 * n + 1] = ys[2 * n] = ys[2 * n + 1] = 0.0f;

        for (int i = 0; i < n; i += 2)
        {
            Lanes y, tap;
            std::memcpy (&y, ys + 2 * i, sizeof (y));
            std::memcpy (&tap, taps + 2 * i, sizeof (tap));
            const Lanes input { left[start + i], right[start + i], i + 1 < n ? left[start + i + 1] : 0.0f, i + 1 < n ? right[start + i + 1] : 0.0f };
            const Lanes written = input + loop * fast::tanh (y);
            const Lanes out = input + (tap - input) * wetShare;
            for (int k = 0; k < 2 && i + k < n; ++k)
            {
                const int at = (write + i + k) & wrap;
                writeFirst[at] = written[2 * k];
                writeSecond[at] = written[2 * k + 1];
                left[start + i + k] = out[2 * k];
                right[start + i + k] = out[2 * k + 1];
            }
        }
        write = (write + n) & wrap;
        start += n;
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
