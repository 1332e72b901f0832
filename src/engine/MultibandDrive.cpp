#include "engine/MultibandDrive.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace morvane
{
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
}
