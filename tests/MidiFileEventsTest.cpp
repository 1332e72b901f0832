#include "render/MidiFileEvents.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

using namespace morvane::render;

namespace
{
using Bytes = std::vector<unsigned char>;

Bytes operator+ (Bytes a, const Bytes& b)
{
    a.insert (a.end(), b.begin(), b.end());
    return a;
}

Bytes be (juce::uint32 v, int n)
{
    Bytes out;
    for (int i = n - 1; i >= 0; --i)
        out.push_back ((unsigned char) (v >> (8 * i)));
    return out;
}

Bytes header (int format, int tracks, int division) { return Bytes { 'M', 'T', 'h', 'd' } + be (6, 4) + be ((juce::uint32) format, 2) + be ((juce::uint32) tracks, 2) + be ((juce::uint32) division, 2); }
Bytes chunk (const char* type, const Bytes& body) { return Bytes (type, type + 4) + be ((juce::uint32) body.size(), 4) + body; }
Bytes track (const Bytes& body) { return chunk ("MTrk", body); }
Bytes file (const Bytes& body, int division = 480) { return header (0, 1, division) + track (body); }

struct Parsed
{
    bool ok = false;
    MidiFileContents contents;
    juce::String problem;
};

Parsed parse (const Bytes& bytes, double rate = 48000.0)
{
    Parsed p;
    p.ok = parseMidiFile (bytes.data(), bytes.size(), rate, p.contents, p.problem);
    sortEvents (p.contents.events);
    return p;
}

juce::String describe (const std::vector<TimedEvent>& events)
{
    juce::StringArray out;
    for (const auto& e : events)
        out.add (juce::String (e.sample) + ":" + juce::String::toHexString (e.message.getRawData(), e.message.getRawDataSize()));
    return out.joinIntoString (" ");
}
}

TEST (MidiFileEvents, ReadsTimingRunningStatusAndSkipsWhatTheInstrumentIgnores)
{
    const Bytes tempoMap = Bytes { 0x00, 0xff, 0x51, 0x03 } + be (500000, 3)      // 120 bpm
                           + Bytes { 0x83, 0x60, 0xff, 0x51, 0x03 } + be (1000000, 3); // beat 1: 60 bpm
    struct Case { const char* name; Bytes bytes; const char* events; double lastSeconds; };
    const std::vector<Case> cases {
        { "running status, one beat at the default 120 bpm", file ({ 0x00, 0x90, 0x3c, 0x64, 0x83, 0x60, 0x3c, 0x00 }),
          "0:90 3c 64 24000:90 3c 00", 0.5 },
        { "tempo map from another track", header (1, 2, 480) + track (tempoMap) + track ({ 0x87, 0x40, 0x90, 0x39, 0x64 }),
          "72000:90 39 64", 1.5 },
        { "SMPTE: 25 frames of 40 ticks", file ({ 0x87, 0x68, 0xe0, 0x00, 0x50 }, 0xe728), "48000:e0 00 50", 1.0 },
        { "a struck key is closed before it is struck again", file ({ 0x00, 0x90, 0x30, 0x40, 0x60, 0x90, 0x30, 0x50 }),
          "0:90 30 40 4800:80 30 00 4800:90 30 50", 0.1 },
        { "sysex, text and program change; nothing after the end of the track",
          file ({ 0x00, 0xf0, 0x03, 0x7e, 0x00, 0xf7, 0x00, 0xff, 0x01, 0x02, 'h', 'i', 0x00, 0xc0, 0x05, 0x00, 0xd0, 0x10,
                  0x00, 0xff, 0x2f, 0x00, 0x00, 0x90, 0x3c, 0x64 }),
          "0:c0 05 0:d0 10", 0.0 },
        { "RIFF wrapping and an unknown chunk", Bytes { 'R', 'I', 'F', 'F' } + be (40, 4) + Bytes { 'R', 'M', 'I', 'D', 'd', 'a', 't', 'a' }
                                                   + be (30, 4) + header (1, 1, 96) + chunk ("XTRA", { 1, 2, 3 }) + track ({ 0x60, 0xb0, 0x07, 0x64 }),
          "24000:b0 07 64", 0.5 },
    };
    for (const auto& c : cases)
    {
        const auto p = parse (c.bytes);
        ASSERT_TRUE (p.ok) << c.name << ": " << p.problem;
        EXPECT_EQ (describe (p.contents.events), c.events) << c.name;
        EXPECT_DOUBLE_EQ (p.contents.lastEventSeconds, c.lastSeconds) << c.name;
    }
}

TEST (MidiFileEvents, DamagedFilesAreRefusedWithTheProblemNamed)
{
    Bytes tooMany = header (0, 1, 480);
    {
        Bytes body { 0x00, 0x90, 0x3c, 0x64 };
        for (size_t i = 1; i <= maxMidiEvents; ++i)
            body.insert (body.end(), { 0x00, 0x3c, (unsigned char) (i % 2 == 0 ? 0x64 : 0x00) });
        tooMany = tooMany + track (body);
    }
    struct Case { Bytes bytes; const char* problem; };
    const std::vector<Case> cases {
        { { 'h', 'e', 'l', 'l', 'o' }, "no MThd header" },
        { {}, "no MThd header" },
        { Bytes { 'M', 'T', 'h', 'd' } + be (2, 4) + Bytes { 0, 0 }, "header length 2" },
        { header (3, 1, 480) + track ({}), "unknown file format 3" },
        { file ({}, 0), "time division 0" },
        { file ({}, 0xe700), "gives a tick no length" },
        { header (0, 1, 480) + be (0x4d54726b, 4) + be (100, 4) + Bytes { 0x00, 0x90 }, "claims 100 bytes but only 2 remain" },
        { header (1, 3, 480) + track ({}), "announces 3 tracks but the file holds 1" },
        { file ({ 0x81, 0x81, 0x81, 0x81, 0x01, 0x90, 0x3c, 0x64 }), "delta time" },
        { file ({ 0x00 }), "no event after it" },
        { file ({ 0x00, 0x3c, 0x64 }), "data byte 0x3C with no status byte" },
        { file ({ 0x00, 0x90, 0x3c, 0xc0 }), "data byte 0xC0 above 127" },
        { file ({ 0x00, 0x90, 0x3c }), "channel message cut short" },
        { file ({ 0x00, 0xf4 }), "status byte 0xF4 does not belong" },
        { file ({ 0x00, 0xff, 0x51, 0x7f, 0x00 }), "meta event runs past" },
        { file ({ 0x00, 0xf0, 0x8f, 0xff, 0xff, 0x7f }), "system exclusive message runs past" },
        { tooMany, "more than 1000000 events" },
    };
    for (const auto& c : cases)
    {
        const auto p = parse (c.bytes);
        EXPECT_FALSE (p.ok) << c.problem;
        EXPECT_TRUE (p.problem.contains (c.problem)) << "expected '" << c.problem << "', got '" << p.problem << "'";
        EXPECT_FALSE (p.problem.containsChar ('\n'));
    }
}

TEST (MidiFileEvents, AnAbsurdDeltaTimeKeepsItsTrueLengthWithoutOverflow)
{
    // One tick per quarter, the slowest tempo, the longest delta time: about 142 years away.
    const auto bytes = file (Bytes { 0x00, 0xff, 0x51, 0x03, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x7f, 0x90, 0x3c, 0x64 }, 1);
    const auto p = parse (bytes, 384000.0);
    ASSERT_TRUE (p.ok) << p.problem;
    EXPECT_DOUBLE_EQ (p.contents.lastEventSeconds, 268435455.0 * 16.777215);
    ASSERT_EQ (p.contents.events.size(), 1u);
    EXPECT_GT (p.contents.events[0].sample, 0);
    EXPECT_EQ (secondsToSample (1.0e300, 384000.0), secondsToSample (1.0e9, 384000.0));
    EXPECT_EQ (secondsToSample (std::nan (""), 48000.0), 0);
}
