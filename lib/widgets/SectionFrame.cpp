#include "SectionFrame.h"

namespace ostrel::widgets
{

SectionFrame::SectionFrame()
{
    setInterceptsMouseClicks(false, true);
}

SectionFrame::~SectionFrame() = default;

void SectionFrame::setFillIndex(int paletteIndex)
{
    const auto before = getFillColour();
    fillIndex = paletteIndex;
    if (getFillColour() != before)
        repaint();
}

void SectionFrame::setOutlineIndex(int paletteIndex)
{
    const auto before = getOutlineColour();
    outlineIndex = paletteIndex;
    if (getOutlineColour() != before)
        repaint();
}

void SectionFrame::setFillColour(juce::Colour colour)
{
    fillIndex = -1;
    fillColour = colour;
    repaint();
}

void SectionFrame::setOutlineColour(juce::Colour colour)
{
    outlineIndex = -1;
    outlineColour = colour;
    repaint();
}

juce::Colour SectionFrame::getFillColour() const { return fillIndex >= 0 ? paletteColour(fillIndex) : fillColour; }
juce::Colour SectionFrame::getOutlineColour() const { return outlineIndex >= 0 ? paletteColour(outlineIndex) : outlineColour; }

void SectionFrame::setOutlineThickness(float thickness)
{
    outlineThickness = std::max(0.0f, thickness);
    repaint();
}

void SectionFrame::setCornerRadius(float radius)
{
    cornerRadius = std::max(0.0f, radius);
    repaint();
}

void SectionFrame::setPadding(int pixels)
{
    pixels = std::max(pixels, 0);
    if (pixels == padding)
        return;
    padding = pixels;
    resized();
    repaint();
}

void SectionFrame::setContent(juce::Component* component)
{
    content = component;
    if (component != nullptr && component->getParentComponent() != this)
        addAndMakeVisible(component);
    resized();
}

juce::Rectangle<int> SectionFrame::contentBounds() const
{
    const auto b = getLocalBounds();
    return { std::min(padding, b.getWidth()), std::min(padding, b.getHeight()),
             std::max(0, b.getWidth() - 2 * padding), std::max(0, b.getHeight() - 2 * padding) };
}

void SectionFrame::paint(juce::Graphics& g)
{
    if (getLocalBounds().isEmpty())
        return;
    const auto bounds = getLocalBounds().toFloat();
    g.setColour(getFillColour());
    g.fillRoundedRectangle(bounds, cornerRadius);

    const auto outline = getOutlineColour();
    if (outlineThickness > 0.0f && ! outline.isTransparent())
    {
        g.setColour(outline);
        g.drawRoundedRectangle(bounds.reduced(0.5f), cornerRadius, outlineThickness);
    }
}

void SectionFrame::resized()
{
    if (content != nullptr)
        content->setBounds(contentBounds());
}

// --- BypassablePanel -----------------------------------------------------------------------

BypassablePanel::BypassablePanel(const juce::String& titleText) : title(titleText)
{
    addAndMakeVisible(title);
    setTitle(titleText);
}

BypassablePanel::~BypassablePanel() = default;

void BypassablePanel::addDimmedChild(juce::Component* component)
{
    if (component == nullptr)
        return;
    dimmedChildren.emplace_back(component);
    component->setAlpha(active ? 1.0f : 0.4f);
}

void BypassablePanel::setActive(bool state)
{
    if (state == active)
        return;
    active = state;
    title.setStatusText(active ? juce::String() : juce::String("BYPASSED"));
    for (auto& child : dimmedChildren)
        if (child != nullptr)
            child->setAlpha(active ? 1.0f : 0.4f);
    repaint();
}

void BypassablePanel::setHeaderControl(juce::Component* control, int width)
{
    headerControl = control;
    headerControlWidth = std::max(width, 1);
    if (control != nullptr && control->getParentComponent() != this)
        addAndMakeVisible(control);
    resized();
}

int BypassablePanel::headerReservedWidth() const
{
    return headerControl != nullptr ? headerControlWidth + 4 : reservedHeaderWidth;
}

juce::Rectangle<int> BypassablePanel::bodyBounds() const
{
    auto area = contentBounds();
    const int top = std::min(getHeight(), 8) + 22 + 8;
    if (area.getY() < top)
        area.setTop(std::min(top, area.getBottom()));
    return area;
}

void BypassablePanel::resized()
{
    SectionFrame::resized();

    const int h = getHeight(), w = getWidth();
    const int rowY = std::min(h, 8);
    auto row = juce::Rectangle<int>(20, rowY, std::max(w - 40, 0), std::min(h - rowY, 22));

    if (headerControl != nullptr)
    {
        const int cw = std::min(row.getWidth(), headerControlWidth);
        headerControl->setBounds(row.getRight() - cw, row.getY() + 4, cw, row.getHeight());
        auto titleRow = row.withTrimmedRight(cw);
        title.setBounds(titleRow.withTrimmedRight(std::min(titleRow.getWidth(), 4)));
    }
    else
    {
        title.setBounds(row.withTrimmedRight(std::min(row.getWidth(), reservedHeaderWidth)));
    }
}

} // namespace ostrel::widgets
