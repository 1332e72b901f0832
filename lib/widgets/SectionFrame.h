#pragma once

#include "SectionHeader.h"

#include <vector>

namespace ostrel::widgets
{

// The rounded panel that every card sits in.
class SectionFrame : public juce::Component
{
public:
    SectionFrame();
    ~SectionFrame() override;

    // Colours by palette index stay current across theme changes; a fixed colour does not.
    void setFillIndex(int paletteIndex);
    void setOutlineIndex(int paletteIndex);
    void setFillColour(juce::Colour colour);
    void setOutlineColour(juce::Colour colour);
    void setOutlineThickness(float thickness);
    void setCornerRadius(float radius);
    void setPadding(int pixels);
    void setContent(juce::Component* component);

    juce::Colour getFillColour() const;
    juce::Colour getOutlineColour() const;
    int getPadding() const noexcept { return padding; }
    juce::Rectangle<int> contentBounds() const;

    void paint(juce::Graphics&) override;
    void resized() override;

private:
    int padding = 12;
    int fillIndex = surfaceRaised, outlineIndex = borderSubtle;
    juce::Colour fillColour, outlineColour;
    float cornerRadius = 8.0f;
    float outlineThickness = 0.0f;
    juce::Component::SafePointer<juce::Component> content;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(SectionFrame)
};

// A frame with a title row that can be switched off: its dimmed children fade but stay usable.
class BypassablePanel : public SectionFrame
{
public:
    explicit BypassablePanel(const juce::String& title = {});
    ~BypassablePanel() override;

    void addDimmedChild(juce::Component* component);
    void setActive(bool state);
    bool isActive() const noexcept { return active; }
    void setHeaderControl(juce::Component* control, int width);
    int headerReservedWidth() const;
    SectionTitle& getTitle() noexcept { return title; }
    // The row under the header, for the card's own layout.
    juce::Rectangle<int> bodyBounds() const;

    void resized() override;

private:
    SectionTitle title;
    std::vector<juce::Component::SafePointer<juce::Component>> dimmedChildren;
    bool active = true;
    int reservedHeaderWidth = 48;
    juce::Component* headerControl = nullptr;
    int headerControlWidth = 36;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(BypassablePanel)
};

} // namespace ostrel::widgets
