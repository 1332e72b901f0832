#include "SectionHeader.h"

namespace ostrel::widgets
{

SectionHeader::SectionHeader(const juce::String& title) : titleText(title)
{
    setSize(420, 44);
    setWantsKeyboardFocus(true);
    setTitle(title);
}

SectionHeader::~SectionHeader() = default;

void SectionHeader::setTitleText(const juce::String& text)
{
    titleText = text;
    setTitle(text);
    layoutRow();
    repaint();
}

void SectionHeader::setActionText(const juce::String& text)
{
    actionText = text;
    setDescription(text);
    layoutRow();
    repaint();
}

void SectionHeader::setTextRole(TextRole role)
{
    textRole = role;
    repaint();
}

void SectionHeader::setActionTooltip(const juce::String& text) { actionTooltip = text; }

void SectionHeader::setOnAction(std::function<void()> action)
{
    onAction = std::move(action);
    if (! onAction)
        setHover(false);
    invalidateAccessibilityHandler();
    repaint();
}

void SectionHeader::layoutRow()
{
    auto row = getLocalBounds().removeFromTop(std::min(getHeight(), 44));
    actionBounds = {};
    if (actionText.isNotEmpty())
    {
        const int width = row.getWidth();
        const int aw = std::min(width, std::min(roleTextWidth(6, actionText) + 4, width / 2));
        actionBounds = row.removeFromRight(aw);
        row.removeFromRight(std::min(row.getWidth(), 4));
    }
    titleBounds = row;
}

void SectionHeader::resized() { layoutRow(); }

void SectionHeader::setHover(bool on)
{
    if (on == actionHovered)
        return;
    actionHovered = on;
    repaint();
}

void SectionHeader::mouseMove(const juce::MouseEvent& e)
{
    if (onAction && actionBounds.contains(e.getPosition()))
    {
        setHover(true);
        setMouseCursor(juce::MouseCursor::PointingHandCursor);
        setTooltip(actionTooltip);
    }
    else
    {
        mouseExit(e);
    }
}

void SectionHeader::mouseExit(const juce::MouseEvent&)
{
    setHover(false);
    setMouseCursor(juce::MouseCursor::NormalCursor);
    setTooltip({});
}

void SectionHeader::mouseDown(const juce::MouseEvent& e)
{
    if (onAction && actionBounds.contains(e.getPosition()))
        onAction();
}

bool SectionHeader::keyPressed(const juce::KeyPress& key)
{
    const int code = key.getKeyCode();
    if ((code == juce::KeyPress::returnKey || code == juce::KeyPress::spaceKey) && onAction)
    {
        onAction();
        return true;
    }
    return false;
}

void SectionHeader::paint(juce::Graphics& g)
{
    layoutRow();
    const bool focused = hasKeyboardFocus(false);

    if (onAction && (actionHovered || focused) && ! actionBounds.isEmpty())
    {
        const auto pill = actionBounds.toFloat().withTrimmedTop(4.0f).withHeight(std::max(0.0f, (float) actionBounds.getHeight() - 8.0f));
        g.setColour(paletteColour(actionHovered ? accentSelection : surfaceOverlay));
        g.fillRoundedRectangle(pill, 2.0f);
        g.setColour(paletteColour(focused ? borderFocus : borderSubtle));
        g.drawRoundedRectangle(pill.reduced(0.5f), 2.0f, focused ? 2.0f : 1.0f);
    }

    drawRoleText(g, 6, actionText, actionBounds, paletteColour(onAction ? textPrimary : textMuted), 34);
    drawRoleText(g, textRole, titleText, titleBounds, paletteColour(textRole == 1 ? textPrimary : textMuted), 33);
}

std::unique_ptr<juce::AccessibilityHandler> SectionHeader::createAccessibilityHandler()
{
    if (! onAction)
        return std::make_unique<juce::AccessibilityHandler>(*this, juce::AccessibilityRole::staticText);

    return std::make_unique<juce::AccessibilityHandler>(
        *this, juce::AccessibilityRole::button,
        juce::AccessibilityActions().addAction(juce::AccessibilityActionType::press, [this] {
            if (onAction)
                onAction();
        }));
}

SectionTitle::SectionTitle(const juce::String& title) : SectionHeader(title)
{
    setTextRole(1);
    setInterceptsMouseClicks(false, false);
    setWantsKeyboardFocus(false);
}

} // namespace ostrel::widgets
