#include "TestHelpers.h"

#include "presets/PresetLibrary.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::presets;

namespace
{
struct TempFolder
{
    juce::File dir = morvane::test::uniqueTempFile ("morvane-presets");
    ~TempFolder() { dir.deleteRecursively(); }
};

float value (MorvaneAudioProcessor& p, const char* id) { return p.getParameterTree().getRawParameterValue (id)->load(); }
}

TEST (PresetLibrary, FileStems)
{
    const std::pair<const char*, const char*> cases[] = {
        { "Deep Sub", "Deep Sub" }, { "  padded  ", "padded" }, { "!!!", "___" }, { "", "preset" }, { "   ", "preset" },
        { "a/b\\c:d", "a_b_c_d" }, { "v1.2-final_x", "v1.2-final_x" }, { "Über Bass", "Über Bass" },
    };
    for (auto [name, stem] : cases)
        EXPECT_EQ (presetFileStem (juce::CharPointer_UTF8 (name)), juce::String (juce::CharPointer_UTF8 (stem))) << name;
}

TEST (PresetLibrary, SaveWritesEveryParameterAndLoadRestoresIt)
{
    TempFolder temp;
    MorvaneAudioProcessor p;
    test::setParameter (p, "filterCutoff", 345.0f);
    test::setParameter (p, "osc1Wave", 4.0f);
    ASSERT_TRUE (p.isPresetDirty());

    writeUserPreset (p, "!!!", temp.dir);
    const auto file = temp.dir.getChildFile ("___.xml");
    ASSERT_TRUE (file.existsAsFile());
    EXPECT_FALSE (p.isPresetDirty());
    EXPECT_EQ (p.getPresetName(), "!!!");
    EXPECT_EQ (p.getPresetSource(), "user:" + file.getFullPathName());
    const auto text = file.loadFileAsString();
    EXPECT_TRUE (text.contains ("\r\n"));
    EXPECT_FALSE (text.startsWithChar ((juce::juce_wchar) 0xfeff));
    const auto xml = juce::parseXML (text);
    ASSERT_NE (xml, nullptr);
    EXPECT_EQ (xml->getStringAttribute ("displayName"), "!!!");
    EXPECT_EQ (xml->getNumChildElements(), (int) p.getParameters().size());

    MorvaneAudioProcessor q;
    test::setParameter (q, "drive", 7.0f);
    ASSERT_TRUE (loadPresetFile (q, file));
    EXPECT_NEAR (value (q, "filterCutoff"), 345.0f, 0.01f);
    EXPECT_EQ (value (q, "osc1Wave"), 4.0f);
    EXPECT_EQ (q.getPresetName(), "!!!");
    EXPECT_FALSE (q.isPresetDirty());
    EXPECT_FALSE (q.getUndoManager().canUndo());

    // A second save under a name with the same stem overwrites without asking.
    test::setParameter (p, "filterCutoff", 999.0f);
    writeUserPreset (p, "???", temp.dir);
    EXPECT_EQ (temp.dir.findChildFiles (juce::File::findFiles, false, "*.xml").size(), 1);
    ASSERT_TRUE (loadPresetFile (q, file));
    EXPECT_NEAR (value (q, "filterCutoff"), 999.0f, 0.01f);
    EXPECT_EQ (q.getPresetName(), "???");
}

TEST (PresetLibrary, FilesWithoutANameOrParametersOrThatAreNotXml)
{
    TempFolder temp;
    temp.dir.createDirectory();
    MorvaneAudioProcessor p;
    test::setParameter (p, "drive", 5.0f);

    const auto unnamed = temp.dir.getChildFile ("wobbly thing.xml");
    unnamed.replaceWithText (R"(<PARAMS><PARAM id="drive" value="3"/></PARAMS>)");
    ASSERT_TRUE (loadPresetFile (p, unnamed));
    EXPECT_EQ (p.getPresetName(), "wobbly thing");
    EXPECT_NEAR (value (p, "drive"), 3.0f, 1e-4f);

    const auto other = temp.dir.getChildFile ("other.xml");
    other.replaceWithText ("<something><else/></something>");
    test::setParameter (p, "drive", 6.0f);
    ASSERT_TRUE (loadPresetFile (p, other)) << "any root passes";
    EXPECT_NEAR (value (p, "drive"), 6.0f, 1e-4f);
    EXPECT_EQ (p.getPresetName(), "other");

    const auto junk = temp.dir.getChildFile ("junk.xml");
    junk.replaceWithText ("not xml at all");
    EXPECT_FALSE (loadPresetFile (p, junk));
    EXPECT_FALSE (loadPresetFile (p, temp.dir.getChildFile ("missing.xml")));
    EXPECT_EQ (p.getPresetName(), "other");
}

TEST (PresetLibrary, NextAndPreviousStopAtTheEndsOfTheBank)
{
    MorvaneAudioProcessor p;
    const auto catalogue = loadCatalogue();
    const int n = totalEntries (catalogue);
    ASSERT_EQ (n, 68);
    const auto flat = flatEntries (catalogue);

    EXPECT_EQ (positionOfSource (catalogue, p.getPresetSource()), positionOfXml (catalogue, "init_clean.xml"));
    EXPECT_EQ (positionOfSource (catalogue, "user:/x.xml"), 1);
    EXPECT_EQ (positionOfSource (catalogue, "factory:nothing.xml"), 1);

    int position = loadFactoryPosition (p, catalogue, n + 1, n);
    EXPECT_EQ (position, n);
    EXPECT_EQ (p.getPresetSource(), "factory:" + flat.back()->xml);
    test::setParameter (p, "drive", 11.0f);
    ASSERT_TRUE (p.isPresetDirty());
    EXPECT_TRUE (presetDisplayName (p, catalogue, position).endsWith (" *"));
    position = loadFactoryPosition (p, catalogue, position + 1, position);
    EXPECT_EQ (position, n) << "next at the last entry reloads it";
    EXPECT_FALSE (p.isPresetDirty());
    EXPECT_EQ (presetDisplayName (p, catalogue, position), flat.back()->displayName);

    position = loadFactoryPosition (p, catalogue, 0, 1);
    EXPECT_EQ (position, 1);
    EXPECT_EQ (p.getPresetName(), flat.front()->displayName);

    presets::Catalogue empty;
    EXPECT_EQ (loadFactoryPosition (p, empty, 5, 3), 3);
}

TEST (PresetLibrary, AnEmptyIdentityShowsTheEntryName)
{
    MorvaneAudioProcessor p;
    const auto catalogue = loadCatalogue();
    p.setPresetIdentity ({}, {});
    EXPECT_EQ (presetDisplayName (p, catalogue, 3), flatEntries (catalogue)[2]->displayName);
    EXPECT_EQ (presetDisplayName (p, catalogue, 999), "");
}
