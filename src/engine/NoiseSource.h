#pragma once

#include <algorithm>
#include <cstdint>

namespace morvane
{
// Xorshift noise in three colours. Its filters are tuned for the host rate; the pre path draws
// at the oversampled steps with the same coefficients.
struct NoiseSource
{
    enum Colour { white, pink, brown };

    double sampleRate = 44100.0;
    std::uint32_t state = 0xA1B2C3D4u;
    int colour = white;
    float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, b3 = 0.0f, b4 = 0.0f, b5 = 0.0f, b6 = 0.0f;
    float brownState = 0.0f;
    float brownCoefficient = 0.0f;

    void prepare (double hostRate, std::uint32_t seed) noexcept
    {
        sampleRate = hostRate;
        state = seed;
        b0 = b1 = b2 = b3 = b4 = b5 = b6 = brownState = 0.0f;
        // One pole at 16 Hz.
        brownCoefficient = (float) std::clamp (100.53096491487338 / std::max (hostRate, 1.0), 0.0, 1.0);
    }

    void setColour (int c) noexcept { colour = std::clamp (c, 0, 2); }

    float next() noexcept
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const float w = (float) (std::int32_t) state * 4.656613e-10f;

        if (colour == pink)
        {
            b0 = 0.99886f * b0 + 0.0555179f * w;
            b1 = 0.99332f * b1 + 0.0750759f * w;
            b2 = 0.969f * b2 + 0.153852f * w;
            b3 = 0.8665f * b3 + 0.3104856f * w;
            b4 = 0.55f * b4 + 0.5329522f * w;
            b5 = -0.7616f * b5 - 0.016898f * w;
            const float out = (b0 + b1 + b2 + b3 + b4 + b5 + b6 + 0.5362f * w) * 0.11f;
            b6 = 0.115926f * w;
            return out;
        }
        if (colour == brown)
        {
            brownState = std::clamp (brownState + (w - brownState) * brownCoefficient + w * 0.02f, -1.0f, 1.0f);
            return brownState;
        }
        return w;
    }
};
}
