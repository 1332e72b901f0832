#include "ChoiceDropdown.h"

namespace ostrel::widgets
{
namespace
{
constexpr const char* compactKey = "ostrel.compactChoice";
constexpr const char* compactKeyEditor = "morvane.compactChoice";
} // namespace

ChoiceDropdown::ChoiceDropdown(const juce::String& title)
{
    comboBox.setWantsKeyboardFocus(true);
    comboBox.setMouseCursor(juce::MouseCursor::PointingHandCursor);
    comboBox.setTitle(title);
    comboBox.setTooltip(title);
    comboBox.setHelpText("Choose " + title.toLowerCase() + ".");
    comboBox.setJustificationType(juce::Justification(33));
    comboBox.setEditableText(false);
    addAndMakeVisible(comboBox);
    setSize(preferredWidth(), 44);
}

ChoiceDropdown::ChoiceDropdown(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId,
                               const juce::String& title)
    : ChoiceDropdown(title)
{
    // Only a choice parameter binds; anything else leaves the box empty and unattached.
    if (auto* choice = dynamic_cast<juce::AudioParameterChoice*>(state.getParameter(parameterId)))
    {
        int id = 1;
        for (const auto& name : choice->choices)
            comboBox.addItem(name.toUpperCase(), id++);
        attachment = std::make_unique<juce::AudioProcessorValueTreeState::ComboBoxAttachment>(state, parameterId, comboBox);
    }
    setSize(preferredWidth(), 44);
}

ChoiceDropdown::~ChoiceDropdown()
{
    attachment.reset();
}

void ChoiceDropdown::setCompact(bool compact)
{
    comboBox.getProperties().set(compactKey, compact);
    comboBox.getProperties().set(compactKeyEditor, compact);
    resized();
    repaint();
    comboBox.repaint();
}

bool ChoiceDropdown::isCompact() const { return (bool) comboBox.getProperties().getWithDefault(compactKey, false); }

void ChoiceDropdown::setJustification(int justification)
{
    comboBox.setJustificationType(juce::Justification(justification));
}

void ChoiceDropdown::addItem(const juce::String& text, int itemId) { comboBox.addItem(text, itemId); }

void ChoiceDropdown::setSelectedId(int itemId, juce::NotificationType notification)
{
    comboBox.setSelectedId(itemId, notification);
}

int ChoiceDropdown::preferredWidth() const
{
    const bool compact = isCompact();
    const auto font = roleFont(compact ? 6 : 5);
    int widest = 0;
    for (int i = 0; i < comboBox.getNumItems(); ++i)
        widest = std::max(widest, (int) std::ceil(font.getStringWidthFloat(comboBox.getItemText(i))));
    return compact ? std::max(56, widest + 28) : std::max(88, widest + 42);
}

void ChoiceDropdown::paint(juce::Graphics&)
{
    // The look-and-feel draws the box from its colour ids; keep them on the current palette.
    const std::pair<int, int> ids[] = {
        { juce::ComboBox::backgroundColourId, surfaceOverlay }, { juce::ComboBox::textColourId, textPrimary },
        { juce::ComboBox::outlineColourId, borderSubtle },      { juce::ComboBox::arrowColourId, textMuted },
        { juce::ComboBox::focusedOutlineColourId, borderFocus },
    };
    for (const auto& [id, index] : ids)
        if (comboBox.findColour(id) != paletteColour(index))
            comboBox.setColour(id, paletteColour(index));
}

void ChoiceDropdown::resized() { comboBox.setBounds(getLocalBounds()); }

HeaderChoice::HeaderChoice(const juce::String& title) : ChoiceDropdown(title)
{
    setCompact(true);
    setJustification(33);
}

HeaderChoice::HeaderChoice(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId,
                           const juce::String& title)
    : ChoiceDropdown(state, parameterId, title)
{
    setCompact(true);
    setJustification(33);
}

} // namespace ostrel::widgets
