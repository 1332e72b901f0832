#pragma once

#include "ValueDrag.h"
#include "ValueEntry.h"
#include "WidgetStyle.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace ostrel::widgets
{

// A small dragged value box: caption above, value below, chevrons at the right.
class ValueChip : public juce::Slider
{
public:
    using Formatter = std::function<juce::String(double)>;

    explicit ValueChip(const juce::String& label);
    ValueChip(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId, const juce::String& label);
    ~ValueChip() override;

    void setArrowsVisible(bool visible);
    void setValueFormatter(Formatter formatter);
    const juce::String& getLabel() const noexcept { return label; }
    juce::String formattedValue() const;
    bool isHovered() const noexcept { return hovered; }
    bool isPressed() const noexcept { return pressed; }

    // Typed value entry: reads what the formatter prints, clamps, refuses anything else.
    std::optional<double> parseValue(const juce::String& text);
    bool applyTypedValue(const juce::String& text);
    void showValueEntry();
    bool isEditingValue() const noexcept { return valueEditor.isEditing(); }

    void mouseEnter(const juce::MouseEvent&) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseDown(const juce::MouseEvent&) override;
    void mouseDrag(const juce::MouseEvent&) override;
    void mouseUp(const juce::MouseEvent&) override;
    void mouseDoubleClick(const juce::MouseEvent&) override;
    void paint(juce::Graphics&) override;
    bool keyPressed(const juce::KeyPress&) override;
    juce::String getTextFromValue(double value) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;
    double getValueFromText(const juce::String& text) override;

private:
    juce::String label;
    Formatter valueFormatter;
    bool arrowsVisible = true;
    bool hovered = false;
    bool pressed = false;
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> attachment;
    ValueEntryEditor valueEditor;
    VerticalValueDrag valueDrag;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(ValueChip)
};

} // namespace ostrel::widgets
