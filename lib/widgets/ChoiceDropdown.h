#pragma once

#include "WidgetStyle.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace ostrel::widgets
{

// A drop-down bound to a choice parameter; it keeps no value of its own.
class ChoiceDropdown : public juce::Component
{
public:
    // Unbound: items come from addItem, the host reads getSelectedId.
    explicit ChoiceDropdown(const juce::String& title);
    ChoiceDropdown(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId, const juce::String& title);
    ~ChoiceDropdown() override;

    void setCompact(bool compact);
    bool isCompact() const;
    void setJustification(int justification);
    void addItem(const juce::String& text, int itemId);
    juce::ComboBox& getComboBox() noexcept { return comboBox; }
    int getSelectedId() const { return comboBox.getSelectedId(); }
    void setSelectedId(int itemId, juce::NotificationType notification = juce::sendNotificationAsync);
    bool isAttached() const noexcept { return attachment != nullptr; }
    int preferredWidth() const;

    void paint(juce::Graphics&) override;
    void resized() override;

private:
    juce::ComboBox comboBox;
    std::unique_ptr<juce::AudioProcessorValueTreeState::ComboBoxAttachment> attachment;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(ChoiceDropdown)
};

// The compact drop-down of a card header.
class HeaderChoice : public ChoiceDropdown
{
public:
    explicit HeaderChoice(const juce::String& title);
    HeaderChoice(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId, const juce::String& title);
};

} // namespace ostrel::widgets
