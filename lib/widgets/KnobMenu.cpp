// The knob's conversations with its host: context menu, clipboard, typed values, source drops.
#include "Knob.h"
#include "ValueParse.h"

#include <cmath>

namespace ostrel::widgets
{

int dragSourceIndex(const juce::var& description)
{
    if (description.isInt() || description.isInt64())
        return (int) description;
    if (description.isString())
    {
        static const char* ids[] = { "velocity", "key", "modwheel", "aftertouch", "lfo1", "dcw1Env", "dcw2Env" };
        const auto text = description.toString();
        for (int i = 0; i < 7; ++i)
            if (text == ids[i])
                return i + 1;
    }
    return 0;
}

namespace
{
bool isValidSource(int index) { return index >= 1 && index <= 7; }
} // namespace

juce::PopupMenu Knob::buildContextMenu() const
{
    juce::PopupMenu menu;
    const auto status = modulationStatus ? modulationStatus() : juce::String();

    if (! sourceNames.isEmpty() && onSourceChosen)
    {
        juce::PopupMenu sources;
        for (int i = 0; i < sourceNames.size(); ++i)
            sources.addItem(menuFirstSource + i, sourceNames[i]);

        if (status.isNotEmpty())
        {
            menu.addSectionHeader(status);
            menu.addSubMenu("Modulate from", sources);
            if (onRemoveModulation)
                menu.addItem(menuRemoveModulation, "Remove modulation");
            menu.addSeparator();
        }
        else
        {
            menu.addSubMenu("Modulate from", sources);
        }
    }

    if (onMidiLearn)
        menu.addItem(menuMidiLearn, midiLearnPending ? "Cancel MIDI learn" : "MIDI learn");

    menu.addItem(menuReset, "Reset to default");
    menu.addItem(menuCopy, "Copy value");
    menu.addItem(menuPaste, "Paste value");
    menu.addItem(menuTypeValue, juce::String(juce::CharPointer_UTF8("Type a value\xe2\x80\xa6")), isEnabled());

    if (onRevealInMatrix)
    {
        menu.addSeparator();
        menu.addItem(menuReveal, "Reveal in matrix");
    }
    if (extraMenuBuilder)
    {
        menu.addSeparator();
        extraMenuBuilder(menu);
    }
    return menu;
}

void Knob::handleMenuResult(int itemId)
{
    if (itemId >= menuFirstSource && itemId < menuFirstSource + sourceNames.size())
    {
        if (onSourceChosen)
        {
            onSourceChosen(itemId - (menuFirstSource - 1));
            setModulated(true);
        }
        return;
    }

    switch (itemId)
    {
        case menuMidiLearn:
            if (onMidiLearn)
                onMidiLearn();
            break;
        case menuReset:
            resetToDefault();
            break;
        case menuCopy:
            clipboard::copyText(juce::String(getValue()));
            break;
        case menuPaste:
            // Text that is no number reads as 0; the range clamps it like any other value.
            setValueFromUser(clipboard::pasteText().getDoubleValue());
            break;
        case menuTypeValue:
            showValueEntry();
            break;
        case menuReveal:
            if (onRevealInMatrix)
                onRevealInMatrix();
            break;
        case menuRemoveModulation:
            if (onRemoveModulation)
                onRemoveModulation();
            setModulated(false);
            break;
        default:
            break; // items of an extra builder are its own business
    }
}

void Knob::showContextMenu()
{
    juce::Component::SafePointer<Knob> safe(this);
    buildContextMenu().showMenuAsync(juce::PopupMenu::Options().withTargetComponent(this), [safe](int result) {
        if (safe == nullptr || result == 0)
            return;
        // The box must open after the menu's window has gone and the keyboard has come back to
        // the editor's window (a window system does that asynchronously), or it loses it at once.
        if (result == menuTypeValue)
            juce::Timer::callAfterDelay(120, [safe] {
                if (safe != nullptr)
                    safe->handleMenuResult(menuTypeValue);
            });
        else
            safe->handleMenuResult(result);
    });
}

// --- typed values --------------------------------------------------------------------------

std::optional<double> Knob::parseValue(const juce::String& text)
{
    auto parsed = valueParser ? valueParser(text)
                              : parseDisplayedValue(text, *this, [this](double v) { return getTextFromValue(v); });
    if (! parsed.has_value() || ! std::isfinite(*parsed))
        return std::nullopt;
    return juce::jlimit(getMinimum(), getMaximum(), *parsed);
}

bool Knob::applyTypedValue(const juce::String& text)
{
    const auto parsed = parseValue(text);
    if (! parsed.has_value())
        return false;
    // The text as shown, accepted unchanged, is no edit.
    if (*parsed != getValue())
        setValueFromUser(*parsed);
    return true;
}

double Knob::getValueFromText(const juce::String& text) { return parseValue(text).value_or(getValue()); }

void Knob::showValueEntry()
{
    if (! isEnabled())
        return;
    resized();
    valueEditor.begin(valueEditor.getBounds(), formattedValue());
    repaint();
}

// --- source drops --------------------------------------------------------------------------

bool Knob::isInterestedInDragSource(const SourceDetails& details)
{
    return modulationEnabled && isValidSource(dragSourceIndex(details.description));
}

void Knob::itemDragEnter(const SourceDetails&)
{
    sourceDragOver = true;
    repaint();
}

void Knob::itemDragExit(const SourceDetails&)
{
    sourceDragOver = false;
    repaint();
}

void Knob::itemDropped(const SourceDetails& details)
{
    sourceDragOver = false;
    const int index = dragSourceIndex(details.description);
    if (modulationEnabled && onSourceDropped && isValidSource(index) && onSourceDropped(index))
        modulated = true;
    repaint();
}

} // namespace ostrel::widgets
