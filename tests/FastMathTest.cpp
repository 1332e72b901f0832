#include "engine/FastMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

using namespace morvane;

namespace
{
// Largest absolute and relative error of f against the double reference over [from, to].
struct Errors { double absolute = 0.0, relative = 0.0; };

Errors sweep (float from, float to, float (*f) (float), double (*reference) (double))
{
    Errors e;
    constexpr int points = 200001;
    for (int i = 0; i < points; ++i)
    {
        const float x = from + (to - from) * (float) i / (float) (points - 1);
        const double want = reference ((double) x);
        const double err = std::abs ((double) f (x) - want);
        e.absolute = std::max (e.absolute, err);
        if (std::abs (want) > 1.0e-30)
            e.relative = std::max (e.relative, err / std::abs (want));
    }
    return e;
}
}

// A float path resolves about 6e-8 of full scale; the approximations stay within a few of those,
// far below the -60 dB a listener could begin to tell on these signals. Filters design with
// tan (pi f / rate) for f up to 0.45 of the rate. A bound of 0 is not checked.
TEST (FastMath, ApproximationsStayWithinTheirBounds)
{
    struct Row { const char* what; float from, to; float (*f) (float); double (*reference) (double); double absolute, relative; };
    const Row rows[] = {
        { "sin2pi", -3.0f, 3.0f, [] (float t) { return fast::sin2pi (t); }, [] (double t) { return std::sin (6.283185307179586 * t); }, 6.0e-7, 0.0 },
        { "cos2pi", -3.0f, 3.0f, [] (float t) { return fast::cos2pi (t); }, [] (double t) { return std::cos (6.283185307179586 * t); }, 6.0e-7, 0.0 },
        { "sin", -20.0f, 20.0f, [] (float x) { return fast::sin (x); }, [] (double x) { return std::sin (x); }, 2.0e-6, 0.0 },
        { "cos", -20.0f, 20.0f, [] (float x) { return fast::cos (x); }, [] (double x) { return std::cos (x); }, 2.0e-6, 0.0 },
        { "tan", 0.0f, 0.45f * 3.1415927f, [] (float x) { return fast::tan (x); }, [] (double x) { return std::tan (x); }, 0.0, 2.0e-6 },
        { "exp2", -100.0f, 100.0f, [] (float x) { return fast::exp2 (x); }, [] (double x) { return std::exp2 (x); }, 0.0, 4.0e-7 },
        { "exp", -60.0f, 60.0f, [] (float x) { return fast::exp (x); }, [] (double x) { return std::exp (x); }, 0.0, 4.0e-6 },
        { "dbToGain", -120.0f, 40.0f, [] (float x) { return fast::dbToGain (x); }, [] (double x) { return std::pow (10.0, x / 20.0); }, 0.0, 4.0e-6 },
        { "log near 1", 0.5f, 2.0f, [] (float x) { return fast::log (x); }, [] (double x) { return std::log (x); }, 1.5e-7, 0.0 },
        { "log below", 1.0e-30f, 0.4f, [] (float x) { return fast::log (x); }, [] (double x) { return std::log (x); }, 0.0, 2.0e-7 },
        { "log above", 2.5f, 1.0e30f, [] (float x) { return fast::log (x); }, [] (double x) { return std::log (x); }, 0.0, 2.0e-7 },
        { "tanh", -12.0f, 12.0f, [] (float x) { return fast::tanh (x); }, [] (double x) { return std::tanh (x); }, 4.0e-7, 4.0e-7 },
    };
    for (const auto& row : rows)
    {
        const auto e = sweep (row.from, row.to, row.f, row.reference);
        if (row.absolute > 0.0)
        {
            EXPECT_LT (e.absolute, row.absolute) << row.what;
        }
        if (row.relative > 0.0)
        {
            EXPECT_LT (e.relative, row.relative) << row.what;
        }
    }
}

TEST (FastMath, ExactAndLimitValues)
{
    EXPECT_EQ (fast::sin2pi (0.0f), 0.0f);
    EXPECT_NEAR (fast::cos2pi (0.0f), 1.0f, 6.0e-8f);
    EXPECT_NEAR (fast::cos2pi (0.5f), -1.0f, 6.0e-8f);
    EXPECT_EQ (fast::exp2 (0.0f), 1.0f);
    EXPECT_EQ (fast::exp2 (-200.0f), 0.0f);
    EXPECT_TRUE (std::isinf (fast::exp2 (200.0f)));
    EXPECT_TRUE (std::isnan (fast::exp2 (std::nanf (""))));
    EXPECT_EQ (fast::log (1.0f), 0.0f);
    EXPECT_TRUE (std::isinf (fast::log (0.0f)));
    EXPECT_EQ (fast::tanh (0.0f), 0.0f);
    EXPECT_EQ (fast::tanh (1.0e-20f), 1.0e-20f);
    EXPECT_EQ (fast::tanh (50.0f), 1.0f);
    EXPECT_EQ (fast::tanh (-50.0f), -1.0f);
    // Odd, as the saturators rely on.
    for (float x : { 0.1f, 0.7f, 2.5f, 8.0f })
        EXPECT_EQ (fast::tanh (-x), -fast::tanh (x));
}

// The vector tanh must give each lane the bits of the scalar one, on both sides of 0.25 and 7.5.
TEST (FastMath, LanesOfTanhAreTheScalarBits)
{
    std::vector<float> xs { 0.0f, -0.0f, 1.0e-30f, 0.2499f, 0.25f, 7.5f, 7.5001f, 20.0f, -3.0f };
    for (float x = -9.0f; x < 9.0f; x += 0.0137f)
        xs.push_back (x);
    while (xs.size() % 4 != 0)
        xs.push_back (0.5f);
    for (size_t i = 0; i < xs.size(); i += 4)
    {
        const auto y = morvane::fast::tanh (morvane::fast::Lanes { xs[i], xs[i + 1], xs[i + 2], xs[i + 3] });
        for (int lane = 0; lane < 4; ++lane)
        {
            const float want = morvane::fast::tanh (xs[i + (size_t) lane]);
            ASSERT_EQ (std::memcmp (&y[lane], &want, sizeof (float)), 0) << xs[i + (size_t) lane];
        }
    }
}
