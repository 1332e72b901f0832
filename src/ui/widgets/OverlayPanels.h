#pragma once

#include "ui/PlaceholderPanel.h"

#include <functional>

namespace morvane::ui::widgets
{
// Panels that lie over the canvas and are not built yet: titled plates that close.
class PlayOverlay : public PlaceholderPanel
{
public:
    PlayOverlay() : PlaceholderPanel ("Play", 3, true) {}
};
}
