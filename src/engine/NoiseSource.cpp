#include "engine/NoiseSource.h"

namespace morvane::detail
{
namespace
{
    constexpr fast::Lanes pairs (float a, float b) { return fast::Lanes { a, a, b, b }; }
}

// The pink filter's poles and input shares lie as b0, b1 | b2, b3 | b4, b5, each side by side.
const NoiseLanes noiseLanes {
    fast::splat (4.656613e-10f),
    pairs (0.99886f, 0.99332f), pairs (0.0555179f, 0.0750759f),
    pairs (0.969f, 0.8665f), pairs (0.153852f, 0.3104856f),
    pairs (0.55f, -0.7616f), pairs (0.5329522f, -0.016898f),
    fast::splat (0.5362f), fast::splat (0.11f), fast::splat (0.115926f), fast::splat (0.02f), fast::splat (1.0f)
};
}
