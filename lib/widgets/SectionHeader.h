#pragma once

#include "WidgetStyle.h"

namespace ostrel::widgets
{

// A header row: a title at the left and an optional action word at the right.
class SectionHeader : public juce::Component, public juce::SettableTooltipClient
{
public:
    explicit SectionHeader(const juce::String& title = {});
    ~SectionHeader() override;

    void setTitleText(const juce::String& text);
    void setActionText(const juce::String& text);
    void setTextRole(TextRole role);
    void setActionTooltip(const juce::String& text);
    void setOnAction(std::function<void()> action);

    const juce::String& getTitleText() const noexcept { return titleText; }
    const juce::String& getActionText() const noexcept { return actionText; }
    TextRole getTextRole() const noexcept { return textRole; }
    bool isActionHovered() const noexcept { return actionHovered; }
    bool hasAction() const noexcept { return onAction != nullptr; }
    juce::Rectangle<int> getActionBounds() const noexcept { return actionBounds; }

    void mouseMove(const juce::MouseEvent&) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseDown(const juce::MouseEvent&) override;
    void paint(juce::Graphics&) override;
    void resized() override;
    bool keyPressed(const juce::KeyPress&) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    void layoutRow();
    void setHover(bool on);

    std::function<void()> onAction;
    juce::String titleText, actionText, actionTooltip;
    bool actionHovered = false;
    TextRole textRole = 2;
    juce::Rectangle<int> titleBounds, actionBounds;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(SectionHeader)
};

// The title row of a card; its right-hand word is a status, not a button.
class SectionTitle : public SectionHeader
{
public:
    explicit SectionTitle(const juce::String& title = {});
    void setStatusText(const juce::String& text) { setActionText(text); }
};

} // namespace ostrel::widgets
