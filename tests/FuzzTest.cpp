#include "TestHelpers.h"

#include "audio/SafeXml.h"
#include "presets/Catalogue.h"
#include "render/RenderSession.h"

#include "BinaryData.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <random>
#include <sstream>

using namespace morvane;
using namespace morvane::test;

// Bounded random mutation of the parsers that take outside data: the state blob, preset documents,
// the manifest and MIDI files. Each run starts from a valid input and damages it in the ways files
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

using Bytes = std::string;

Bytes writeSeed (const juce::MidiFile& file)
{
    juce::MemoryOutputStream out;
    file.writeTo (out);
    return Bytes (static_cast<const char*> (out.getData()), out.getDataSize());
}

// Short phrases written by the framework's MIDI writer: a tempo map across tracks, bends,
// controllers, pressure, running status, system exclusive, and SMPTE time.
std::vector<Bytes> seeds()
{
    std::vector<Bytes> out;
    {
        juce::MidiMessageSequence tempo, notes;
        tempo.addEvent (juce::MidiMessage::tempoMetaEvent (400000), 0);
        tempo.addEvent (juce::MidiMessage::timeSignatureMetaEvent (7, 8), 0);
        tempo.addEvent (juce::MidiMessage::tempoMetaEvent (250000), 96);
        const int keys[] = { 36, 48, 43, 36, 39 };
        for (int i = 0; i < 5; ++i)
        {
            notes.addEvent (juce::MidiMessage::noteOn (1, keys[i], (juce::uint8) (60 + i * 10)), i * 48);
            notes.addEvent (juce::MidiMessage::pitchWheel (1, 8192 + i * 1500), i * 48 + 10);
            notes.addEvent (juce::MidiMessage::controllerEvent (1, 1, i * 30), i * 48 + 12);
            notes.addEvent (juce::MidiMessage::channelPressureChange (1, i * 20), i * 48 + 14);
            notes.addEvent (juce::MidiMessage::noteOff (1, keys[i]), i * 48 + 40);
        }
        juce::MidiFile file;
        file.setTicksPerQuarterNote (96);
        file.addTrack (tempo);
        file.addTrack (notes);
        out.push_back (writeSeed (file));
    }
    {
        juce::MidiMessageSequence track;
        const juce::uint8 sysex[] = { 0x7e, 0x7f, 0x09, 0x01 };
        track.addEvent (juce::MidiMessage::createSysExMessage (sysex, 4), 0);
        for (int i = 0; i < 12; ++i)
            track.addEvent (juce::MidiMessage::noteOn (2, 40 + (i % 3), (juce::uint8) 100), i * 10);
        track.addEvent (juce::MidiMessage::controllerEvent (2, 74, 100), 30);
        track.addEvent (juce::MidiMessage::noteOff (2, 40), 125);
        juce::MidiFile file;
        file.addTrack (track);
        // SMPTE time, 25 frames of 40 subframes, written into the header's division field by hand:
        // the framework's setter shifts a negative number, which is undefined behaviour.
        auto seed = writeSeed (file);
        seed[12] = (char) (juce::uint8) -25;
        seed[13] = 40;
        out.push_back (std::move (seed));
    }
    return out;
}

Bytes mutateMidi (Bytes s, std::mt19937& rng, int maxEdits = 6)
{
    static const Bytes fragments[] = { Bytes ("\x8f\xff\xff\x7f", 4),       // the longest delta time
                                       Bytes ("\x00\xff\x51\x03\xff\xff\xff", 7), // the slowest tempo
                                       Bytes ("\x00\xf0\x8f\xff\xff\x7f", 6), Bytes ("\x00\xff\x2f\x00", 4),
                                       Bytes ("MTrk\xff\xff\xff\xff", 8), Bytes ("MThd\x00\x00\x00\x06\x00\x01\x00\x02", 12),
                                       Bytes ("\x00\x90\x3c\x7f", 4), Bytes ("\x00\xe0\x7f\x7f", 4), Bytes ("\xf4\xf8\xfe", 3) };
    const int edits = 1 + (int) (rng() % (unsigned) maxEdits);
    for (int e = 0; e < edits && ! s.empty(); ++e)
    {
        const size_t at = rng() % s.size();
        switch (rng() % 8)
        {
            case 0: s[at] = (char) (rng() & 0xff); break;
            case 7: s[at] = (char) (rng() & 0x7f); break; // a value changed, or a status byte lost
            case 1: s.resize (at); break;
            case 2: s.insert (at, Bytes (1 + rng() % 4, (char) (rng() & 0xff))); break;
            case 3: s.erase (at, 1 + rng() % 20); break;
            case 4: s.insert (at, s.substr (rng() % s.size(), 1 + rng() % 40)); break;
            case 5: s[at] = (char) (0x80 | (rng() & 0x7f)); break; // a data byte turned into a status byte
            default: s.insert (at, fragments[rng() % std::size (fragments)]); break;
        }
    }
    return s;
}

// Damages one track and sets its chunk length to match, as a writer with a bug would: the damage
// then reaches the events rather than the file's structure.
Bytes mutateTrack (const Bytes& s, std::mt19937& rng)
{
    std::vector<std::pair<size_t, size_t>> tracks; // body offset and length
    for (size_t at = 14; at + 8 <= s.size();)
    {
        const auto* b = reinterpret_cast<const unsigned char*> (s.data() + at + 4);
        const size_t length = ((size_t) b[0] << 24) | ((size_t) b[1] << 16) | ((size_t) b[2] << 8) | b[3];
        tracks.push_back ({ at + 8, length });
        at += 8 + length;
    }
    const auto [offset, length] = tracks[rng() % tracks.size()];
    const auto body = mutateMidi (s.substr (offset, length), rng, 2);
    Bytes out = s.substr (0, offset - 4);
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back ((char) ((body.size() >> shift) & 0xff));
    return out + body + s.substr (offset + length);
}

// Catches what the renderer says on stderr for the length of one input.
struct CaptureErr
{
    std::ostringstream text;
    std::streambuf* previous = std::cerr.rdbuf (text.rdbuf());
    ~CaptureErr() { std::cerr.rdbuf (previous); }
};
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
    for (const char* text : { "<P><?" "?>M", "<PARAMS><?x?>text</PARAMS>", "<a>\n<?pi data?>\nmore</a>",
                              "<P a=\"0\">&#x0", "<P>&#x", "<P>&#12</P>", "<P>&#;</P>", "<P>&#x123456789;</P>" })
        EXPECT_EQ (parseXmlSafely (text), nullptr) << text;
    EXPECT_NE (parseXmlSafely ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PARAMS/>"), nullptr);
    const auto named = parseXmlSafely ("<P name=\"a&#10;b&#x41;&amp;\"/>");
    ASSERT_NE (named, nullptr);
    EXPECT_EQ (named->getStringAttribute ("name"), "a\nbA&");
    juce::MemoryBlock blob;
    juce::AudioProcessor::copyXmlToBinary (juce::XmlElement ("PARAMS"), blob);
    EXPECT_NE (xmlFromStateBlob (blob.getData(), (int) blob.getSize()), nullptr);
    const juce::String hostile ("<P><?" "?>M");
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
        {
            ASSERT_TRUE (rendersFinite (p)) << i;
        }
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
        {
            ASSERT_TRUE (rendersFinite (p)) << i;
        }

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

// MIDI files through the renderer's own code, as `--midi` runs it: every input must end in a render
// (exit 0) or a one-line refusal with no file (exit 2), soon.
TEST (Fuzz, MidiFilesAreRenderedOrRefusedNeverCrashOrStall)
{
    std::mt19937 rng (17);
    // A memory file system where there is one: every render ends in a sync to disk.
    const juce::File shm ("/dev/shm");
    const auto base = shm.isDirectory() ? shm : juce::File::getSpecialLocation (juce::File::tempDirectory);
    const auto dir = base.getChildFile ("morvane-midi-fuzz-" + juce::Uuid().toString());
    ASSERT_TRUE (dir.createDirectory());
    const auto mid = dir.getChildFile ("in.mid"), wav = dir.getChildFile ("out.wav");

    render::RenderOptions o;
    o.midi = mid;
    o.out = wav;
    o.rate = 8000.0;
    o.block = 256;
    o.tail = 0.05;
    o.maxSeconds = 1.0;

    const auto seedFiles = seeds();
    MorvaneAudioProcessor p;
    int rendered = 0, refused = 0, overLimit = 0;
    double slowest = 0.0;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < runs; ++i)
    {
        const auto& seed = seedFiles[(size_t) i % seedFiles.size()];
        const auto bytes = i < (int) seedFiles.size() ? seed : i % 3 == 0 ? mutateMidi (seed, rng) : mutateTrack (seed, rng);
        mid.deleteFile(); // an empty input too is a file, not a missing one
        ASSERT_TRUE (bytes.empty() ? mid.create().wasOk() : mid.replaceWithData (bytes.data(), bytes.size()));

        int code = -1;
        juce::String said;
        const auto t0 = std::chrono::steady_clock::now();
        {
            CaptureErr capture;
            code = render::runRender (o, p);
            said = capture.text.str();
        }
        const double seconds = std::chrono::duration<double> (std::chrono::steady_clock::now() - t0).count();
        slowest = std::max (slowest, seconds);
        ASSERT_LT (seconds, 2.0) << "input " << i;

        if (code == render::exitOk)
        {
            ++rendered;
            ASSERT_TRUE (said.isEmpty()) << "input " << i << ": " << said;
            ASSERT_TRUE (wav.existsAsFile()) << "input " << i;
            ASSERT_LE (wav.getSize(), 44 + 64 + (juce::int64) (1.0 * 8000) * 2 * 4) << "input " << i;
            wav.deleteFile();
        }
        else
        {
            ASSERT_EQ (code, render::exitBadInput) << "input " << i << ": " << said;
            ++refused;
            overLimit += said.contains ("--max-seconds") ? 1 : 0;
            ASSERT_TRUE (said.startsWith ("morvane-render: ") && said.endsWithChar ('\n')) << "input " << i << ": " << said;
            ASSERT_EQ (said.trimEnd().indexOfChar ('\n'), -1) << "input " << i << ": " << said;
            ASSERT_FALSE (wav.exists()) << "input " << i;
        }
        if (i < (int) seedFiles.size())
        {
            ASSERT_EQ (code, render::exitOk) << "seed " << i << ": " << said;
        }
    }
    const double total = std::chrono::duration<double> (std::chrono::steady_clock::now() - start).count();
    dir.deleteRecursively();
    EXPECT_GT (rendered, runs / 10); // enough damaged files still render to reach the processor
    EXPECT_GT (refused, runs / 10);
    std::printf ("midi files: %d mutated inputs, %d rendered, %d refused (%d over the length limit); %.1f s, slowest %.0f ms\n",
                 runs, rendered, refused, overLimit, total, slowest * 1000.0);
}
