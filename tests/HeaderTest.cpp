#include "TestHelpers.h"

#include "ui/Header.h"
#include "ui/theme/Themes.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui;

TEST (Header, ChipTextsAndFormats)
{
    const std::pair<double, const char*> glide[] = { { 0.0004, "0 ms" }, { 0.04, "40 ms" }, { 0.9994, "999 ms" }, { 1.234, "1.23 s" } };
    for (auto [v, text] : glide)
        EXPECT_EQ (header::formatGlideChip (v), text) << v;
    EXPECT_EQ (header::formatMasterChip (-59.6), minusInfinityDb);
    EXPECT_EQ (header::formatMasterChip (-59.4), "-59.4 dB");
    EXPECT_EQ (header::formatMasterChip (3.0), "3.0 dB");
}

TEST (Header, OctaveStepsStopAtTheEndsAndTheMeterFollowsTheLevel)
{
    MorvaneAudioProcessor p;
    Header header (p);
    header.setBounds (0, 0, 1284, 72);
    auto* octave = dynamic_cast<juce::AudioParameterChoice*> (p.getParameterTree().getParameter ("octave"));
    ASSERT_NE (octave, nullptr);
    const int last = octave->choices.size() - 1;
    for (int i = 0; i < last + 2; ++i)
        header.octaveUpChip.triggerClick();
    settle();
    EXPECT_EQ (octave->getIndex(), last);
    EXPECT_EQ (header.octaveChip.text(), octave->choices[last]);
    for (int i = 0; i < last + 2; ++i)
        header.octaveDownChip.triggerClick();
    settle();
    EXPECT_EQ (octave->getIndex(), 0);

    const std::pair<float, int> levels[] = { { 6.0f, 96 }, { -60.0f, 0 }, { -200.0f, 0 }, { -27.0f, 48 } };
    for (auto [db, width] : levels)
    {
        header.setOutputLevel (db);
        EXPECT_EQ (header.meterBar().getWidth(), width) << db;
    }
}

TEST (Header, TempoBoxCommitsClampedAndEscapeKeepsTheValue)
{
    MorvaneAudioProcessor p;
    Header header (p);
    header.setBounds (0, 0, 1284, 72);
    auto& box = header.bpmDisplay;
    auto* tempo = p.getParameterTree().getRawParameterValue ("lfoSyncBpm");
    box.bpm = 99.5;
    EXPECT_EQ (box.text(), "99.5");
    box.bpm = 100.0;
    EXPECT_EQ (box.text(), "100");

    // Past the top the tempo holds at 240; an entry dropped, or committed empty, keeps it.
    box.mouseDoubleClick (mouseAt (box, { 10, 10 }));
    const std::pair<const char*, bool> entries[] = { { "300", true }, { "90", false }, { "", true } };
    for (auto [text, commit] : entries)
    {
        ASSERT_NE (box.getEditor(), nullptr) << text;
        box.getEditor()->setText (text);
        box.endEdit (commit);
        EXPECT_EQ (box.bpm, 240.0) << text;
        EXPECT_NEAR (tempo->load(), 240.0f, 0.01f) << text;
        box.beginEdit();
    }
    box.endEdit (false);
    settle();
}

TEST (PresetNavStrip, RenameAndTheMenu)
{
    widgets::PresetNavStrip strip;
    strip.setBounds (0, 0, 420, 72);
    strip.setPosition (7, 68);
    EXPECT_EQ (strip.counterText(), "07 / 68");
    strip.setName ("reese classic");
    juce::String renamed;
    strip.onRename = [&] (juce::String s) { renamed = s; };

    // Each way out of the box: a blank name fires nothing, escape drops the text, focus loss commits
    // it trimmed. The first opens on the empty stretch behind the counter.
    const auto area = strip.nameArea();
    struct Entry { juce::Point<int> at; const char* text; std::function<void()> juce::TextEditor::*finish; const char* renamed; };
    const Entry ways[] = { { { area.getRight() - 4, area.getCentreY() }, "   ", &juce::TextEditor::onReturnKey, "" },
                           { area.getCentre(), "typed", &juce::TextEditor::onEscapeKey, "" },
                           { area.getCentre(), "  Night Bus ", &juce::TextEditor::onFocusLost, "Night Bus" } };
    for (const auto& e : ways)
    {
        strip.mouseDown (mouseAt (strip, e.at));
        auto* editor = strip.getRenameEditor();
        ASSERT_NE (editor, nullptr) << e.text;
        editor->setText (e.text);
        (editor->*e.finish)();
        EXPECT_EQ (renamed, e.renamed) << e.text;
        EXPECT_EQ (strip.getNameText(), *e.renamed != 0 ? e.renamed : "reese classic") << e.text;
        EXPECT_EQ (strip.getRenameEditor(), nullptr) << e.text;
    }

    // Presses outside the name area (the arrows, BROWSE) open nothing.
    strip.mouseDown (mouseAt (strip, { 10, 40 }, juce::ModifierKeys::rightButtonModifier));
    strip.mouseDown (mouseAt (strip, { 10, 40 }));
    EXPECT_EQ (strip.getRenameEditor(), nullptr);

    juce::StringArray entries;
    const auto menu = strip.buildMenu();
    for (juce::PopupMenu::MenuItemIterator it (menu); it.next();)
        if (! it.getItem().isSeparator)
            entries.add (it.getItem().text);
    EXPECT_EQ (entries.joinIntoString ("|"), juce::String (juce::CharPointer_UTF8 (
        "Save preset|Save preset as\xe2\x80\xa6|Load preset from file\xe2\x80\xa6|Reveal user preset folder")));
    settle();
}
