#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace morvane::ui::primitives::canonical
{
// A square control whose glyph is drawn by a callback in the state's colour.
class IconButton : public juce::Button
{
public:
    using IconPainter = std::function<void (juce::Graphics&, const juce::Rectangle<float>&, juce::Colour)>;

    explicit IconButton (const juce::String& name, IconPainter painter = {});
    ~IconButton() override;

    IconPainter drawIcon;
    int surfaceVariant = 5;

protected:
    void paintButton (juce::Graphics&, bool over, bool down) override;

private:
    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (IconButton)
};
}
