#include "TestHelpers.h"

#include "render/RenderSession.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <sstream>

using namespace morvane;

// Bounded random mutation of MIDI files through the renderer's own code, as `--midi` runs it: every
// input must end in a render (exit 0) or a one-line refusal with no file (exit 2), soon.
namespace
{
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
        file.setSmpteTimeFormat (25, 40);
        file.addTrack (track);
        out.push_back (writeSeed (file));
    }
    return out;
}

Bytes mutate (Bytes s, std::mt19937& rng, int maxEdits = 6)
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
    const auto body = mutate (s.substr (offset, length), rng, 2);
    Bytes out = s.substr (0, offset - 4);
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back ((char) ((body.size() >> shift) & 0xff));
    return out + body + s.substr (offset + length);
}

const int runs = [] { const char* v = std::getenv ("MORVANE_FUZZ_RUNS"); return v != nullptr ? std::max (1, std::atoi (v)) : 20000; }();

// Catches what the renderer says on stderr for the length of one input.
struct CaptureErr
{
    std::ostringstream text;
    std::streambuf* previous = std::cerr.rdbuf (text.rdbuf());
    ~CaptureErr() { std::cerr.rdbuf (previous); }
};
}

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
        const auto bytes = i < (int) seedFiles.size() ? seed : i % 3 == 0 ? mutate (seed, rng) : mutateTrack (seed, rng);
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
            ASSERT_EQ (code, render::exitOk) << "seed " << i << ": " << said;
    }
    const double total = std::chrono::duration<double> (std::chrono::steady_clock::now() - start).count();
    dir.deleteRecursively();
    EXPECT_GT (rendered, runs / 10); // enough damaged files still render to reach the processor
    EXPECT_GT (refused, runs / 10);
    std::printf ("midi files: %d mutated inputs, %d rendered, %d refused (%d over the length limit); %.1f s, slowest %.0f ms\n",
                 runs, rendered, refused, overLimit, total, slowest * 1000.0);
}
