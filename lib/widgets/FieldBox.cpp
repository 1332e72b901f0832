#include "FieldBox.h"

namespace ostrel::widgets
{

FieldBox::FieldBox(const juce::String& labelText) : label(labelText) {}

FieldBox::~FieldBox() = default;

void FieldBox::setContent(juce::Component* newContent)
{
    if (content != nullptr)
        removeChildComponent(content);
    content = newContent;
    if (newContent != nullptr)
        addAndMakeVisible(newContent);
    resized();
}

void FieldBox::setCompact(bool shouldBeCompact)
{
    if (shouldBeCompact == compact)
        return;
    compact = shouldBeCompact;
    resized();
    repaint();
}

void FieldBox::setLabel(const juce::String& text)
{
    if (text == label)
        return;
    label = text;
    repaint();
}

void FieldBox::setLabelJustification(int justification)
{
    labelJustification = justification;
    repaint();
}

void FieldBox::paint(juce::Graphics& g)
{
    auto area = getLocalBounds();
    if (! compact)
        area.removeFromTop(std::min(area.getHeight(), 30));
    drawRoleText(g, 6, label, area.removeFromTop(std::min(area.getHeight(), 22)), paletteColour(textMuted),
                 labelJustification);
}

void FieldBox::resized()
{
    if (content == nullptr)
        return;
    const int h = getHeight();
    if (compact)
    {
        const int y = std::min(h, 22);
        content->setBounds(0, y, getWidth(), std::min(h - y, 44));
    }
    else
    {
        const int y = std::min(h, 52);
        content->setBounds(12, y, std::max(0, getWidth() - 24), std::max(0, std::min(h - y, 44)));
    }
}

} // namespace ostrel::widgets
