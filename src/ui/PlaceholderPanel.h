#pragma once

#include "ui/primitives/canonical/IconButton.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>

namespace morvane::ui
{
// A region of the layout whose panel has not been built yet: a titled plate at its exact bounds.
// Overlays get a raised plate and a close button.
class PlaceholderPanel : public juce::Component
{
public:
    PlaceholderPanel (const juce::String& title, int surfaceLevel, bool closable);
    ~PlaceholderPanel() override;

    std::function<void()> onClose;

    void paint (juce::Graphics&) override;
    void resized() override;

protected:
    juce::String title;
    int surfaceLevel;
    std::unique_ptr<primitives::canonical::IconButton> closeButton;
};

void drawCloseGlyph (juce::Graphics& g, const juce::Rectangle<float>& bounds, juce::Colour colour);
}
