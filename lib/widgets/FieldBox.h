#pragma once

#include "WidgetStyle.h"

namespace ostrel::widgets
{

// A caption over one control.
class FieldBox : public juce::Component
{
public:
    explicit FieldBox(const juce::String& label = {});
    ~FieldBox() override;

    void setContent(juce::Component* newContent);
    juce::Component* getContent() const noexcept { return content; }
    void setCompact(bool shouldBeCompact);
    bool isCompact() const noexcept { return compact; }
    void setLabel(const juce::String& text);
    const juce::String& getLabel() const noexcept { return label; }
    void setLabelJustification(int justification);

    void paint(juce::Graphics&) override;
    void resized() override;

private:
    juce::String label;
    int labelJustification = 33;
    juce::Component::SafePointer<juce::Component> content;
    bool compact = false;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(FieldBox)
};

} // namespace ostrel::widgets
