#include "engine/FastMath.h"

namespace morvane::fast::detail
{
// The same constants as the scalar tanh's, in its order; the two bounds as squares.
const TanhLanes tanhLanes {
    splat (56.25f), splat (1.0f), splat (-0.33333333f), splat (0.13333333f), splat (-0.053968254f),
    splat (4.89352455891786e-3f), splat (6.37261928875436e-4f), splat (1.48572235717979e-5f), splat (5.12229709037114e-8f),
    splat (-8.60467152213735e-11f), splat (2.00018790482477e-13f), splat (-2.76076847742355e-16f),
    splat (4.89352518554385e-3f), splat (2.26843463243900e-3f), splat (1.18534705686654e-4f), splat (1.19825839466702e-6f),
    splat (0.0625f)
};
}
