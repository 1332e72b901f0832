#pragma once

#include "presets/Catalogue.h"
#include "ui/PlaceholderPanel.h"

#include <functional>

namespace morvane::ui::views
{
// The preset browser over the whole canvas but the margins.
class BrowseView : public PlaceholderPanel
{
public:
    explicit BrowseView (const presets::Catalogue& c) : PlaceholderPanel ("Presets", 3, true), catalogue (c) {}

    std::function<void (const juce::String& xml)> onPresetChosen;

private:
    const presets::Catalogue& catalogue;
};
}
