#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace morvane::ui::primitives::canonical
{
// A text chip drawn by the control painter, with its caption in one type role.
class LabeledChipButton : public juce::Button
{
public:
    LabeledChipButton (const juce::String& text, int textRole, int surfaceVariant);
    ~LabeledChipButton() override;

    int getTextRole() const noexcept { return textRole; }
    int getSurfaceVariant() const noexcept { return surfaceVariant; }

protected:
    void paintButton (juce::Graphics&, bool over, bool down) override;

private:
    int textRole, surfaceVariant;
    juce::Font font;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (LabeledChipButton)
};
}
