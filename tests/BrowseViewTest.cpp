#include "TestHelpers.h"

#include "ui/Editor.h"
#include "ui/views/BrowseParts.h"

#include "EditorTestSupport.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;
using namespace morvane::ui;
using namespace morvane::ui::views;

namespace
{
struct Browser
{
    juce::File dir = morvane::test::uniqueTempFile ("morvane-browse");
    MorvaneAudioProcessor processor;
    std::unique_ptr<Editor> editor;
    Browser()
    {
        dir.createDirectory();
        editor = std::make_unique<Editor> (processor, dir.getChildFile ("Morvane.settings"));
        editor->setActiveView (Editor::browserView);
    }
    ~Browser() { editor.reset(); dir.deleteRecursively(); }
    BrowseView::Impl& impl() { return editor->getBrowseView().getImpl(); }
    // Text changes reach the list through the message loop, as they do when typed.
    void search (const juce::String& text)
    {
        impl().list.searchEditor.setText (text, true);
        settle();
    }
};
}

TEST (BrowseView, TagsFromTheWords)
{
    presets::Entry e;
    e.displayName = "Wide Reese";
    e.description = "detuned sub with lfo drive";
    e.xml = "wide_reese.xml";
    EXPECT_EQ (derivePresetTags (e).joinIntoString (" "), "REESE SUB DIRTY WIDE");
    e.flagship = true;
    EXPECT_EQ (derivePresetTags (e).joinIntoString (" "), "FLAG REESE SUB DIRTY");
    e = {};
    e.displayName = "Plain";
    EXPECT_TRUE (derivePresetTags (e).isEmpty());
    EXPECT_EQ (findPreviewFile ({}), juce::File());
}

TEST (BrowseView, OpensOnAllSortedAndFiltersBySearch)
{
    Browser b;
    auto& impl = b.impl();
    EXPECT_EQ (impl.sidebar.selected, 0);
    EXPECT_EQ (impl.sidebar.rows[0].name, "ALL");
    ASSERT_EQ ((int) impl.list.rows.size(), 68);
    for (size_t i = 1; i < impl.list.rows.size(); ++i)
        EXPECT_LE (impl.list.rows[i - 1]->displayName.compareNatural (impl.list.rows[i]->displayName, false), 0);
    EXPECT_EQ (impl.list.selectedRow, 0);

    b.search ("acid");
    ASSERT_FALSE (impl.list.rows.empty());
    for (const auto* e : impl.list.rows)
        EXPECT_TRUE ((e->displayName + " " + e->description + " " + derivePresetTags (*e).joinIntoString (" ")).toLowerCase().contains ("acid"));

    b.search ("zzzz no such thing");
    EXPECT_TRUE (impl.list.rows.empty());
    EXPECT_EQ (impl.list.selectedRow, -1);
    EXPECT_EQ (impl.detail.entry, nullptr);
    const auto name = b.processor.getPresetName();
    impl.detail.loadButton.triggerClick();
    settle();
    EXPECT_EQ (b.editor->getActiveView(), (int) Editor::browserView) << "LOAD with no selection does nothing";
    EXPECT_EQ (b.processor.getPresetName(), name);

    b.search ("");
    impl.list.onSortClicked();
    EXPECT_EQ (impl.list.rows.front(), presets::flatEntries (b.editor->getCatalogue()).front()) << "manifest order";
}

TEST (BrowseView, KeyboardScrollsAndLoadsAndAuditionKeepsTheIdentity)
{
    Browser b;
    auto& impl = b.impl();
    auto& view = b.editor->getBrowseView();
    EXPECT_EQ (impl.list.getHeight(), 828);
    for (int i = 0; i < 6; ++i)
        view.keyPressed (juce::KeyPress (juce::KeyPress::downKey));
    EXPECT_EQ (impl.list.selectedRow, 6);
    EXPECT_EQ (impl.list.scrollY, 0);
    view.keyPressed (juce::KeyPress (juce::KeyPress::downKey));
    EXPECT_EQ (impl.list.scrollY, 68) << "the eighth row scrolls by 68";

    // Audition: the sound changes, the identity doesn't; a second press turns the mark off.
    const auto identity = b.processor.getPresetSource();
    const auto top = impl.list.rowTop (2);
    impl.list.mouseDown (mouseAt (impl.list, { 500, top + 40 }));
    EXPECT_EQ (impl.list.auditionRow, 2);
    EXPECT_EQ (b.processor.getPresetSource(), identity);
    impl.list.mouseDown (mouseAt (impl.list, { 500, top + 40 }));
    EXPECT_EQ (impl.list.auditionRow, -1);

    // Return loads the selection, names it and closes.
    const auto* chosen = impl.list.rows[(size_t) impl.list.selectedRow];
    EXPECT_TRUE (view.keyPressed (juce::KeyPress (juce::KeyPress::returnKey)));
    EXPECT_EQ (b.processor.getPresetSource(), "factory:" + chosen->xml);
    EXPECT_EQ (b.processor.getPresetName(), chosen->displayName);
    EXPECT_EQ (b.editor->getActiveView(), 0);
    EXPECT_EQ (b.editor->getHeader().strip.getNameText(), chosen->displayName);

    b.editor->setActiveView (Editor::browserView);
    EXPECT_TRUE (view.keyPressed (juce::KeyPress (juce::KeyPress::escapeKey)));
    EXPECT_EQ (b.editor->getActiveView(), 0);
}

TEST (BrowseView, AuditionSoundsAndLeavingWithoutLoadBringsThePatchBack)
{
    Browser b;
    auto& impl = b.impl();
    auto& p = b.processor;
    p.prepareToPlay (48000.0, 256);
    juce::AudioBuffer<float> buffer (2, 256);
    juce::MidiBuffer midi;
    auto& s = p.getParameterTree();
    setReal (s, "filterCutoff", 345.0f);
    settle();
    const auto name = p.getPresetName();
    const bool dirty = p.isPresetDirty();

    auto pressAudition = [&] (int row) { impl.list.mouseDown (mouseAt (impl.list, { 500, impl.list.rowTop (row) + 40 })); };
    pressAudition (1);
    p.processBlock (buffer, midi);
    EXPECT_FALSE (p.getEngine().isIdle()) << "the entry plays";
    EXPECT_NE (real (s, "filterCutoff"), 345.0f);
    pressAudition (2);
    p.processBlock (buffer, midi);
    EXPECT_EQ (impl.list.auditionRow, 2);
    EXPECT_EQ (p.getHeldCount(), 1) << "the next entry takes over the note";

    EXPECT_TRUE (b.editor->getBrowseView().keyPressed (juce::KeyPress (juce::KeyPress::escapeKey)));
    p.processBlock (buffer, midi);
    EXPECT_EQ (p.getHeldCount(), 0) << "leaving releases the note";
    EXPECT_FLOAT_EQ (real (s, "filterCutoff"), 345.0f) << "and brings the patch back";
    EXPECT_EQ (p.getPresetName(), name);
    EXPECT_EQ (p.isPresetDirty(), dirty);

    // With LOAD the auditioned sound stays, and so it does when stopped and then loaded.
    b.editor->setActiveView (Editor::browserView);
    pressAudition (3);
    impl.list.selectedRow = 3;
    impl.loadRow (3);
    p.processBlock (buffer, midi);
    EXPECT_EQ (p.getHeldCount(), 0);
    EXPECT_EQ (p.getPresetSource(), "factory:" + impl.list.rows[3]->xml);
    EXPECT_NE (real (s, "filterCutoff"), 345.0f);
}

TEST (BrowseView, FavouritesAreKeptInTheSettingsFile)
{
    Browser b;
    auto& impl = b.impl();
    const auto xml = impl.selectedEntry->xml;
    impl.detail.favouriteButton.triggerClick();
    settle();
    EXPECT_TRUE (impl.detail.favouriteButton.getToggleState());
    EXPECT_TRUE (b.editor->getSettings()->getBoolValue ("fav_" + xml));
    juce::PropertiesFile reread (b.dir.getChildFile ("Morvane.settings"), {});
    EXPECT_TRUE (reread.getBoolValue ("fav_" + xml)) << "written at once";
    const auto& favourites = impl.sidebar.rows[Sidebar::favouritesRow];
    EXPECT_EQ (favourites.name, "FAVOURITES");
    EXPECT_EQ (favourites.count, 1) << "the row follows the star at once";
    impl.sidebar.mouseDown (mouseAt (impl.sidebar, Sidebar::rowBox (Sidebar::favouritesRow).getCentre()));
    ASSERT_EQ (impl.list.rows.size(), 1u);
    EXPECT_EQ (impl.list.rows[0]->xml, xml);

    impl.detail.favouriteButton.triggerClick();
    settle();
    EXPECT_FALSE (b.editor->getSettings()->getBoolValue ("fav_" + xml, true));
    EXPECT_EQ (favourites.count, 0);
    EXPECT_TRUE (impl.list.rows.empty());
}
