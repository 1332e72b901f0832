#include "audio/PlateReverb.h"
#include "engine/FastMath.h"

#include <juce_core/juce_core.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>
#include <utility>

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

    // n samples of a power-of-two ring from index `from` on, any int, the wrap taken by the mask.
    void readRing (const std::vector<float>& ring, int mask, int from, float* out, int n) noexcept
    {
        const int start = from & mask;
        const int first = std::min (n, mask + 1 - start);
        std::copy_n (ring.data() + start, first, out);
        std::copy_n (ring.data(), n - first, out + first);
    }

    void writeRing (std::vector<float>& ring, int mask, int from, const float* in, int n) noexcept
    {
        const int start = from & mask;
        const int first = std::min (n, mask + 1 - start);
        std::copy_n (in, first, ring.data() + start);
        std::copy_n (in + first, n - first, ring.data());
    }

    // Where each output tap reads, in the order of step's sums: the left side's seven, then the
    // right side's. Tank 0 is A, 1 is B; the lines are delay1, allpass2 and delay2.
    enum TapLine { firstDelay, modulatedAllpass, lastDelay };
    struct TapPlace
    {
        int tank;
        TapLine line;
        int length, sign;
    };
    constexpr TapPlace tapPlaces[] = {
        { 1, firstDelay, 266, 1 },  { 1, firstDelay, 2974, 1 },  { 1, modulatedAllpass, 1913, -1 }, { 1, lastDelay, 1996, 1 },
        { 0, firstDelay, 1990, -1 }, { 0, modulatedAllpass, 187, -1 }, { 0, lastDelay, 1066, -1 },
        { 0, firstDelay, 353, 1 },  { 0, firstDelay, 3627, 1 },  { 0, modulatedAllpass, 1228, -1 }, { 0, lastDelay, 2673, 1 },
        { 1, firstDelay, 2111, -1 }, { 1, modulatedAllpass, 335, -1 }, { 1, lastDelay, 121, -1 }
    };

    struct LineView
    {
        const std::vector<float>& buffer;
        int mask, writeIndex;
    };

    LineView viewOf (const PlateReverb::Tank& tank, TapLine line) noexcept
    {
        switch (line)
        {
            case firstDelay:       return { tank.delay1.buffer, tank.delay1.mask, tank.delay1.writeIndex };
            case modulatedAllpass: return { tank.allpass2.buffer, tank.allpass2.mask, tank.allpass2.writeIndex };
            case lastDelay:        break;
        }
        return { tank.delay2.buffer, tank.delay2.mask, tank.delay2.writeIndex };
    }

    // A plain delay line over a run: each sample is written, and what stood delay - 1 samples
    // before it is read back. Those reads all come from before the run.
    void delayRun (DelayLine& line, const float* in, float* out, int n) noexcept
    {
        readRing (line.buffer, line.mask, line.writeIndex + 1 - line.delay, out, n);
        writeRing (line.buffer, line.mask, line.writeIndex, in, n);
        line.writeIndex = (line.writeIndex + n) & line.mask;
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

void AllpassLine::processRun (float* x, int n) noexcept
{
    float d[PlateReverb::maximumRun], v[PlateReverb::maximumRun];
    readRing (buffer, mask, writeIndex - delay, d, n);
    const float c = coefficient;
    for (int i = 0; i < n; ++i)
    {
        v[i] = x[i] - d[i] * c;
        x[i] = v[i] * c + d[i];
    }
    writeRing (buffer, mask, writeIndex, v, n);
    writeIndex = (writeIndex + n) & mask;
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
        // Room for the modulation: 32 samples, or its whole depth at rates where that is more, so
        // that no read reaches round the ring into what was just written.
        build (tank.allpass2, scaled (lengths[t].allpass2), std::max (32, (int) std::ceil (rateRatio * 8.0f) + 4));
        build (tank.delay2, scaled (lengths[t].delay2), 4);
        tank.allpass1.coefficient = -0.7f;
    }

    static_assert (std::size (tapPlaces) == std::tuple_size_v<decltype (taps)>);
    for (size_t i = 0; i < taps.size(); ++i)
        taps[i] = scaled (tapPlaces[i].length);

    run = maximumRun;
    for (const auto& d : diffusers)
        run = std::min (run, d.delay);
    const int modulationRoom = (int) std::ceil (rateRatio * 8.0f) + 2;
    for (const auto& tank : tanks)
        run = std::min ({ run, tank.allpass1.delay, tank.delay1.delay - 1, tank.allpass2.delay - modulationRoom, tank.delay2.delay - 1 });
    // A tap read after a whole run must find what it would have found after its own sample.
    for (size_t i = 0; i < taps.size(); ++i)
    {
        const auto& place = tapPlaces[i];
        run = std::min (run, (int) viewOf (tanks[(size_t) place.tank], place.line).buffer.size() - taps[i]);
    }
    if (run < minimumRun)
        run = 1;

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

// The tanks over a run: the same steps as tankStep, stage after stage. Their outputs were read
// before. The two damping filters, each a chain of dependent steps, share one loop, so that each
// fills the other's waits.
void PlateReverb::tanksRun (float* in1, float* in2, const float* excursion1, const float* excursion2, int n) noexcept
{
    float b1[maximumRun], b2[maximumRun];
    tanks[0].allpass1.processRun (in1, n);
    delayRun (tanks[0].delay1, in1, b1, n);
    tanks[1].allpass1.processRun (in2, n);
    delayRun (tanks[1].delay1, in2, b2, n);

    float damped1[maximumRun], damped2[maximumRun];
    float state1 = tanks[0].dampingState, state2 = tanks[1].dampingState;
    for (int i = 0; i < n; ++i)
    {
        state1 += (b1[i] - state1) * dampingCoefficient;
        damped1[i] = state1 * decay;
        state2 += (b2[i] - state2) * dampingCoefficient;
        damped2[i] = state2 * decay;
    }
    tanks[0].dampingState = state1;
    tanks[1].dampingState = state2;

    for (auto [tank, damped, excursions] : { std::tuple { &tanks[0], damped1, excursion1 }, std::tuple { &tanks[1], damped2, excursion2 } })
    {
        auto& line = tank->allpass2;
        float d[maximumRun];
        for (int i = 0; i < n; ++i)
        {
            const float pos = (float) ((line.writeIndex + i) & line.mask) - ((float) line.delay + excursions[i]);
            const float whole = std::floor (pos);
            const int k = (int) whole & line.mask;
            const float a = line.buffer[(size_t) k];
            d[i] = a + (line.buffer[(size_t) ((k + 1) & line.mask)] - a) * (pos - whole);
        }
        float v[maximumRun], e[maximumRun];
        const float c = line.coefficient;
        for (int i = 0; i < n; ++i)
        {
            v[i] = damped[i] - d[i] * c;
            e[i] = v[i] * c + d[i];
        }
        writeRing (line.buffer, line.mask, line.writeIndex, v, n);
        line.writeIndex = (line.writeIndex + n) & line.mask;

        auto& last = tank->delay2;
        writeRing (last.buffer, last.mask, last.writeIndex, e, n);
        last.writeIndex = (last.writeIndex + n) & last.mask;
    }
}

// A run of samples, stage after stage: each sample meets the same operations in the same order as
// in step, so the output is the same to the bit. Stages whose samples do not wait for one another
// (the diffusers, the lines, the taps) then run in vector lanes.
void PlateReverb::processRun (float* left, float* right, int n) noexcept
{
    float mono[maximumRun], x[maximumRun];
    for (int i = 0; i < n; ++i)
        mono[i] = (left[i] + right[i]) * 0.5f;
    // Reads of the predelay reach back before the run, or into the run's own input.
    const int old = std::min (n, predelaySamples);
    readRing (predelayLine, predelayMask, predelayWrite - predelaySamples, x, old);
    for (int i = old; i < n; ++i)
        x[i] = mono[i - predelaySamples];
    writeRing (predelayLine, predelayMask, predelayWrite, mono, n);
    predelayWrite = (predelayWrite + n) & predelayMask;

    // The bandwidth filter and the LFO's clock, two chains of dependent steps, in one loop.
    float phases[maximumRun];
    const float increment = 6.2831855f / (float) sampleRate;
    float lowpass = inputLowpass;
    for (int i = 0; i < n; ++i)
    {
        lowpass += (x[i] - lowpass) * bandwidthCoefficient;
        x[i] = lowpass;
        lfoPhase += increment;
        if (lfoPhase >= 6.2831855f)
            lfoPhase -= 6.2831855f;
        phases[i] = lfoPhase;
    }
    inputLowpass = lowpass;
    for (auto& d : diffusers)
        d.processRun (x, n);

    // What each tank gives out over the run stood in its last line before the run.
    float out1[maximumRun], out2[maximumRun];
    for (auto [tank, out] : { std::pair { &tanks[0], out1 }, std::pair { &tanks[1], out2 } })
    {
        const auto& line = tank->delay2;
        readRing (line.buffer, line.mask, line.writeIndex + 1 - line.delay, out, n);
        for (int i = 0; i < n; ++i)
            out[i] *= decay;
    }
    float in1[maximumRun], in2[maximumRun];
    in1[0] = x[0] + decay * feedbackToFirst;
    in2[0] = x[0] + decay * feedbackToSecond;
    for (int i = 1; i < n; ++i)
    {
        in1[i] = x[i] + decay * out2[i - 1];
        in2[i] = x[i] + decay * out1[i - 1];
    }
    feedbackToSecond = out1[n - 1];
    feedbackToFirst = out2[n - 1];

    float excursion1[maximumRun], excursion2[maximumRun];
    const float depth = rateRatio * 8.0f;
    for (int i = 0; i < n; ++i)
    {
        excursion1[i] = fast::sin (phases[i]) * depth;
        excursion2[i] = fast::sin (phases[i] + 2.094f) * depth;
    }

    tanksRun (in1, in2, excursion1, excursion2, n);

    // Each tap as a run, read after the run's writes, summed in the order of step's sums.
    float wet[2][maximumRun], tap[maximumRun];
    for (size_t i = 0; i < taps.size(); ++i)
    {
        const auto& place = tapPlaces[i];
        const auto line = viewOf (tanks[(size_t) place.tank], place.line);
        float* sum = wet[i < taps.size() / 2 ? 0 : 1];
        const bool first = i % (taps.size() / 2) == 0;
        readRing (line.buffer, line.mask, line.writeIndex - n + 1 - taps[i], first ? sum : tap, n);
        if (first)
            continue;
        if (place.sign > 0)
            for (int k = 0; k < n; ++k)
                sum[k] += tap[k];
        else
            for (int k = 0; k < n; ++k)
                sum[k] -= tap[k];
    }
    const float* wetLeft = wet[0];
    const float* wetRight = wet[1];

    const float wetShare = mix;
    for (int i = 0; i < n; ++i)
    {
        left[i] += (0.6f * wetLeft[i] - left[i]) * wetShare;
        right[i] += (0.6f * wetRight[i] - right[i]) * wetShare;
    }
}

void PlateReverb::process (float* left, float* right, int numSamples) noexcept
{
    if (! active())
        return;
    if (run == 1)
    {
        for (int i = 0; i < numSamples; ++i)
            step (left[i], right[i]);
        return;
    }
    for (int start = 0; start < numSamples; start += run)
        processRun (left + start, right + start, std::min (run, numSamples - start));
}
}
