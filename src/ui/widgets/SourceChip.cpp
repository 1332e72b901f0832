#include "ui/widgets/SourceChip.h"

#include "audio/EditHistory.h"

#include "ui/theme/Surfaces.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"
#include "widgets/GrabCursor.h"

namespace morvane::ui::widgets
{
namespace
{
const char* const dragHelp = "Drag to a destination, or press Return to choose a modulation destination.";

void setChoiceIndex (juce::RangedAudioParameter* p, int index)
{
    auto* choice = dynamic_cast<juce::AudioParameterChoice*> (p);
    if (choice == nullptr || choice->choices.size() < 2)
        return;
    choice->beginChangeGesture();
    choice->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, (float) index / (float) (choice->choices.size() - 1)));
    choice->endChangeGesture();
}

int choiceIndex (juce::RangedAudioParameter* p)
{
    auto* choice = dynamic_cast<juce::AudioParameterChoice*> (p);
    return choice != nullptr ? choice->getIndex() : -1;
}

void setReal (juce::RangedAudioParameter* p, float value)
{
    if (p == nullptr)
        return;
    p->beginChangeGesture();
    p->setValueNotifyingHost (p->convertTo0to1 (value));
    p->endChangeGesture();
}
}

juce::Colour sourceColour (const juce::String& id)
{
    if (id == "velocity" || id == "ampEnv") return token (Token::sourceVelocity);
    if (id == "key" || id == "filterEnv") return token (Token::sourceKey);
    if (id == "modwheel" || id == "smoothRandom") return token (Token::sourceModWheel);
    if (id == "aftertouch" || id == "noteRandom") return token (Token::sourceAftertouch);
    if (id == "lfo1" || id == "beatPhase") return token (Token::sourceLfo);
    if (id == "dcw1Env") return token (Token::sourceDcw1);
    if (id == "dcw2Env") return token (Token::sourceDcw2);
    return token (Token::accentPrimary);
}

int sourceIndexOf (const juce::String& id)
{
    static const char* const ids[] = { "velocity", "key", "modwheel", "aftertouch", "lfo1", "dcw1Env",
                                       "dcw2Env", "filterEnv", "ampEnv", "noteRandom", "smoothRandom", "beatPhase" };
    for (int i = 0; i < (int) std::size (ids); ++i)
        if (id == ids[i])
            return i + 1;
    return 0;
}

const std::array<AssignMenuRow, 20>& assignMenuRows() noexcept
{
    static const std::array<AssignMenuRow, 20> rows { {
        { 101, 4, "OSC 1 DCW" },      { 102, 5, "OSC 2 DCW" },        { 103, 10, "OSC 2 detune" },
        { 104, 8, "OSC 1 level" },    { 105, 9, "OSC 2 level" },      { 106, 1, "Filter cutoff" },
        { 107, 14, "Filter resonance" }, { 108, 15, "Filter envelope" }, { 109, 2, "Drive" },
        { 110, 6, "Sub level" },      { 111, 20, "Noise level" },     { 112, 17, "LFO 1 rate" },
        { 113, 18, "LFO 1 depth" },   { 114, 19, "Output" },          { 115, 23, "PD morph" },
        { 116, 24, "Reese beat" },    { 117, 25, "Reese spread" },    { 118, 26, "Phase mix" },
        { 119, 27, "Phase notch" },   { 120, 28, "Feedback" },
    } };
    return rows;
}

bool assignFromChip (juce::AudioProcessorValueTreeState& state, int source, int destination)
{
    if (source < 1 || destination < 1)
        return false;
    auto param = [&state] (const juce::String& id) { return state.getParameter (id); };
    const EditHistory::Step step (state);
    // Only the first four slots: the chip's menu is the quick path, the matrix has the rest.
    for (int slot = 1; slot <= 4; ++slot)
    {
        const auto n = juce::String (slot);
        if (choiceIndex (param ("mod" + n + "Dest")) != destination)
            continue;
        setChoiceIndex (param ("mod" + n + "Source"), source);
        if (auto* amount = param ("mod" + n + "Amount"))
            if (std::abs (amount->convertFrom0to1 (amount->getValue())) < 0.001f)
                setReal (amount, 0.35f);
        return true;
    }
    for (int slot = 1; slot <= 4; ++slot)
    {
        const auto n = juce::String (slot);
        if (choiceIndex (param ("mod" + n + "Source")) != 0)
            continue;
        setChoiceIndex (param ("mod" + n + "Source"), source);
        setChoiceIndex (param ("mod" + n + "Dest"), destination);
        setReal (param ("mod" + n + "Amount"), 0.35f);
        return true;
    }
    return false;
}

SourceChip::SourceChip (const juce::String& id, const juce::String& t)
    : sourceId (id), text (t), colour (sourceColour (id))
{
    setSize (156, 44);
    setWantsKeyboardFocus (true);
    setMouseCursor (ostrel::widgets::grabCursor());
    setTitle (text);
    updateHelp();
}

SourceChip::~SourceChip() = default;

void SourceChip::updateHelp()
{
    setHelpText (draggable ? dragHelp : "Choose a modulation source.");
}

void SourceChip::setSource (const juce::String& newId, const juce::String& newText, bool off)
{
    sourceId = newId;
    text = newText;
    offLook = off;
    colour = sourceColour (sourceId);
    setTitle (text);
    updateHelp();
    repaint();
}

void SourceChip::setDraggable (bool d)
{
    if (d == draggable)
        return;
    draggable = d;
    setMouseCursor (d ? ostrel::widgets::grabCursor() : juce::MouseCursor (juce::MouseCursor::PointingHandCursor));
    updateHelp();
    repaint();
}

void SourceChip::setOffLook (bool off)
{
    if (off == offLook)
        return;
    offLook = off;
    repaint();
}

void SourceChip::mouseEnter (const juce::MouseEvent&)
{
    hovered = true;
    repaint();
}

void SourceChip::mouseExit (const juce::MouseEvent&)
{
    hovered = pressed = false;
    repaint();
}

void SourceChip::mouseDown (const juce::MouseEvent&)
{
    if (isShowing())
        grabKeyboardFocus();
    dragStarted = false;
    pressed = true;
    repaint();
}

void SourceChip::mouseDrag (const juce::MouseEvent&)
{
    if (! draggable || dragStarted)
        return;
    auto* container = juce::DragAndDropContainer::findParentDragContainerFor (this);
    if (container == nullptr || container->isDragAndDropActive())
        return;
    dragStarted = true;
    container->startDragging (sourceId, this, juce::ScaledImage(), false);
}

void SourceChip::mouseUp (const juce::MouseEvent& e)
{
    if (! dragStarted && ! e.mouseWasDraggedSinceMouseDown())
        showAssignMenu();
    dragStarted = pressed = false;
    repaint();
}

bool SourceChip::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress::returnKey || key == juce::KeyPress::spaceKey)
    {
        showAssignMenu();
        return true;
    }
    return false;
}

void SourceChip::showAssignMenu()
{
    if (onClick)
    {
        onClick();
        return;
    }
    if (assignState == nullptr)
        return;
    juce::PopupMenu menu;
    menu.addSectionHeader ("Assign " + text);
    for (const auto& row : assignMenuRows())
        menu.addItem (row.menuId, row.text, true, false);
    menu.showMenuAsync (juce::PopupMenu::Options().withTargetComponent (this),
                        [safe = juce::Component::SafePointer<SourceChip> (this)] (int result)
                        {
                            if (safe == nullptr || safe->assignState == nullptr || result == 0)
                                return;
                            int destination = 0;
                            for (const auto& row : assignMenuRows())
                                if (row.menuId == result)
                                    destination = row.destination;
                            assignFromChip (*safe->assignState, sourceIndexOf (safe->sourceId), destination);
                        });
}

void SourceChip::paint (juce::Graphics& g)
{
    const auto b = getLocalBounds().toFloat();
    drawControlSurface (g, b, hovered, pressed, false, hasKeyboardFocus (false), isEnabled(), 8);

    const float dx = b.getX() + 8.0f;
    const float top = b.getY() + b.getHeight() * 0.5f - 5.0f;
    if (offLook)
    {
        g.setColour (token (Token::textTertiary).withAlpha (0.4f));
        g.drawEllipse (dx + 0.5f, top + 0.5f, 9.0f, 9.0f, 1.0f);
    }
    else
    {
        g.setColour (colour);
        g.fillEllipse (dx, top, 10.0f, 10.0f);
    }

    const float a = juce::jmax (juce::jmax (b.getWidth() - 8.0f, 0.0f) - 16.0f, 0.0f);
    // A dot column of 16 and a grip of 10 leave a small chip room for three letters.
    const float c = juce::jmin (a, 16.0f);
    const float tx = dx + c;
    float tw = a - c;
    if (draggable)
    {
        g.setColour (hovered || pressed ? colour : token (Token::textSecondary));
        for (int row = 0; row < 2; ++row)
            for (int column = 0; column < 2; ++column)
                g.fillEllipse (tx + tw - 8.0f + 5.0f * (float) column, b.getY() + b.getHeight() * 0.5f - 4.0f + 5.0f * (float) row,
                               3.0f, 3.0f);
        tw -= juce::jmin (tw, 10.0f);
    }
    drawTypeText (g, 6, text.toUpperCase(), juce::Rectangle<float> (tx, b.getY(), tw, b.getHeight()).toNearestInt(),
                  token (offLook ? Token::textTertiary : Token::textPrimary), juce::Justification::centredLeft);
}
}
