#pragma once

#include "WidgetStyle.h"

namespace ostrel::widgets
{

// A flat toggling tab; variant 1 warns in the error colour.
class Tab : public juce::Button
{
public:
    explicit Tab(const juce::String& text = {}, int variant = 0);
    ~Tab() override;

    void setVariant(int newVariant);
    int getVariant() const noexcept { return variant; }

    void paintButton(juce::Graphics&, bool isMouseOver, bool isButtonDown) override;

private:
    int variant = 0;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(Tab)
};

} // namespace ostrel::widgets
