#include "engine/EngineLfo.h"
#include "engine/FastMath.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
const std::array<EngineLfo::SyncRow, 10>& EngineLfo::syncTable()
{
    static const std::array<SyncRow, 10> rows { { { "1/1", 4.0f }, { "1/2", 2.0f }, { "1/3", 4.0f / 3.0f },
                                                  { "1/4", 1.0f }, { "1/6", 2.0f / 3.0f }, { "1/8", 0.5f },
                                                  { "1/12", 1.0f / 3.0f }, { "1/16", 0.25f },
                                                  { "1/24", 1.0f / 6.0f }, { "1/32", 0.125f } } };
    return rows;
}

int EngineLfo::syncIndexFor (float normalisedRate) noexcept
{
    const float n = std::clamp (normalisedRate, 0.0f, 1.0f);
    // std::round takes halves away from zero: the middle of the travel, 4.5, is row 5.
    return std::clamp ((int) std::round (n * 9.0f), 0, 9);
}

void EngineLfo::prepare (double hostRate) noexcept
{
    sampleRate = hostRate;
    inverseRate = hostRate > 0.0 ? (float) (1.0 / hostRate) : 0.0f;
    phase = 0.0f;
    heldValue = 0.0f;
    random.setSeed (0x10F010F);
}

void EngineLfo::update (float rate, float normalisedRate, float phaseDegrees, int newShape, bool newSynced) noexcept
{
    rateHz = std::clamp (rate, 0.001f, 200.0f);
    beats = std::clamp (syncTable()[(size_t) syncIndexFor (normalisedRate)].beats, 0.03125f, 16.0f);

    const int s = std::clamp (newShape, 0, 3);
    if (s != shape && s == sampleAndHold)
        drawHeldValue();
    shape = s;
    synced = newSynced;

    increment = (synced ? (bpm / 60.0f) * (1.0f / beats) : rateHz) * inverseRate;
    phaseOffset = phaseDegrees * 0.017453292f * 0.15915494f;
}

float EngineLfo::wave() const noexcept
{
    float p = phase + phaseOffset;
    p -= std::floor (p);

    float wave;
    switch (shape)
    {
        case sine: wave = fast::sin2pi (p); break;
        case tri:  wave = p < 0.5f ? 4.0f * p - 1.0f : 3.0f - 4.0f * p; break;
        case sqr:  wave = p < 0.5f ? 1.0f : -1.0f; break;
        default:   wave = heldValue; break;
    }
    return wave;
}

void EngineLfo::advance() noexcept
{
    phase += increment;
    if (phase >= 1.0f)
    {
        phase -= std::floor (phase);
        if (shape == sampleAndHold)
            drawHeldValue();
    }
}

void SmoothRandom::prepare (double hostRate) noexcept
{
    random.setSeed (0x5A771CE);
    value = target = 0.0f;
    counter = 0;
    interval = std::max ((int) (hostRate * 0.125 + 0.5), 1);
    coefficient = hostRate > 0.0 ? (float) (1.0 - std::exp (-1.0 / (hostRate * 0.05))) : 1.0f;
}

float SmoothRandom::step() noexcept
{
    if (counter < 1)
    {
        counter = interval;
        target = 2.0f * random.nextFloat() - 1.0f;
    }
    --counter;
    value += (target - value) * coefficient;
    return value;
}
}
