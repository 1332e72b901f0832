#include "ui/widgets/PlayOverlay.h"

#include "audio/PluginProcessor.h"
#include "ui/widgets/CommandButtons.h"
#include "widgets/WidgetStyle.h"
#include "widgets/WidgetTheme.h"

namespace morvane::ui::widgets
{
namespace
{
constexpr int cMajor = 2741;

juce::String count127 (float v) { return juce::String (juce::roundToInt (v * 127.0f)); }
}

PlayOverlay::PlayOverlay (MorvaneAudioProcessor& p) : processor (p)
{
    setName ("PlayOverlay");
    setWantsKeyboardFocus (true);
    setPadding (16);

    phraseGrid.setNoteRange (36, 13);
    phraseGrid.setStepCount (16);
    phraseGrid.setStepsPerBeat (4);
    phraseGrid.setBeatsPerBar (4);
    phraseGrid.setRulerVisible (true);
    phraseGrid.setScale (0, cMajor);
    // The page is wide: cells stretch across it rather than stand square in the middle.
    phraseGrid.setSquareCells (false);
    keyboard.setKeyRange (36, 24);
    keyboard.setScale (0, cMajor);

    pitchWheel.setLabel ("BEND");
    modSlider.setLabel ("MOD");
    velocitySlider.setLabel ("VEL");
    pressurePad.setLabel ("PRESS");
    velocitySlider.setValue (0.85f, false);
    pitchWheel.setValueFormatter ([] (float v)
    {
        const int st = juce::roundToInt (v * 2.0f);
        return st == 0 ? juce::String ("0") : (st > 0 ? "+" : "") + juce::String (st) + " st";
    });
    for (auto* c : { (ostrel::widgets::PerformanceControl*) &modSlider, (ostrel::widgets::PerformanceControl*) &velocitySlider,
                     (ostrel::widgets::PerformanceControl*) &pressurePad })
        c->setValueFormatter (count127);

    const std::pair<ostrel::widgets::Tab*, const char*> tips[] = {
        { &playButton, "Start / stop the phrase grid playback (Space)" }, { &holdButton, "Sustain played notes after key release" },
        { &noteButton, "Edit mode: place notes by clicking the grid" }, { &tieButton, "Edit mode: toggle ties (sustain across steps)" },
        { &accentButton, "Edit mode: toggle accents (boosted velocity)" }, { &eraseButton, "Edit mode: click steps to erase them" },
        { &clearButton, "Erase every step in the phrase grid" }, { &panicButton, "Force-stop every sounding note (MIDI panic)" },
    };
    for (auto [tab, tip] : tips)
    {
        tab->setTooltip (tip);
        tab->setClickingTogglesState (tab != &clearButton && tab != &panicButton);
        addAndMakeVisible (*tab);
    }
    noteButton.setToggleState (true, juce::dontSendNotification);

    closeButton.setButtonText (juce::String (juce::CharPointer_UTF8 ("\xe2\x9c\x95")));
    styleCloseButton (closeButton, "Close play overlay", "Close play overlay");
    closeButton.onClick = [this] { if (onClose) onClose(); };

    for (auto* c : std::initializer_list<juce::Component*> { &phraseGrid, &keyboard, &pitchWheel, &modSlider, &velocitySlider,
                                                             &pressurePad, &closeButton })
        addAndMakeVisible (c);

    keyboard.onNoteOn = [this] (int note, float velocity) { keyDown (note, velocity); };
    keyboard.onNoteOff = [this] (int note) { keyUp (note); };
    pitchWheel.onValueChanged = [this] (float v) { processor.pushPitchBend (v); };
    modSlider.onValueChanged = [this] (float v) { processor.pushModWheel (v); };
    pressurePad.onValueChanged = [this] (float v) { processor.pushAftertouch (v); };

    playButton.onClick = [this] { setPlaying (playButton.getToggleState()); };
    holdButton.onClick = [this] { setHold (holdButton.getToggleState()); };
    noteButton.onClick = [this] { setEditMode (0); };
    tieButton.onClick = [this] { setEditMode (1); };
    accentButton.onClick = [this] { setEditMode (2); };
    eraseButton.onClick = [this] { setEditMode (3); };
    clearButton.onClick = [this]
    {
        phraseGrid.clearSteps();
        clearButton.setToggleState (false, juce::dontSendNotification);
        publishPhrase();
    };
    panicButton.onClick = [this] { panic(); panicButton.setToggleState (false, juce::dontSendNotification); };

    swingChip.setRange (50.0, 75.0, 1.0);
    swingChip.setDoubleClickReturnValue (true, 50.0);
    swingChip.setValueFormatter ([] (double v) { return juce::String (juce::roundToInt (v)) + "%"; });
    swingChip.setTooltip ("Swing: delays every second sixteenth, from 50% (straight) to 75%");
    addAndMakeVisible (swingChip);

    loadPhrase();
    phraseGrid.onStepChanged = [this] (int, ostrel::widgets::PhraseStep) { publishPhrase(); };
    velocitySlider.onValueChanged = [this] (float) { publishPhrase(); };
    swingChip.onValueChange = [this] { publishPhrase(); };

    startTimerHz (30);
}

PlayOverlay::~PlayOverlay()
{
    stopTimer();
    // Nothing this overlay started outlives it: the phrase stops, held keys and HOLD let go, and a
    // bent wheel or pressed pad returns to rest.
    processor.setPhrasePlaying (false);
    releaseHeldKeys();
    if (pitchWheel.getValue() != 0.0f)
        processor.pushPitchBend (0.0f);
    if (pressurePad.getValue() != 0.0f)
        processor.pushAftertouch (0.0f);
}

void PlayOverlay::loadPhrase()
{
    const auto pattern = processor.getPhrase();
    const auto callback = std::exchange (phraseGrid.onStepChanged, nullptr);
    phraseGrid.setStepCount (pattern.stepCount);
    for (int i = 0; i < ostrel::widgets::StepPhraseGrid::maxSteps; ++i)
    {
        const auto& step = pattern.steps[(size_t) i];
        ostrel::widgets::PhraseStep record;
        record.note = step.note;
        record.tied = step.tied;
        record.accent = step.accent;
        phraseGrid.setStep (i, record);
    }
    phraseGrid.onStepChanged = callback;
    swingChip.setValue (pattern.swing * 100.0, juce::dontSendNotification);
    setEditMode (processor.getPhraseEditMode());
    phraseRevision = processor.getPhraseRevision();
}

void PlayOverlay::publishPhrase()
{
    PhrasePattern pattern;
    pattern.stepCount = phraseGrid.getStepCount();
    for (int i = 0; i < PhrasePattern::maxSteps; ++i)
    {
        const auto step = phraseGrid.getStep (i);
        pattern.steps[(size_t) i] = { (std::int8_t) (step.note < 0 ? -1 : juce::jlimit (0, 127, step.note)), step.tied, step.accent };
    }
    pattern.swing = (float) swingChip.getValue() * 0.01f;
    pattern.velocityScale = velocitySlider.getValue();
    processor.setPhrase (pattern);
}

void PlayOverlay::keyDown (int note, float velocity)
{
    note = juce::jlimit (0, 127, note);
    heldKeys[(size_t) note] = true;
    keyboard.setNoteDisplayed (note, true);
    if (holdOn)
        keyboard.setKeyMarked (note, true);
    processor.pushNoteOn (note, juce::jlimit (0.05f, 1.0f, velocity * velocitySlider.getValue()));
}

void PlayOverlay::keyUp (int note)
{
    if (note < 0 || note > 127)
        return;
    if (holdOn)
    {
        keyboard.setNoteDisplayed (note, true);
        keyboard.setKeyMarked (note, true);
        return;
    }
    heldKeys[(size_t) note] = false;
    keyboard.setNoteDisplayed (note, false);
    keyboard.setKeyMarked (note, false);
    processor.pushNoteOff (note);
}

void PlayOverlay::releaseHeldKeys()
{
    for (int note = 0; note < 128; ++note)
        if (heldKeys[(size_t) note])
        {
            heldKeys[(size_t) note] = false;
            processor.pushNoteOff (note);
        }
    keyboard.clearNotes();
}

void PlayOverlay::setHold (bool on)
{
    holdOn = on;
    if (! on)
        releaseHeldKeys();
}

void PlayOverlay::setEditMode (int mode)
{
    mode = juce::jlimit (0, 3, mode);
    ostrel::widgets::Tab* tabs[] = { &noteButton, &tieButton, &accentButton, &eraseButton };
    for (int i = 0; i < 4; ++i)
        tabs[i]->setToggleState (i == mode, juce::dontSendNotification);
    phraseGrid.setEditMode (mode);
    processor.setPhraseEditMode (mode);
}

void PlayOverlay::setPlaying (bool on)
{
    playButton.setToggleState (on, juce::dontSendNotification);
    if (on == playing)
        return;
    playing = on;
    // The processor starts the phrase at its next block and stops it, releasing its note, likewise.
    processor.setPhrasePlaying (on);
    if (! on)
    {
        phraseGrid.setPlayheadStep (-1);
        showPhraseNote (-1);
    }
}

void PlayOverlay::showPhraseNote (int note)
{
    if (note == shownPhraseNote)
        return;
    if (shownPhraseNote >= 0 && ! heldKeys[(size_t) shownPhraseNote])
        keyboard.setNoteDisplayed (shownPhraseNote, false);
    shownPhraseNote = note;
    if (note >= 0)
        keyboard.setNoteDisplayed (note, true);
}

void PlayOverlay::syncWithProcessor()
{
    if (processor.getPhraseRevision() != phraseRevision)
        loadPhrase();

    // A host that stops its transport stops the phrase too.
    if (playing && ! processor.isPhrasePlaying())
        setPlaying (false);

    const int step = playing ? processor.getPhrasePlayhead() : -1;
    phraseGrid.setPlayheadStep (step);
    int note = -1;
    for (int i = step; i >= 0; --i)
    {
        const auto record = phraseGrid.getStep (i);
        if (record.note < 0 || ! record.tied || i == 0)
        {
            note = record.note;
            break;
        }
    }
    showPhraseNote (note);
}

void PlayOverlay::panic()
{
    setPlaying (false);
    releaseHeldKeys();
    processor.pushPanic();
    processor.pushPitchBend (0.0f);
    processor.pushAftertouch (0.0f);
    pitchWheel.setValue (0.0f, false);
    pressurePad.setValue (0.0f, false);
}

void PlayOverlay::timerCallback() { syncWithProcessor(); }

void PlayOverlay::visibilityChanged()
{
    if (! isVisible())
        panic();
}

bool PlayOverlay::keyPressed (const juce::KeyPress& key)
{
    if (key != juce::KeyPress::spaceKey)
        return false;
    setPlaying (! playing);
    return true;
}

void PlayOverlay::paint (juce::Graphics& g)
{
    SectionFrame::paint (g);
    using ostrel::widgets::paletteColour;
    const auto inner = getLocalBounds().reduced (16);
    const auto top = inner.withHeight (22);
    ostrel::widgets::drawRoleText (g, 1, "PERFORMANCE", top.withTrimmedRight (52), paletteColour (6), 33);
    ostrel::widgets::drawRoleText (g, 4, juce::String (phraseGrid.getStepCount()) + juce::String (juce::CharPointer_UTF8 (" STEPS  \xc2\xb7  C MAJOR")),
                                   top.withTrimmedRight (52), paletteColour (8), 34);
    const std::tuple<juce::Rectangle<int>, const char*, int> captions[] = {
        { transportLabelArea, "TRANSPORT", 33 }, { editLabelArea, "EDIT MODE", 33 }, { dangerLabelArea, "DANGER", 34 } };
    for (auto [area, text, just] : captions)
        if (! area.isEmpty())
            ostrel::widgets::drawRoleText (g, 4, text, area, paletteColour (8), just);
}

void PlayOverlay::resized()
{
    auto area = getLocalBounds().reduced (16);
    auto take = [] (juce::Rectangle<int>& r, int w) { return r.removeFromLeft (juce::jmin (w, r.getWidth())); };
    auto skip = [] (juce::Rectangle<int>& r, int w) { r.removeFromLeft (juce::jmin (w, r.getWidth())); };

    auto strip = area.removeFromTop (22);
    closeButton.setBounds (strip.removeFromRight (44));
    area.removeFromTop (8);

    auto captions = area.removeFromTop (22);
    transportLabelArea = take (captions, 96 + 8 + 96 + 8 + 72);
    skip (captions, 16);
    editLabelArea = take (captions, 200);
    dangerLabelArea = captions.removeFromRight (juce::jmin (200, captions.getWidth()));

    auto row = area.removeFromTop (44);
    playButton.setBounds (take (row, 96));
    skip (row, 8);
    holdButton.setBounds (take (row, 96));
    skip (row, 8);
    swingChip.setBounds (take (row, 72));
    skip (row, 16);
    ostrel::widgets::Tab* modes[] = { &noteButton, &tieButton, &accentButton, &eraseButton };
    for (int i = 0; i < 4; ++i)
    {
        modes[i]->setBounds (take (row, 44));
        if (i < 3)
            skip (row, 8);
    }
    panicButton.setBounds (row.removeFromRight (juce::jmin (96, row.getWidth())));
    row.removeFromRight (juce::jmin (8, row.getWidth()));
    clearButton.setBounds (row.removeFromRight (juce::jmin (96, row.getWidth())));

    area.removeFromTop (16);
    phraseGrid.setBounds (area.removeFromTop (juce::jmin (412, area.getHeight())));
    area.removeFromTop (juce::jmin (16, area.getHeight()));
    auto bottom = area.removeFromTop (juce::jmin (96, area.getHeight()));
    auto block = bottom.removeFromRight (juce::jmin (252, bottom.getWidth()));
    pitchWheel.setBounds (take (block, 44));
    skip (block, 8);
    modSlider.setBounds (take (block, 44));
    skip (block, 8);
    velocitySlider.setBounds (take (block, 44));
    skip (block, 8);
    pressurePad.setBounds (take (block, 96));
    bottom.removeFromRight (juce::jmin (16, bottom.getWidth()));
    keyboard.setBounds (bottom);
}
}
