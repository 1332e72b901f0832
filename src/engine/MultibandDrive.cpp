#include "engine/MultibandDrive.h"

#include <algorithm>
#include <cmath>

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
    b0Lanes = Lanes { lowB0, highB0, 0.0f, 0.0f };
    b1Lanes = Lanes { lowB1, highB1, 0.0f, 0.0f };
    b2Lanes = Lanes { lowB2, highB2, 0.0f, 0.0f };
    a1Lanes = Lanes { a1, a1, a1, a1 };
    a2Lanes = Lanes { a2, a2, a2, a2 };
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
