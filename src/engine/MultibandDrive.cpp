#include "engine/MultibandDrive.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace morvane
{
namespace
{
    using fast::Lanes;
    using Indices = int __attribute__ ((vector_size (16)));

    // A plain diode (no fade, some drive) over a run, four samples at a time: lane for lane the
    // steps of its curve, the table's four rows read one by one and turned into coefficient vectors.
    void diodeRun (DriveShaper& shaper, float* x, int n) noexcept
    {
        const auto& table = driveCurves::diodeCurve;
        using fast::splat;
        const Lanes from = splat (table.from), scale = splat (table.scale), lowest = splat (0.0f), highest = splat (1023.0f);
        const Lanes halfGain = splat (0.5f * shaper.gain), outputScale = splat (1.8f / shaper.gain);
        const Lanes knee = splat (0.5f), offsetAbove = splat (driveCurves::diodeOffsetAbove), offsetBelow = splat (driveCurves::diodeOffsetBelow);
        const float last = x[n - 1];
        for (int k = 0; k < n; k += 4)
        {
            Lanes v;
            std::memcpy (&v, x + k, sizeof (v));
            const Lanes t = halfGain * v;
            const Lanes position = (t - from) * scale;
            // Held within the table (a NaN to its first row), as the scalar read holds its index.
            const Indices index = __builtin_convertvector (fast::atMost (fast::atLeast (position, lowest), highest), Indices);
            const Lanes fraction = position - __builtin_convertvector (index, Lanes);
            Lanes rows[4];
            for (int lane = 0; lane < 4; ++lane)
                std::memcpy (&rows[lane], table.cubics[(size_t) index[lane]].data(), sizeof (Lanes));
            const Lanes low01 = __builtin_shufflevector (rows[0], rows[1], 0, 4, 1, 5);
            const Lanes low23 = __builtin_shufflevector (rows[2], rows[3], 0, 4, 1, 5);
            const Lanes high01 = __builtin_shufflevector (rows[0], rows[1], 2, 6, 3, 7);
            const Lanes high23 = __builtin_shufflevector (rows[2], rows[3], 2, 6, 3, 7);
            const Lanes c0 = __builtin_shufflevector (low01, low23, 0, 1, 4, 5);
            const Lanes c1 = __builtin_shufflevector (low01, low23, 2, 3, 6, 7);
            const Lanes c2 = __builtin_shufflevector (high01, high23, 0, 1, 4, 5);
            const Lanes c3 = __builtin_shufflevector (high01, high23, 2, 3, 6, 7);
            const Lanes curve = c0 + fraction * (c1 + fraction * (c2 + fraction * c3));
            const auto rising = t >= knee, falling = t <= -knee;
            const Lanes straight = t + (rising ? offsetAbove : offsetBelow);
            const Lanes y = outputScale * ((rising | falling) ? straight : curve);
            std::memcpy (x + k, &y, sizeof (y));
        }
        shaper.lastInput = last;
    }

    void shapeRun (DriveShaper& shaper, float* x, int n) noexcept
    {
        if (shaper.fadeCounter == 0 && shaper.mode == DriveShaper::diode && shaper.gain > 1.000001f)
        {
            diodeRun (shaper, x, n);
            return;
        }
        for (int k = 0; k < n; ++k)
            x[k] = shaper.process (x[k]);
    }
}

void Crossover::prepare (double rate) noexcept
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    sections = {};
    frequency = std::clamp (frequency, 20.0f, 0.45f * (float) sampleRate);
    design();
}

void Crossover::setFrequency (float hz) noexcept
{
    const float f = std::clamp (hz, 20.0f, 0.45f * (float) sampleRate);
    if (std::abs (f - frequency) < 0.01f)
        return;
    frequency = f;
    design();
}

void Crossover::design() noexcept
{
    const float w = 6.2831855f * frequency / (float) sampleRate;
    const float c = std::cos (w);
    const float alpha = std::sin (w) / 1.4142135f;
    const float n = 1.0f / (1.0f + alpha);
    a1 = -2.0f * c * n;
    a2 = (1.0f - alpha) * n;
    lowB0 = lowB2 = (1.0f - c) * 0.5f * n;
    lowB1 = (1.0f - c) * n;
    highB0 = highB2 = (1.0f + c) * 0.5f * n;
    highB1 = -(1.0f + c) * n;
    b0Lanes = Lanes { lowB0, highB0, lowB0, highB0 };
    b1Lanes = Lanes { lowB1, highB1, lowB1, highB1 };
    b2Lanes = Lanes { lowB2, highB2, lowB2, highB2 };
    a1Lanes = Lanes { a1, a1, a1, a1 };
    a2Lanes = Lanes { a2, a2, a2, a2 };
}

void Crossover::copyLeftToRight() noexcept
{
    for (auto& h : sections)
        for (auto* lanes : { &h.x1, &h.x2, &h.y1, &h.y2 })
            *lanes = __builtin_shufflevector (*lanes, *lanes, 0, 1, 0, 1);
}

void MultibandDrive::prepare (double oversampledRate) noexcept
{
    sampleRate = oversampledRate > 0.0 ? oversampledRate : 44100.0;
    lowCrossover.prepare (sampleRate);
    highCrossover.prepare (sampleRate);
    for (auto* side : { &bands, &rightBands })
        for (auto& band : *side)
            band.prepare (sampleRate);
}

void MultibandDrive::copyLeftToRight() noexcept
{
    lowCrossover.copyLeftToRight();
    highCrossover.copyLeftToRight();
    rightBands = bands;
}

bool MultibandDrive::sidesEqual() const noexcept
{
    const auto lanesEqual = [] (const Crossover& c)
    {
        for (const auto& h : c.sections)
            for (auto lanes : { h.x1, h.x2, h.y1, h.y2 })
                if (std::memcmp (&lanes[0], &lanes[2], 2 * sizeof (float)) != 0)
                    return false;
        return true;
    };
    return lanesEqual (lowCrossover) && lanesEqual (highCrossover) && std::memcmp (&bands, &rightBands, sizeof (bands)) == 0;
}

float MultibandDrive::processBands (float x) noexcept
{
    float lowBand, rest, midBand, highBand;
    lowCrossover.process (x, lowBand, rest);
    highCrossover.process (rest, midBand, highBand);
    const float sum = bands[low].process (lowBand) + bands[mid].process (midBand) + bands[high].process (highBand);
    return (sum - x) * mix + x;
}

void MultibandDrive::processBands (float& left, float& right, bool rightAsLeft) noexcept
{
    const auto lowSplit = lowCrossover.split (Crossover::Lanes { left, left, right, right });
    const auto highSplit = highCrossover.split (__builtin_shufflevector (lowSplit, lowSplit, 1, 1, 3, 3));
    const float sumLeft = bands[low].process (lowSplit[0]) + bands[mid].process (highSplit[0]) + bands[high].process (highSplit[1]);
    left = (sumLeft - left) * mix + left;
    if (rightAsLeft)
    {
        right = left;
        return;
    }
    const float sumRight = rightBands[low].process (lowSplit[2]) + rightBands[mid].process (highSplit[2])
                         + rightBands[high].process (highSplit[3]);
    right = (sumRight - right) * mix + right;
}

void MultibandDrive::process (float* left, float* right, int numSamples, bool rightAsLeft) noexcept
{
    if (! running())
        return;
    // The splits below hold one run at most.
    for (; numSamples > maximumRun; numSamples -= maximumRun, left += maximumRun, right += maximumRun)
        process (left, right, maximumRun, rightAsLeft);
    if (numSamples <= 0)
        return;
    // Room for a whole number of vectors: the diodes read and write the run four at a time.
    alignas (16) float split[2][numBands][maximumRun + 4];
    // The crossovers' histories as locals, so that the stores of the split leave them in registers.
    Crossover lows = lowCrossover, highs = highCrossover;
    for (int k = 0; k < numSamples; ++k)
    {
        const auto lowSplit = lows.split (Crossover::Lanes { left[k], left[k], right[k], right[k] });
        const auto highSplit = highs.split (__builtin_shufflevector (lowSplit, lowSplit, 1, 1, 3, 3));
        split[0][low][k] = lowSplit[0];
        split[0][mid][k] = highSplit[0];
        split[0][high][k] = highSplit[1];
        split[1][low][k] = lowSplit[2];
        split[1][mid][k] = highSplit[2];
        split[1][high][k] = highSplit[3];
    }
    lowCrossover.sections = lows.sections;
    highCrossover.sections = highs.sections;
    for (auto& side : split)
        for (auto& band : side)
            std::fill (band + numSamples, band + numSamples + 4, 0.0f);
    for (int side = 0; side < (rightAsLeft ? 1 : 2); ++side)
    {
        auto& shapers = side == 0 ? bands : rightBands;
        float* io = side == 0 ? left : right;
        for (int b = 0; b < numBands; ++b)
            shapeRun (shapers[(size_t) b], split[side][b], numSamples);
        for (int k = 0; k < numSamples; ++k)
        {
            const float sum = split[side][low][k] + split[side][mid][k] + split[side][high][k];
            io[k] = (sum - io[k]) * mix + io[k];
        }
    }
    if (rightAsLeft)
        std::copy (left, left + numSamples, right);
}
}
