#include "ui/widgets/PresetNavStrip.h"

#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

namespace morvane::ui::widgets
{
namespace
{
void drawChevron (juce::Graphics& g, const juce::Rectangle<float>& bounds, juce::Colour colour, bool forward)
{
    const auto box = juce::Rectangle<float> (18.0f, 22.0f).withCentre (bounds.getCentre());
    juce::Path p;
    if (forward)
    {
        p.startNewSubPath (box.getTopLeft());
        p.lineTo (box.getRight(), box.getCentreY());
        p.lineTo (box.getBottomLeft());
    }
    else
    {
        p.startNewSubPath (box.getTopRight());
        p.lineTo (box.getX(), box.getCentreY());
        p.lineTo (box.getBottomRight());
    }
    g.setColour (colour);
    g.strokePath (p, juce::PathStrokeType (1.5f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}
}

PresetNavStrip::ArrowButton::ArrowButton (bool isForward)
    : IconButton (isForward ? "next" : "prev"), forward (isForward)
{
    surfaceVariant = 5;
    drawIcon = [isForward] (juce::Graphics& g, const juce::Rectangle<float>& b, juce::Colour c) { drawChevron (g, b, c, isForward); };
    setTitle (forward ? "Next preset" : "Previous preset");
    setTooltip (getTitle());
}

PresetNavStrip::BrowseButton::BrowseButton() : LabeledChipButton ("BROWSE", 6, 0)
{
    setTitle ("Browse presets");
    setTooltip ("Browse presets");
}

PresetNavStrip::PresetNavStrip()
{
    setName ("PresetNavStrip");
    setTooltip (juce::String (juce::CharPointer_UTF8 ("Click name to rename \xc2\xb7 right-click for Save / Load / Reveal folder")));
    addAndMakeVisible (previousButton);
    addAndMakeVisible (nextButton);
    addAndMakeVisible (browseButton);
    previousButton.onClick = [this] { if (onPrevious) onPrevious(); };
    nextButton.onClick = [this] { if (onNext) onNext(); };
    browseButton.onClick = [this] { if (onBrowse) onBrowse(); };
}

PresetNavStrip::~PresetNavStrip() = default;

void PresetNavStrip::setPosition (int index, int total)
{
    if (index == positionIndex && total == positionTotal)
        return;
    positionIndex = index;
    positionTotal = total;
    repaint (nameArea());
}

void PresetNavStrip::setName (const juce::String& name)
{
    if (name == nameText)
        return;
    nameText = name;
    repaint (nameArea());
}

juce::String PresetNavStrip::counterText() const
{
    return juce::String::formatted ("%02d / %02d", positionIndex, positionTotal);
}

juce::Rectangle<int> PresetNavStrip::nameArea() const { return { 44 + 8, 22, getWidth() - 200, 44 }; }

void PresetNavStrip::resized()
{
    const auto area = nameArea();
    previousButton.setBounds (0, 22, 44, 44);
    nextButton.setBounds (area.getRight(), 22, 44, 44);
    browseButton.setBounds (area.getRight() + 44 + 8, 22, 96, 44);
    if (renameEditor != nullptr)
        renameEditor->setBounds (area);
}

void PresetNavStrip::paint (juce::Graphics& g)
{
    if (renameEditor != nullptr)
        return;
    const auto area = nameArea();
    const auto font = fontForTypeRole (2);
    const auto shown = nameText.toUpperCase();
    const int width = juce::jmin (area.getWidth(), (int) std::ceil (font.getStringWidthFloat (shown)));
    drawTypeText (g, 2, nameText, area.withWidth (width), token (Token::textPrimary), juce::Justification::centredLeft);
    const auto rest = area.withTrimmedLeft (width + 8);
    if (rest.getWidth() > 0)
        drawTypeText (g, 7, counterText(), rest, token (Token::textTertiary), juce::Justification::centredLeft);
}

juce::PopupMenu PresetNavStrip::buildMenu()
{
    juce::PopupMenu menu;
    menu.addItem (1, "Save preset");
    menu.addItem (2, juce::String (juce::CharPointer_UTF8 ("Save preset as\xe2\x80\xa6")));
    menu.addSeparator();
    menu.addItem (3, juce::String (juce::CharPointer_UTF8 ("Load preset from file\xe2\x80\xa6")));
    menu.addSeparator();
    menu.addItem (4, "Reveal user preset folder");
    return menu;
}

void PresetNavStrip::mouseDown (const juce::MouseEvent& e)
{
    if (! nameArea().contains (e.getPosition()))
        return;
    if (! e.mods.isPopupMenu())
    {
        beginRename();
        return;
    }
    juce::Component::SafePointer<PresetNavStrip> safe (this);
    buildMenu().showMenuAsync (juce::PopupMenu::Options().withTargetComponent (this), [safe] (int id)
    {
        if (safe == nullptr)
            return;
        const std::function<void()>* actions[] = { &safe->onSave, &safe->onSaveAs, &safe->onLoad, &safe->onReveal };
        if (id >= 1 && id <= 4 && *actions[id - 1])
            (*actions[id - 1])();
    });
}

void PresetNavStrip::beginRename()
{
    renameEditor = std::make_unique<juce::TextEditor>();
    renameEditor->setText (nameText, true);
    renameEditor->setFont (fontForTypeRole (3));
    styleTextEditor (*renameEditor, "bg.surface", "accent.primary", "accent.primary", "text.primary", 0.3f);
    renameEditor->setIndents (2, 0);
    renameEditor->setJustification (juce::Justification::centredLeft);
    renameEditor->onReturnKey = [this] { commitRename(); };
    renameEditor->onFocusLost = [this] { commitRename(); };
    renameEditor->onEscapeKey = [this] { cancelRename(); };
    addAndMakeVisible (*renameEditor);
    resized();
    renameEditor->selectAll();
    renameEditor->grabKeyboardFocus();
}

void PresetNavStrip::commitRename()
{
    if (renameEditor == nullptr)
        return;
    const auto text = renameEditor->getText().trim();
    if (text.isNotEmpty())
    {
        nameText = text;
        if (onRename)
            onRename (text);
    }
    cancelRename();
}

void PresetNavStrip::cancelRename()
{
    // Deleting the editor inside its own callback is safe only after the call returns.
    if (renameEditor == nullptr)
        return;
    auto* old = renameEditor.release();
    old->onFocusLost = nullptr;
    juce::MessageManager::callAsync ([old] { delete old; });
    old->setVisible (false);
    removeChildComponent (old);
    resized();
    repaint();
}
}
