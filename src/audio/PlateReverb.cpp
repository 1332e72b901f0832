#include "audio/PlateReverb.h"
#include "engine/FastMath.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>

namespace morvane
{
namespace
{
    template <typename Line>
    void build (Line& line, int delay, int room)
    {
        line.delay = delay;
        line.buffer.assign ((size_t) juce::nextPowerOfTwo (delay + room), 0.0f);
        line.mask = (int) line.buffer.size() - 1;
        line.writeIndex = 0;
    }
}

__attribute__ ((always_inline)) inline float AllpassLine::process (float x) noexcept
{
    const float d = buffer[(size_t) ((writeIndex - delay) & mask)];
    const float v = x - d * coefficient;
    buffer[(size_t) writeIndex] = v;
    writeIndex = (writeIndex + 1) & mask;
    return v * coefficient + d;
}

__attribute__ ((always_inline)) inline float AllpassLine::processModulated (float x, float excursion) noexcept
{
    const float pos = (float) writeIndex - ((float) delay + excursion);
    const float i = std::floor (pos);
    const int k = (int) i & mask;
    const float a = buffer[(size_t) k];
    const float d = a + (buffer[(size_t) ((k + 1) & mask)] - a) * (pos - i);
    const float v = x - d * coefficient;
    buffer[(size_t) writeIndex] = v;
    writeIndex = (writeIndex + 1) & mask;
    return v * coefficient + d;
}

int PlateReverb::scaled (int length) const noexcept
{
    return std::max ((int) std::lround ((float) length * rateRatio), 1);
}

void PlateReverb::prepare (double rate)
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    rateRatio = (float) sampleRate / 29761.0f;

    predelayLine.assign ((size_t) juce::nextPowerOfTwo (4 + (int) (sampleRate * 0.2)), 0.0f);
    predelayMask = (int) predelayLine.size() - 1;

    constexpr int diffuserLengths[] = { 142, 107, 379, 277 };
    constexpr float diffuserCoefficients[] = { 0.75f, 0.75f, 0.625f, 0.625f };
    for (size_t i = 0; i < diffusers.size(); ++i)
    {
        build (diffusers[i], scaled (diffuserLengths[i]), 4);
        diffusers[i].coefficient = diffuserCoefficients[i];
    }

    struct TankLengths { int allpass1, delay1, allpass2, delay2; };
    constexpr TankLengths lengths[] = { { 672, 4453, 1800, 3720 }, { 908, 4217, 2656, 3163 } };
    for (size_t t = 0; t < tanks.size(); ++t)
    {
        auto& tank = tanks[t];
        build (tank.allpass1, scaled (lengths[t].allpass1), 4);
        build (tank.delay1, scaled (lengths[t].delay1), 4);
        build (tank.allpass2, scaled (lengths[t].allpass2), 32); // room for the modulation
        build (tank.delay2, scaled (lengths[t].delay2), 4);
        tank.allpass1.coefficient = -0.7f;
    }

    constexpr int tapLengths[] = { 266, 2974, 1913, 1996, 1990, 187, 1066, 353, 3627, 1228, 2673, 2111, 335, 121 };
    for (size_t i = 0; i < taps.size(); ++i)
        taps[i] = scaled (tapLengths[i]);

    bandwidthCoefficient = bandwidth * 0.995f + 0.005f;
    dampingCoefficient = 1.0f - damping * 0.95f;
    setDecay (decay);
    reset();
}

void PlateReverb::reset() noexcept
{
    std::fill (predelayLine.begin(), predelayLine.end(), 0.0f);
    predelayWrite = 0;
    for (auto& d : diffusers)
    {
        std::fill (d.buffer.begin(), d.buffer.end(), 0.0f);
        d.writeIndex = 0;
    }
    for (auto& tank : tanks)
    {
        for (auto* a : { &tank.allpass1, &tank.allpass2 })
        {
            std::fill (a->buffer.begin(), a->buffer.end(), 0.0f);
            a->writeIndex = 0;
        }
        for (auto* d : { &tank.delay1, &tank.delay2 })
        {
            std::fill (d->buffer.begin(), d->buffer.end(), 0.0f);
            d->writeIndex = 0;
        }
        tank.dampingState = 0.0f;
    }
    inputLowpass = lfoPhase = feedbackToFirst = feedbackToSecond = 0.0f;
}

void PlateReverb::setBandwidth (float b) noexcept
{
    bandwidth = std::clamp (b, 0.0f, 1.0f);
    bandwidthCoefficient = bandwidth * 0.995f + 0.005f;
}

void PlateReverb::setDamping (float d) noexcept
{
    damping = std::clamp (d, 0.0f, 1.0f);
    dampingCoefficient = 1.0f - damping * 0.95f;
}

void PlateReverb::setDecay (float d) noexcept
{
    decay = std::clamp (d, 0.0f, 0.95f);
    for (auto& tank : tanks)
    {
        tank.allpass1.coefficient = -0.7f;
        tank.allpass2.coefficient = std::clamp (decay * 0.5f + 0.25f, 0.25f, 0.5f);
    }
}

void PlateReverb::setPredelayMs (float ms) noexcept
{
    const double limit = std::min (0.2, (double) ((int) predelayLine.size() - 2) / sampleRate);
    const double seconds = std::clamp ((double) ms * 0.001, 0.0, std::max (limit, 0.0));
    predelaySamples = (int) (sampleRate * seconds);
}

__attribute__ ((always_inline)) inline float PlateReverb::tankStep (Tank& tank, float input, float excursion) noexcept
{
    const float a = tank.allpass1.process (input);
    const float b = tank.delay1.process (a);
    tank.dampingState += (b - tank.dampingState) * dampingCoefficient;
    const float e = tank.allpass2.processModulated (tank.dampingState * decay, excursion);
    return tank.delay2.process (e) * decay;
}

// One sample of an active reverb; both entry points below run this same step.
__attribute__ ((always_inline)) inline void PlateReverb::step (float& left, float& right) noexcept
{
    const float dryLeft = left, dryRight = right;

    predelayLine[(size_t) predelayWrite] = (dryLeft + dryRight) * 0.5f;
    const float t = predelayLine[(size_t) ((predelayWrite - predelaySamples) & predelayMask)];
    predelayWrite = (predelayWrite + 1) & predelayMask;

    inputLowpass += (t - inputLowpass) * bandwidthCoefficient;
    float x = inputLowpass;
    for (auto& d : diffusers)
        x = d.process (x);

    const float in1 = x + decay * feedbackToFirst;
    const float in2 = x + decay * feedbackToSecond;

    lfoPhase += 6.2831855f / (float) sampleRate; // 1 Hz
    if (lfoPhase >= 6.2831855f)
        lfoPhase -= 6.2831855f;
    const float depth = rateRatio * 8.0f;
    const float excursion1 = fast::sin (lfoPhase) * depth;
    const float excursion2 = fast::sin (lfoPhase + 2.094f) * depth;

    const float out1 = tankStep (tanks[0], in1, excursion1);
    const float out2 = tankStep (tanks[1], in2, excursion2);
    feedbackToSecond = out1;
    feedbackToFirst = out2;

    const auto& A = tanks[0];
    const auto& B = tanks[1];
    const float wetLeft = 0.6f * (B.delay1.tap (taps[0]) + B.delay1.tap (taps[1]) - B.allpass2.tap (taps[2]) + B.delay2.tap (taps[3])
                                  - A.delay1.tap (taps[4]) - A.allpass2.tap (taps[5]) - A.delay2.tap (taps[6]));
    const float wetRight = 0.6f * (A.delay1.tap (taps[7]) + A.delay1.tap (taps[8]) - A.allpass2.tap (taps[9]) + A.delay2.tap (taps[10])
                                   - B.delay1.tap (taps[11]) - B.allpass2.tap (taps[12]) - B.delay2.tap (taps[13]));

    left = dryLeft + (wetLeft - dryLeft) * mix;
    right = dryRight + (wetRight - dryRight) * mix;
}

void PlateReverb::process (float& left, float& right) noexcept
{
    if (active())
        step (left, right);
}

void PlateReverb::process (float* left, float* right, int numSamples) noexcept
{
    if (active())
        for (int i = 0; i < numSamples; ++i)
            step (left[i], right[i]);
}
}
