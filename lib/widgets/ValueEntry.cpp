#include "ValueEntry.h"
#include "WidgetStyle.h"

#include <cmath>
#include <cstdlib>

namespace ostrel::widgets
{

std::optional<double> parseTypedValue(const juce::String& text, double minimum, double maximum)
{
    const auto trimmed = text.trim().toStdString();
    if (trimmed.empty())
        return std::nullopt;

    const char* begin = trimmed.c_str();
    char* stop = nullptr;
    const double value = std::strtod(begin, &stop);
    if (stop == begin || ! std::isfinite(value))
        return std::nullopt;

    // Only a short unit may follow: letters or a percent sign, after optional blanks.
    const juce::String rest = juce::String(stop).trim();
    if (rest.length() > 4 || ! rest.containsOnly("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ%"))
        return std::nullopt;

    if (minimum > maximum)
        std::swap(minimum, maximum);
    return juce::jlimit(minimum, maximum, value);
}

ValueEntryEditor::ValueEntryEditor()
{
    setMultiLine(false);
    setJustification(juce::Justification::centred);
    setSelectAllWhenFocused(true);
    setVisible(false);
    setTitle("Value entry");

    onReturnKey = [this] {
        const auto text = getText();
        end();
        if (onCommit)
            onCommit(text);
    };
    onEscapeKey = [this] { end(); };
}

void ValueEntryEditor::begin(juce::Rectangle<int> area, const juce::String& text)
{
    setFont(roleFont(5));
    setColour(juce::TextEditor::backgroundColourId, paletteColour(surfaceOverlay));
    setColour(juce::TextEditor::textColourId, paletteColour(textPrimary));
    setColour(juce::TextEditor::outlineColourId, paletteColour(borderSubtle));
    setColour(juce::TextEditor::focusedOutlineColourId, paletteColour(borderFocus));
    setColour(juce::TextEditor::highlightColourId, paletteColour(accentSelection));
    setColour(juce::CaretComponent::caretColourId, paletteColour(textPrimary));
    setBounds(area);
    setText(text, false);
    selectAll();
    editing = true;
    setVisible(true);
    if (isShowing())
        grabKeyboardFocus();
    focusTries = 0;
    startTimer(40);
}

void ValueEntryEditor::timerCallback()
{
    if (! editing || ++focusTries > 25 || ! isShowing())
    {
        stopTimer();
        return;
    }
    if (! hasKeyboardFocus(false))
        grabKeyboardFocus();
}

void ValueEntryEditor::end()
{
    if (! editing)
        return;
    editing = false;
    stopTimer();
    const bool hadFocus = hasKeyboardFocus(false);
    setVisible(false);
    // The keys go back to the control the value was typed for.
    if (hadFocus)
        if (auto* control = getParentComponent(); control != nullptr && control->isShowing())
            control->grabKeyboardFocus();
}

void ValueEntryEditor::focusLost(FocusChangeType cause)
{
    juce::TextEditor::focusLost(cause);
    end();
}

namespace clipboard
{
namespace
{
struct Handlers
{
    std::function<void(const juce::String&)> copy;
    std::function<juce::String()> paste;
};

Handlers& handlers()
{
    static Handlers h;
    return h;
}
} // namespace

void copyText(const juce::String& text)
{
    if (handlers().copy)
        handlers().copy(text);
    else
        juce::SystemClipboard::copyTextToClipboard(text);
}

juce::String pasteText()
{
    return handlers().paste ? handlers().paste() : juce::SystemClipboard::getTextFromClipboard();
}

void setHandlers(std::function<void(const juce::String&)> copy, std::function<juce::String()> paste)
{
    handlers() = { std::move(copy), std::move(paste) };
}
} // namespace clipboard

} // namespace ostrel::widgets
