#pragma once

// The float transcendentals of the audio path, inline: sin, cos, tan and tanh as polynomials
// accurate to a few parts in 10^7 (about -130 dB), exp, exp2 and log to about one part in 10^7,
// below what a float signal path resolves anyway, and cheaper than the library's calls.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace morvane::fast
{
namespace detail
{
    // Nearest integer without a branch: adding 1.5 * 2^23 leaves no fraction bits (|x| < 2^22).
    inline float nearest (float x) noexcept
    {
        constexpr float shifter = 12582912.0f;
        return (x + shifter) - shifter;
    }

    // sin(2 pi r) for r in [-0.25, 0.25]: the Taylor series to x^11, its last term nudged to take
    // up the x^13 remainder at pi/2; error below 3e-8 before rounding.
    inline float sinQuarter (float r) noexcept
    {
        const float x = 6.2831855f * r;
        const float x2 = x * x;
        float p = -2.4656e-8f;
        p = p * x2 + 2.7557319e-6f;
        p = p * x2 - 1.9841270e-4f;
        p = p * x2 + 8.3333333e-3f;
        p = p * x2 - 1.6666667e-1f;
        return x + x * x2 * p;
    }
}

// sin and cos of a phase in turns (one turn = 2 pi), for phases within +-2^21 turns.
inline float sin2pi (float turns) noexcept
{
    const float r = turns - detail::nearest (turns); // [-0.5, 0.5]
    // sin is even about a quarter turn: fold |r| into [0, 0.25] and put the sign back.
    const float a = std::abs (r);
    return std::copysign (detail::sinQuarter (std::min (a, 0.5f - a)), r);
}

inline float cos2pi (float turns) noexcept
{
    const float r = turns - detail::nearest (turns);
    return detail::sinQuarter (0.25f - std::abs (r));
}

inline float sin (float radians) noexcept { return sin2pi (radians * 0.15915494f); }
inline float cos (float radians) noexcept { return cos2pi (radians * 0.15915494f); }

// For coefficient design below a quarter turn, where the cosine stays well away from 0.
inline float tan (float radians) noexcept
{
    const float t = radians * 0.15915494f;
    return sin2pi (t) / cos2pi (t);
}

namespace detail
{
    // e^r for |r| <= ln 2 / 2: interpolated at the Chebyshev nodes, relative error below 1e-7.
    inline float expReduced (float r) noexcept
    {
        float p = 1.394111896e-03f;
        p = p * r + 8.375134319e-03f;
        p = p * r + 4.166635126e-02f;
        p = p * r + 1.666641533e-01f;
        p = p * r + 0.5f;
        p = p * r + 1.0f;
        return p * r + 1.0f;
    }

    // 2^n for an integral n in [-126, 127], straight into the exponent bits.
    inline float powerOfTwo (float n) noexcept
    {
        const std::int32_t bits = ((std::int32_t) n + 127) << 23;
        float result;
        std::memcpy (&result, &bits, sizeof (result));
        return result;
    }
}

// Inline, so that the compiler keeps them in registers beside the stage that calls them; the
// library's calls remain for the rare arguments whose results are subnormal, infinite or NaN.
inline float exp2 (float x) noexcept
{
    if (! (x >= -126.0f && x <= 127.0f))
        return std::exp2 (x);
    const float n = detail::nearest (x);
    return detail::expReduced ((x - n) * 0.69314718f) * detail::powerOfTwo (n);
}

inline float exp (float x) noexcept
{
    if (! (x >= -87.0f && x <= 88.0f))
        return std::exp (x);
    // ln 2 in two parts, the first short enough that n times it is exact (Cody and Waite).
    const float n = detail::nearest (x * 1.44269504f);
    const float r = (x - n * 0.693145752f) - n * 1.42860677e-6f;
    return detail::expReduced (r) * detail::powerOfTwo (n);
}

inline float log (float x) noexcept
{
    if (! (x >= 1.17549435e-38f && x <= 3.40282347e+38f))
        return std::log (x);
    std::int32_t bits;
    std::memcpy (&bits, &x, sizeof (bits));
    // x = m 2^e with m in [sqrt(1/2), sqrt(2)), then log m = 2 atanh s with s = (m - 1) / (m + 1).
    int e = ((bits >> 23) & 255) - 127;
    bits = (bits & 0x007fffff) | 0x3f800000;
    float m;
    std::memcpy (&m, &bits, sizeof (m));
    if (m > 1.41421356f)
    {
        m *= 0.5f;
        ++e;
    }
    const float s = (m - 1.0f) / (m + 1.0f);
    const float s2 = s * s;
    const float series = 2.0f * s * (1.0f + s2 * (0.33333333f + s2 * (0.2f + s2 * (0.14285714f + s2 * 0.11111111f))));
    return (float) e * 0.693145752f + (series + (float) e * 1.42860677e-6f);
}

// 10^(dB / 20).
inline float dbToGain (float db) noexcept { return exp2 (db * 0.16609640f); }

inline float tanh (float x) noexcept
{
    // Both forms are computed and one is picked, so that signals crossing 0.25 cost no branch.
    const float a = std::min (std::abs (x), 10.0f); // tanh (10) is 1 in float
    const float a2 = a * a;
    // Series to a^7: relative remainder under 1e-7 below 0.25, and exact near 0.
    const float series = a * (1.0f + a2 * (-0.33333333f + a2 * (0.13333333f + a2 * -0.053968254f)));
    const float closed = 1.0f - 2.0f / (exp2 (a * 2.8853901f) + 1.0f);
    return std::copysign (a < 0.25f ? series : closed, x);
}
}
