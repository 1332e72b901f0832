#include "engine/MultibandDrive.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
void Crossover::prepare (double rate) noexcept
{
    sampleRate = rate > 0.0 ? rate : 44100.0;
    lowSections = {};
    highSections = {};
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
}

void Crossover::process (float x, float& low, float& high) noexcept
{
    low = lowSections[1].run (lowSections[0].run (x, lowB0, lowB1, lowB2, a1, a2), lowB0, lowB1, lowB2, a1, a2);
    high = highSections[1].run (highSections[0].run (x, highB0, highB1, highB2, a1, a2), highB0, highB1, highB2, a1, a2);
}

void MultibandDrive::prepare (double oversampledRate) noexcept
{
    sampleRate = oversampledRate > 0.0 ? oversampledRate : 44100.0;
    lowCrossover.prepare (sampleRate);
    highCrossover.prepare (sampleRate);
    for (auto& band : bands)
        band.prepare (sampleRate);
}

float MultibandDrive::processBands (float x) noexcept
{
    float lowBand, rest, midBand, highBand;
    lowCrossover.process (x, lowBand, rest);
    highCrossover.process (rest, midBand, highBand);
    const float sum = bands[low].process (lowBand) + bands[mid].process (midBand) + bands[high].process (highBand);
    return (sum - x) * mix + x;
}
}
