#pragma once

#include "engine/FastMath.h"

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
    // The pink filter's six one-poles as lanes (b0 to b3, then b4 and b5), and its last term.
    fast::Lanes pinkLow {}, pinkHigh {};
    float b6 = 0.0f;
    float brownState = 0.0f;
    float brownCoefficient = 0.0f;

    void prepare (double hostRate, std::uint32_t seed) noexcept
    {
        sampleRate = hostRate;
        state = seed;
        pinkLow = pinkHigh = fast::Lanes {};
        b6 = brownState = 0.0f;
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
            pinkLow = fast::Lanes { 0.99886f, 0.99332f, 0.969f, 0.8665f } * pinkLow
                    + fast::Lanes { 0.0555179f, 0.0750759f, 0.153852f, 0.3104856f } * w;
            pinkHigh = fast::Lanes { 0.55f, -0.7616f, 0.0f, 0.0f } * pinkHigh + fast::Lanes { 0.5329522f, -0.016898f, 0.0f, 0.0f } * w;
            const fast::Lanes sum = pinkLow + pinkHigh;
            const float out = ((sum[0] + sum[1]) + (sum[2] + sum[3]) + b6 + 0.5362f * w) * 0.11f;
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

namespace detail
{
    // The pair's constants as whole vectors, out of line: seen by the compiler, each would be
    // rebuilt from one float at every use.
    struct NoiseLanes
    {
        fast::Lanes toUnit, lowPole, lowIn, middlePole, middleIn, highPole, highIn, direct, scale, last, brownIn, one;
    };
    extern const NoiseLanes noiseLanes;
}

// The two sides' sources as lanes of one vector: both draws of a step for the operations of one.
// Lane for lane it runs NoiseSource's steps in the same order, so each side gives the bits of a
// NoiseSource with its seed. Pink's one-poles lie as b0, b1 | b2, b3 | b4, b5, left and right
// side by side.
struct NoisePair
{
    using Words = std::uint32_t __attribute__ ((vector_size (16)));
    using Signed = std::int32_t __attribute__ ((vector_size (16)));
    using Lanes = fast::Lanes;

    struct Pair
    {
        float left = 0.0f, right = 0.0f;
    };

    Words state {};
    int colour = NoiseSource::white;
    Lanes low {}, middle {}, high {}, b6 {};
    Lanes brownState {};
    float brownCoefficient = 0.0f;

    void prepare (double hostRate, std::uint32_t leftSeed, std::uint32_t rightSeed) noexcept
    {
        NoiseSource one;
        one.prepare (hostRate, leftSeed);
        brownCoefficient = one.brownCoefficient;
        state = Words { leftSeed, rightSeed, leftSeed, rightSeed };
        low = middle = high = b6 = brownState = Lanes {};
    }

    void setColour (int c) noexcept { colour = std::clamp (c, 0, 2); }

    Pair next() noexcept
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        // Lanes 2 and 3 repeat the two sides: w is the left and right draw, twice.
        const Lanes w = __builtin_convertvector ((Signed) state, Lanes) * detail::noiseLanes.toUnit;

        Lanes out = w;
        const auto& k = detail::noiseLanes;
        if (colour == NoiseSource::pink)
        {
            low = k.lowPole * low + k.lowIn * w;
            middle = k.middlePole * middle + k.middleIn * w;
            high = k.highPole * high + k.highIn * w;
            const Lanes outer = low + high; // b0 + b4 and b1 + b5
            const Lanes first = outer + __builtin_shufflevector (outer, outer, 2, 3, 0, 1);
            const Lanes second = middle + __builtin_shufflevector (middle, middle, 2, 3, 0, 1);
            out = (first + second + b6 + k.direct * w) * k.scale;
            b6 = k.last * w;
        }
        else if (colour == NoiseSource::brown)
        {
            const Lanes moved = brownState + (w - brownState) * brownCoefficient + w * k.brownIn;
            brownState = moved < -k.one ? -k.one : (moved > k.one ? k.one : moved);
            out = brownState;
        }
        return { out[0], out[1] };
    }
};
}
