#include "TestHelpers.h"

#include "audio/SafeXml.h"
#include "presets/Catalogue.h"

#include "BinaryData.h"

#include <cstdlib>
#include <cstring>
#include <random>

using namespace morvane;
using namespace morvane::test;

// Bounded random mutation of the three parsers that take outside data: the state blob, preset
// documents and the manifest. Each run starts from a valid input and damages it in the ways files
// get damaged: flipped bytes, cuts, inserted junk, duplicated or deleted spans.
namespace
{
struct QuietLog : juce::Logger
{
    juce::Logger* previous = juce::Logger::getCurrentLogger();
    QuietLog() { juce::Logger::setCurrentLogger (this); }
    ~QuietLog() override { juce::Logger::setCurrentLogger (previous); }
    void logMessage (const juce::String&) override {}
};

std::string mutate (std::string s, std::mt19937& rng, int maxEdits = 8)
{
    const int edits = 1 + (int) (rng() % (unsigned) maxEdits);
    static const char* fragments[] = { "<PARAM id=\"drive\" value=\"nan\"/>", "<MIDILEARN><MAP cc=\"999\" param=\"x\"/></MIDILEARN>",
                                       "<UISTATE presetDirty=\"maybe\" activeView=\"-5\"/>", "value=\"1e39\"", "&#0;", "<![CDATA[",
                                       "<category>", "</preset>", "\xff\xfe", "<PARAMS>", "id=\"\"", "<signature><pair/></signature>" };
    for (int e = 0; e < edits && ! s.empty(); ++e)
    {
        const size_t at = rng() % s.size();
        switch (rng() % 6)
        {
            case 0: s[at] = (char) (rng() & 0xff); break;
            case 1: s.resize (at); break;
            case 2: s.insert (at, std::string (1 + rng() % 4, (char) (rng() & 0xff))); break;
            case 3: s.erase (at, 1 + rng() % 40); break;
            case 4: s.insert (at, s.substr (rng() % s.size(), 1 + rng() % 60)); break;
            default: s.insert (at, fragments[rng() % std::size (fragments)]); break;
        }
    }
    return s;
}

bool rendersFinite (MorvaneAudioProcessor& p)
{
    juce::AudioBuffer<float> buffer (2, 128);
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::noteOn (1, 40, (juce::uint8) 100), 0);
    p.processBlock (buffer, midi);
    for (int ch = 0; ch < 2; ++ch)
        for (int i = 0; i < 128; ++i)
            if (! std::isfinite (buffer.getSample (ch, i)))
                return false;
    return true;
}

// 20000 per target under ctest; MORVANE_FUZZ_RUNS sets a longer campaign.
const int runs = [] { const char* v = std::getenv ("MORVANE_FUZZ_RUNS"); return v != nullptr ? std::max (1, std::atoi (v)) : 20000; }();
}

// Shortest forms only: the framework's string code sizes copies by the shortest form, so an
// overlong one in a state blob overran the heap (found by libFuzzer).
TEST (Fuzz, OnlyWellFormedUtf8IsTakenIn)
{
    const struct { const char* bytes; bool wellFormed; } cases[] = {
        { "plain", true }, { "\xc3\xa9", true }, { "\xe2\x86\x92", true }, { "\xf0\x9f\x8e\xb8", true },
        { "\xf4\x8f\xbf\xbf", true }, { "\xe0\x96\x9b", false }, { "\xc0\x80", false }, { "\xc1\xbf", false },
        { "\xed\xa0\x80", false }, { "\xf0\x8f\xbf\xbf", false }, { "\xf4\x90\x80\x80", false },
        { "\xf5\x80\x80\x80", false }, { "\xe2\x86", false }, { "\x80", false }, { "\xff", false },
    };
    for (const auto& c : cases)
        EXPECT_EQ (isWellFormedUtf8 (c.bytes, (int) std::strlen (c.bytes)), c.wellFormed) << c.bytes;

    juce::MemoryOutputStream blob;
    blob.writeInt (0x21324356);
    const char text[] = "<PARAMS><PARAM id=\"\xe0\x96\x9b\" value=\"1\"/></PARAMS>";
    blob.writeInt ((int) sizeof (text));
    blob.write (text, sizeof (text));
    EXPECT_EQ (xmlFromStateBlob (blob.getData(), (int) blob.getDataSize()), nullptr);
}

TEST (Fuzz, XmlThatTheFrameworkMisreadsIsRefusedBeforeItParses)
{
    // A processing instruction inside an element hangs the framework's parser; an open hexadecimal
    // reference at the end makes it read past the text (found by the libFuzzer run).
    for (const char* text : { "<P><??>M", "<PARAMS><?x?>text</PARAMS>", "<a>\n<?pi data?>\nmore</a>",
                              "<P a=\"0\">&#x0", "<P>&#x", "<P>&#12</P>", "<P>&#;</P>", "<P>&#x123456789;</P>" })
        EXPECT_EQ (parseXmlSafely (text), nullptr) << text;
    EXPECT_NE (parseXmlSafely ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PARAMS/>"), nullptr);
    const auto named = parseXmlSafely ("<P name=\"a&#10;b&#x41;&amp;\"/>");
    ASSERT_NE (named, nullptr);
    EXPECT_EQ (named->getStringAttribute ("name"), "a\nbA&");
    juce::MemoryBlock blob;
    juce::AudioProcessor::copyXmlToBinary (juce::XmlElement ("PARAMS"), blob);
    EXPECT_NE (xmlFromStateBlob (blob.getData(), (int) blob.getSize()), nullptr);
    const juce::String hostile ("<P><??>M");
    juce::MemoryOutputStream wrapped;
    wrapped.writeInt (0x21324356);
    wrapped.writeInt (hostile.length());
    wrapped << hostile;
    MorvaneAudioProcessor p;
    p.setStateInformation (wrapped.getData(), (int) wrapped.getDataSize()); // returns, and changes nothing
    EXPECT_EQ (p.getPresetName(), "init clean");
}

TEST (Fuzz, StateBlobsNeverCrashTheProcessor)
{
    QuietLog quiet;
    std::mt19937 rng (11);
    MorvaneAudioProcessor source;
    source.startMidiLearn ("drive");
    source.prepareToPlay (48000.0, 128);
    juce::MidiBuffer learn;
    learn.addEvent (juce::MidiMessage::controllerEvent (1, 7, 90), 0);
    juce::AudioBuffer<float> scratch (2, 128);
    source.processBlock (scratch, learn);
    juce::MemoryBlock valid;
    source.getStateInformation (valid);
    const auto xmlText = juce::AudioProcessor::getXmlFromBinary (valid.getData(), (int) valid.getSize())->toString().toStdString();

    MorvaneAudioProcessor p;
    p.prepareToPlay (48000.0, 128);
    for (int i = 0; i < runs; ++i)
    {
        if (i % 2 == 0)
        {
            // Raw bytes: the wrapping itself damaged.
            auto bytes = mutate (std::string ((const char*) valid.getData(), valid.getSize()), rng);
            p.setStateInformation (bytes.data(), (int) bytes.size());
        }
        else
        {
            // A sound wrapping around damaged XML text, which reaches the parser and the tree code.
            const auto text = mutate (xmlText, rng);
            juce::MemoryOutputStream wrapped;
            wrapped.writeInt (0x21324356);
            wrapped.writeInt ((int) text.size() + 1);
            wrapped.write (text.data(), text.size());
            wrapped.writeByte (0);
            p.setStateInformation (wrapped.getData(), (int) wrapped.getDataSize());
        }
        if (i % 100 == 0)
            ASSERT_TRUE (rendersFinite (p)) << i;
        for (int cc = 0; cc < 128; ++cc)
        {
            const int binding = p.getControllerBinding (cc);
            ASSERT_TRUE (binding >= -1 && binding < (int) p.getParameters().size());
        }
    }
    std::printf ("state blob: %d mutated inputs\n", runs);
}

TEST (Fuzz, PresetDocumentsAndManifestsNeverCrash)
{
    QuietLog quiet;
    std::mt19937 rng (12);
    int size = 0;
    const char* data = presets::findResource ("acid_diode_squelch_xml", size);
    ASSERT_NE (data, nullptr);
    const std::string presetText (data, (size_t) size);
    data = presets::findResource ("manifest_xml", size);
    ASSERT_NE (data, nullptr);
    const std::string manifestText (data, (size_t) size);

    MorvaneAudioProcessor p;
    p.prepareToPlay (48000.0, 128);
    int parsedDocuments = 0, entries = 0;
    for (int i = 0; i < runs; ++i)
    {
        const auto text = mutate (presetText, rng, i % 2 == 0 ? 2 : 8);
        if (auto xml = parseXmlSafely (text.data(), (int) text.size()))
        {
            p.applyPresetXml (*xml);
            ++parsedDocuments;
        }
        if (i % 100 == 0)
            ASSERT_TRUE (rendersFinite (p)) << i;

        const auto manifest = mutate (manifestText, rng);
        if (! isWellFormedUtf8 (manifest.data(), (int) manifest.size()))
            continue; // the manifest is embedded, and only ever read as the text it was built from
        const auto catalogue = presets::parseCatalogue (juce::String::fromUTF8 (manifest.data(), (int) manifest.size()));
        entries += presets::totalEntries (catalogue);
        ASSERT_EQ ((int) presets::flatEntries (catalogue).size(), presets::totalEntries (catalogue));
    }
    EXPECT_GT (parsedDocuments, runs / 10); // enough damaged documents still parse to reach the tree
    std::printf ("preset documents: %d mutated inputs, %d parsed; manifests: %d mutated inputs, %d entries\n", runs,
                 parsedDocuments, runs, entries);
}
