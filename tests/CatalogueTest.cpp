#include "presets/Catalogue.h"

#include "BinaryData.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::presets;

namespace
{
// Collects what the catalogue writes to the log while it lives.
struct CapturedLog : juce::Logger
{
    juce::StringArray lines;
    juce::Logger* previous = juce::Logger::getCurrentLogger();
    CapturedLog() { juce::Logger::setCurrentLogger (this); }
    ~CapturedLog() override { juce::Logger::setCurrentLogger (previous); }
    void logMessage (const juce::String& m) override { lines.add (m); }
};

const juce::StringArray commonIds { "osc1Wave", "osc1DcwDepth", "osc1DcwAttack", "osc1DcwDecay", "osc1DcwSustain",
    "osc1DcwRelease", "osc1Level", "osc1PulseWidth", "syncOsc1", "osc2Wave", "osc2DcwDepth", "osc2DcwAttack",
    "osc2DcwDecay", "osc2DcwSustain", "osc2DcwRelease", "osc2Level", "osc2Detune", "osc2DetuneHz", "detuneMode",
    "osc2PhaseOffset", "osc2PulseWidth", "syncOsc2", "oscDrift", "subMode", "subWave", "subDcwDepth", "subLevel",
    "noiseLevel", "noiseColour", "noiseRouting", "mode", "drive", "velToDrive", "driveGain", "driveAutoMakeup",
    "driveMode", "filterCutoff", "filterReso", "filterEnvAmount", "velToFilterEnv", "filterModel", "filterAttack",
    "filterDecay", "filterSustain", "filterRelease", "ampAttack", "ampDecay", "ampSustain", "ampRelease", "glideTime",
    "legato", "phaseMode", "stereoMode", "octave", "outputGain", "lfo1Rate", "lfo1Depth", "lfo1Shape", "lfo1Sync",
    "lfo1Phase", "mod1Source", "mod1Dest", "mod1Amount", "matrix1Curve", "mod2Source", "mod2Dest", "mod2Amount",
    "matrix2Curve", "mod3Source", "mod3Dest", "mod3Amount", "matrix3Curve", "mod4Source", "mod4Dest", "mod4Amount",
    "matrix4Curve" };
const juce::StringArray optionalIds { "filterEnabled", "subRouting", "stereoWidth", "driveMix", "drivePosition",
    "osc1Semitone", "osc2Semitone", "osc1Fine", "osc2Fine", "subOctave" };
const juce::StringArray tags { "reese", "sub", "clean", "drive", "diode", "fold", "wide", "stereo", "glide", "lfo", "s&h",
                               "random", "pluck", "short", "drone", "sustain", "acid", "noise" };
}

TEST (Catalogue, TheFactoryBankIsTheTable)
{
    CapturedLog log;
    const auto c = loadCatalogue();
    EXPECT_TRUE (log.lines.isEmpty()) << log.lines.joinIntoString ("\n");
    ASSERT_EQ (c.categories.size(), 11u);
    EXPECT_EQ (totalEntries (c), 68);

    struct Row { const char* id; const char* name; int count; };
    const Row rows[] = { { "init", "INIT", 4 }, { "bass-reese", "BASS \xc2\xb7 REESE", 3 }, { "bass-sub", "BASS \xc2\xb7 SUB", 4 },
                         { "bass-mid", "BASS \xc2\xb7 MID", 4 }, { "bass-motion", "BASS \xc2\xb7 MOTION", 4 },
                         { "bass-resonant", "BASS \xc2\xb7 RESONANT", 2 }, { "leads", "LEADS", 12 }, { "plucks", "PLUCKS", 10 },
                         { "textures", "TEXTURES \xc2\xb7 PADS", 13 }, { "percussion", "PERCUSSION", 4 }, { "fx", "FX", 8 } };
    for (size_t i = 0; i < 11; ++i)
    {
        EXPECT_EQ (c.categories[i].id, rows[i].id);
        EXPECT_EQ (c.categories[i].name, juce::String::fromUTF8 (rows[i].name));
        EXPECT_EQ ((int) c.categories[i].entries.size(), rows[i].count);
        EXPECT_EQ (c.categories[i].displayCount, rows[i].count);
    }

    const auto flat = flatEntries (c);
    ASSERT_EQ (flat.size(), 68u);
    EXPECT_EQ (flat.front()->xml, "init_clean.xml");
    EXPECT_EQ (flat.front()->description, juce::String::fromUTF8 ("single saw, open filter, fast amp \xc2\xb7 neutral starting point"));
    int flagships = 0;
    for (const auto* e : flat)
    {
        SCOPED_TRACE (e->displayName);
        flagships += e->flagship;
        EXPECT_TRUE (e->available);
        EXPECT_EQ (e->description.indexOf (juce::String::fromUTF8 (" \xc2\xb7 ")) > 0, true);
        // The two starting points have fixed descriptions; every other names its sound in tag words.
        int found = 0;
        for (const auto& t : tags)
            found += e->description.contains (t);
        if (e->xml != "init_clean.xml" && e->xml != "init_shape.xml")
        {
            EXPECT_GE (found, 2);
        }

        // Each document names the 76 common ids in init clean's order, then only the optional ones.
        const auto doc = loadFactoryDocument (e->xml);
        ASSERT_NE (doc, nullptr);
        EXPECT_EQ (doc->getTagName(), "PARAMS");
        juce::StringArray ids;
        for (auto* param : doc->getChildWithTagNameIterator ("PARAM"))
            ids.add (param->getStringAttribute ("id"));
        ASSERT_GE (ids.size(), 76);
        EXPECT_LE (ids.size(), 81);
        for (int i = 0; i < 76; ++i)
            EXPECT_EQ (ids[i], commonIds[i]);
        for (int i = 76; i < ids.size(); ++i)
            EXPECT_TRUE (optionalIds.contains (ids[i])) << ids[i];
    }
    EXPECT_EQ (flagships, 13);
    for (const auto& [name, xml] : { std::pair { "low mallet", "mallet_low.xml" }, { "cosmic bell", "bell_cosmic.xml" },
                                     { "wind atmosphere", "wind_atmos.xml" }, { "reese uk modern", "reese_uk_modern.xml" } })
    {
        const auto* e = findEntryByXml (c, xml);
        ASSERT_NE (e, nullptr) << xml;
        EXPECT_EQ (e->displayName, name);
    }
    EXPECT_EQ (findEntryByXml (c, "Init_Clean.xml"), nullptr);
    EXPECT_EQ (loadFactoryDocument ("Init_Clean.xml"), nullptr);
    EXPECT_EQ (loadFactoryDocument (""), nullptr);
    EXPECT_EQ (resourceName ("a.b.xml"), "a_b_xml");
}

TEST (Catalogue, InitCleanHoldsExactlyItsValues)
{
    const auto doc = loadFactoryDocument ("init_clean.xml");
    ASSERT_NE (doc, nullptr);
    int size = 0;
    const char* data = findResource ("init_clean_xml", size);
    const juce::String text = juce::String::fromUTF8 (data, size);
    EXPECT_TRUE (text.startsWith ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PARAMS>\n  <PARAM ")) << text.substring (0, 80);
    EXPECT_FALSE (text.containsChar ('\r'));
    std::map<juce::String, double> v;
    for (auto* param : doc->getChildWithTagNameIterator ("PARAM"))
        v[param->getStringAttribute ("id")] = param->getDoubleAttribute ("value");
    EXPECT_EQ (v.size(), 76u);
    for (const auto& [id, value] : { std::pair { "osc2Level", -90.0 }, { "ampRelease", 0.18 }, { "mod1Amount", 0.4 }, { "phaseMode", 2.0 },
                                     { "stereoMode", 1.0 }, { "filterSustain", 0.6 }, { "outputGain", -6.0 } })
        EXPECT_EQ (v[id], value) << id;
}

TEST (Catalogue, EveryFaultOfTheManifestIsLoggedAndParsingGoesOn)
{
    CapturedLog log;
    const auto c = parseCatalogue (R"(<?xml version="1.0"?>
<presetManifest version="1">
  <category name="Nameless id">
    <preset xml="init_clean.xml" displayName="fine"/>
    <junk/>
  </category>
  <category id="second">
    <preset displayName="no file"/>
    <preset xml="init_shape.xml"/>
    <preset xml="missing.xml" displayName="ghost"><description>  spaced out  </description></preset>
    <preset xml="init_reese.xml" displayName="five">
      <signature><pair label="a" value="1"/><pair label="b" value="2"/><pair label="c" value="3"/><pair label="d" value="4"/><pair label="e" value="5"/></signature>
      <preview src="pics/five.png"/>
    </preset>
    <preset xml="init_sub.xml" displayName="silent"><signature/></preset>
  </category>
</presetManifest>)");
    const juce::StringArray expected {
        "preset manifest: category missing id",
        "preset manifest: category 'second' missing name",
        "preset manifest: entry 'no file' missing xml attribute",
        juce::String::fromUTF8 ("preset manifest: referenced xml '' not available \xe2\x80\x94 entry 'no file' marked unavailable"),
        "preset manifest: entry with xml='init_shape.xml' missing displayName attribute",
        juce::String::fromUTF8 ("preset manifest: referenced xml 'missing.xml' not available \xe2\x80\x94 entry 'ghost' marked unavailable"),
        "preset manifest: 'five' has 5 signature pairs (expected 0 or 6)" };
    EXPECT_EQ (log.lines, expected) << log.lines.joinIntoString ("\n");

    ASSERT_EQ (c.categories.size(), 2u);
    EXPECT_EQ (c.categories[0].id, "");
    EXPECT_EQ (c.categories[0].displayCount, 0);
    EXPECT_EQ (totalEntries (c), 6);
    const auto flat = flatEntries (c);
    EXPECT_FALSE (flat[3]->available); // still counted along the flat order
    EXPECT_EQ (flat[3]->description, "spaced out");
    EXPECT_EQ (flat[4]->signature.size(), 5u);
    EXPECT_EQ (flat[4]->previewSrc, "pics/five.png");
    EXPECT_TRUE (flat[5]->signature.empty());
    EXPECT_EQ (flat[0]->description, "");

    log.lines.clear();
    EXPECT_TRUE (parseCatalogue ("<notTheManifest/>").categories.empty());
    EXPECT_TRUE (parseCatalogue ("<<<").categories.empty());
    EXPECT_EQ (log.lines, juce::StringArray ({ "preset manifest: root element is 'notTheManifest', expected 'presetManifest'",
                                               "preset manifest: failed to parse embedded manifest_xml" }));
}
