#include "engine/FastMath.h"

namespace morvane::fast::detail
{
namespace
{
    constexpr Lanes all (float v) { return Lanes { v, v, v, v }; }
}

// The same constants as the scalar tanh's, in its order.
const TanhLanes tanhLanes {
    all (7.5f), all (1.0f), all (-0.33333333f), all (0.13333333f), all (-0.053968254f),
    all (4.89352455891786e-3f), all (6.37261928875436e-4f), all (1.48572235717979e-5f), all (5.12229709037114e-8f),
    all (-8.60467152213735e-11f), all (2.00018790482477e-13f), all (-2.76076847742355e-16f),
    all (4.89352518554385e-3f), all (2.26843463243900e-3f), all (1.18534705686654e-4f), all (1.19825839466702e-6f),
    all (0.25f)
};
}
