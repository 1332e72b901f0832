#include "render/MidiFileEvents.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane::render
{
namespace
{
    // Bounds-checked big-endian reading; pos never passes size.
    struct Reader
    {
        const juce::uint8* data = nullptr;
        size_t size = 0, pos = 0;

        bool has (size_t n) const { return size - pos >= n; }
        juce::uint8 byte() { return data[pos++]; }
        juce::uint32 read (int bytes)
        {
            juce::uint32 v = 0;
            for (int i = 0; i < bytes; ++i)
                v = (v << 8) | byte();
            return v;
        }
        // A variable-length quantity of at most four bytes, as the format allows.
        bool quantity (juce::uint32& value)
        {
            value = 0;
            for (int i = 0; i < 4; ++i)
            {
                if (! has (1))
                    return false;
                const auto b = byte();
                value = (value << 7) | (b & 0x7fu);
                if ((b & 0x80) == 0)
                    return true;
            }
            return false;
        }
        bool skip (size_t n)
        {
            if (! has (n))
                return false;
            pos += n;
            return true;
        }
    };

    struct RawEvent
    {
        juce::int64 tick = 0;
        std::array<juce::uint8, 3> bytes {};
        int length = 0;

        bool isNoteOn() const { return (bytes[0] & 0xf0) == 0x90 && bytes[2] > 0; }
        bool isNoteOff() const { return (bytes[0] & 0xf0) == 0x80 || ((bytes[0] & 0xf0) == 0x90 && bytes[2] == 0); }
    };

    struct TempoChange
    {
        juce::int64 tick = 0;
        double secondsPerQuarter = 0.5;
    };

    juce::String hex (int byte) { return "0x" + juce::String::toHexString (byte).paddedLeft ('0', 2).toUpperCase(); }

    struct TrackReader
    {
        Reader r;
        size_t fileOffset = 0;
        int number = 0;
        juce::String& problem;

        bool bad (const juce::String& what, size_t at)
        {
            problem = "track " + juce::String (number) + ", byte " + juce::String ((juce::int64) (fileOffset + at))
                      + ": " + what;
            return false;
        }

        bool read (std::vector<RawEvent>& events, std::vector<TempoChange>& tempos, size_t& eventCount)
        {
            juce::int64 tick = 0;
            juce::uint8 running = 0;
            while (r.pos < r.size)
            {
                const size_t start = r.pos;
                juce::uint32 delta = 0;
                if (! r.quantity (delta))
                    return bad ("delta time cut short or longer than four bytes", start);
                tick += delta;
                if (! r.has (1))
                    return bad ("delta time with no event after it", start);

                const size_t at = r.pos;
                juce::uint8 status = r.data[r.pos];
                if (status >= 0x80)
                    ++r.pos;
                else if (running == 0)
                    return bad ("data byte " + hex (status) + " with no status byte before it", at);
                else
                    status = running;

                if (status < 0xf0)
                {
                    RawEvent e;
                    e.tick = tick;
                    e.length = (status & 0xe0) == 0xc0 ? 2 : 3; // program change and channel pressure take one data byte
                    e.bytes[0] = status;
                    if (! r.has ((size_t) e.length - 1))
                        return bad ("channel message cut short", at);
                    for (int i = 1; i < e.length; ++i)
                    {
                        e.bytes[(size_t) i] = r.byte();
                        if (e.bytes[(size_t) i] >= 0x80)
                            return bad ("data byte " + hex (e.bytes[(size_t) i]) + " above 127", r.pos - 1);
                    }
                    running = status;
                    if (++eventCount > maxMidiEvents)
                    {
                        problem = "more than " + juce::String ((juce::int64) maxMidiEvents) + " events, the most a file may hold";
                        return false;
                    }
                    events.push_back (e);
                }
                else if (status == 0xff)
                {
                    juce::uint32 length = 0;
                    if (! r.has (1))
                        return bad ("meta event cut short", at);
                    const auto type = r.byte();
                    if (! r.quantity (length) || ! r.has (length))
                        return bad ("meta event runs past the end of its track", at);
                    if (type == 0x2f)
                        return true; // end of track: anything after it is not part of the track
                    if (type == 0x51 && length == 3)
                        tempos.push_back ({ tick, (double) r.read (3) / 1.0e6 });
                    else
                        r.pos += length;
                }
                else if (status == 0xf0 || status == 0xf7)
                {
                    juce::uint32 length = 0;
                    if (! r.quantity (length) || ! r.skip (length))
                        return bad ("system exclusive message runs past the end of its track", at);
                }
                else
                {
                    return bad ("status byte " + hex (status) + " does not belong in a MIDI file", at);
                }
            }
            return true;
        }
    };

    // Orders one track's events as they will sound, then closes a sounding key before it is
    // struck again on the same channel, so that every note-on has its own note-off.
    void orderAndMatch (std::vector<RawEvent>& track, std::vector<RawEvent>& out)
    {
        std::stable_sort (track.begin(), track.end(), [] (const RawEvent& a, const RawEvent& b)
        {
            if (a.tick != b.tick)
                return a.tick < b.tick;
            return a.isNoteOff() && ! b.isNoteOff();
        });

        std::array<std::array<bool, 128>, 16> sounding {};
        for (const auto& e : track)
        {
            const int channel = e.bytes[0] & 0x0f, key = e.bytes[1];
            if (e.isNoteOn())
            {
                if (sounding[(size_t) channel][(size_t) key])
                    out.push_back ({ e.tick, { (juce::uint8) (0x80 | channel), (juce::uint8) key, 0 }, 3 });
                sounding[(size_t) channel][(size_t) key] = true;
            }
            else if (e.isNoteOff())
            {
                sounding[(size_t) channel][(size_t) key] = false;
            }
            out.push_back (e);
        }
    }

    // Tick to seconds through the tempo map: segments of constant tempo, found by binary search.
    struct TempoMap
    {
        struct Segment { juce::int64 tick; double seconds, secondsPerTick; };
        std::vector<Segment> segments;
        double smpteTicksPerSecond = 0.0;

        TempoMap (int ticksPerQuarter, double ticksPerSecond, std::vector<TempoChange> changes)
            : smpteTicksPerSecond (ticksPerSecond)
        {
            const double tickLength = ticksPerQuarter > 0 ? 1.0 / ticksPerQuarter : 0.0;
            segments.push_back ({ 0, 0.0, 0.5 * tickLength }); // 120 beats a minute until told otherwise
            std::stable_sort (changes.begin(), changes.end(), [] (auto& a, auto& b) { return a.tick < b.tick; });
            for (const auto& c : changes)
            {
                auto& last = segments.back();
                if (c.tick == last.tick)
                    last.secondsPerTick = tickLength * c.secondsPerQuarter; // the last of several at one tick wins
                else
                    segments.push_back ({ c.tick, last.seconds + (double) (c.tick - last.tick) * last.secondsPerTick,
                                          tickLength * c.secondsPerQuarter });
            }
        }

        double seconds (juce::int64 tick) const
        {
            if (smpteTicksPerSecond > 0.0)
                return (double) tick / smpteTicksPerSecond;
            auto it = std::upper_bound (segments.begin(), segments.end(), tick,
                                        [] (juce::int64 t, const Segment& s) { return t < s.tick; });
            const auto& s = *std::prev (it);
            return s.seconds + (double) (tick - s.tick) * s.secondsPerTick;
        }
    };

    bool findHeader (Reader& r)
    {
        if (r.has (4) && r.read (4) == 0x4d546864) // "MThd"
            return true;
        r.pos = 0;
        // A RIFF wrapping (RMID) holds the header a few words in.
        if (! r.has (4) || r.read (4) != 0x52494646)
            return false;
        for (int i = 0; i < 8 && r.has (4); ++i)
            if (r.read (4) == 0x4d546864)
                return true;
        return false;
    }
}

juce::int64 secondsToSample (double seconds, double sampleRate)
{
    // Beyond 1e9 s every render limit is long passed; the cap keeps the product far from overflow.
    const double s = std::clamp (std::isfinite (seconds) ? seconds : 0.0, 0.0, 1.0e9);
    return (juce::int64) std::llround (s * sampleRate);
}

bool parseMidiFile (const void* data, size_t size, double sampleRate, MidiFileContents& contents, juce::String& problem)
{
    Reader r { static_cast<const juce::uint8*> (data), data != nullptr ? size : 0 };
    if (! findHeader (r))
    {
        problem = "not a standard MIDI file (no MThd header)";
        return false;
    }
    const size_t headerStart = r.pos;
    if (! r.has (4))
    {
        problem = "header cut short";
        return false;
    }
    const auto headerLength = r.read (4);
    if (headerLength < 6 || ! r.has (headerLength))
    {
        problem = "header length " + juce::String ((juce::int64) headerLength) + " does not fit the file";
        return false;
    }
    const int format = (int) r.read (2);
    const int declaredTracks = (int) r.read (2);
    const int division = (int) r.read (2);
    r.pos = headerStart + 4 + headerLength;

    if (format > 2)
    {
        problem = "unknown file format " + juce::String (format) + " (0, 1 or 2 expected)";
        return false;
    }

    int ticksPerQuarter = 0;
    double smpteTicksPerSecond = 0.0;
    if ((division & 0x8000) != 0)
        smpteTicksPerSecond = (double) -(juce::int8) (division >> 8) * (double) (division & 0xff);
    else
        ticksPerQuarter = division;
    if (ticksPerQuarter <= 0 && smpteTicksPerSecond <= 0.0)
    {
        problem = "time division " + juce::String (division) + " gives a tick no length";
        return false;
    }

    std::vector<RawEvent> merged, track;
    std::vector<TempoChange> tempos;
    size_t eventCount = 0;
    int tracksRead = 0;
    while (tracksRead < declaredTracks && r.has (8))
    {
        const size_t chunkStart = r.pos;
        const auto type = r.read (4);
        const auto length = r.read (4);
        if (! r.has (length))
        {
            problem = "chunk at byte " + juce::String ((juce::int64) chunkStart) + " claims " + juce::String ((juce::int64) length)
                      + " bytes but only " + juce::String ((juce::int64) (r.size - r.pos)) + " remain: the file is cut short";
            return false;
        }
        if (type == 0x4d54726b) // "MTrk"; other chunks are skipped as the format asks
        {
            ++tracksRead;
            track.clear();
            TrackReader reader { { r.data + r.pos, length }, r.pos, tracksRead, problem };
            if (! reader.read (track, tempos, eventCount))
                return false;
            orderAndMatch (track, merged);
            if (merged.size() > maxMidiEvents)
            {
                problem = "more than " + juce::String ((juce::int64) maxMidiEvents) + " events, the most a file may hold";
                return false;
            }
        }
        r.pos += length;
    }
    if (tracksRead < declaredTracks)
    {
        problem = "the header announces " + juce::String (declaredTracks) + " tracks but the file holds "
                  + juce::String (tracksRead) + ": the file is cut short";
        return false;
    }

    const TempoMap map (ticksPerQuarter, smpteTicksPerSecond, std::move (tempos));
    contents.events.reserve (contents.events.size() + merged.size());
    for (const auto& e : merged)
    {
        const double seconds = map.seconds (e.tick);
        contents.lastEventSeconds = std::max (contents.lastEventSeconds, seconds);
        contents.events.push_back ({ secondsToSample (seconds, sampleRate),
                                     e.length == 2 ? juce::MidiMessage (e.bytes[0], e.bytes[1])
                                                   : juce::MidiMessage (e.bytes[0], e.bytes[1], e.bytes[2]) });
    }
    return true;
}

bool loadMidiFileEvents (const juce::File& file, double sampleRate, MidiFileContents& contents, juce::String& error)
{
    const auto name = "MIDI file '" + file.getFullPathName() + "'";
    if (! file.existsAsFile())
    {
        error = "cannot read " + name + ": no such file";
        return false;
    }
    if (file.getSize() > maxMidiFileBytes)
    {
        error = "cannot use " + name + ": it is " + juce::String ((double) file.getSize() / (1024.0 * 1024.0), 1)
                + " MB, and the largest accepted is " + juce::String (maxMidiFileBytes / (1024 * 1024)) + " MB";
        return false;
    }

    // Read with a bound as well: the size can change between the check and the read.
    juce::FileInputStream stream (file);
    juce::MemoryBlock bytes;
    if (! stream.openedOk())
    {
        error = "cannot read " + name + ": " + stream.getStatus().getErrorMessage();
        return false;
    }
    stream.readIntoMemoryBlock (bytes, (ssize_t) maxMidiFileBytes + 1);
    if ((juce::int64) bytes.getSize() > maxMidiFileBytes)
    {
        error = "cannot use " + name + ": it is larger than " + juce::String (maxMidiFileBytes / (1024 * 1024)) + " MB";
        return false;
    }

    juce::String problem;
    if (! parseMidiFile (bytes.getData(), bytes.getSize(), sampleRate, contents, problem))
    {
        error = "cannot parse " + name + ": " + problem;
        return false;
    }
    return true;
}

void sortEvents (std::vector<TimedEvent>& events)
{
    std::stable_sort (events.begin(), events.end(), [] (const TimedEvent& a, const TimedEvent& b)
    {
        if (a.sample != b.sample)
            return a.sample < b.sample;
        return a.message.isNoteOff() && ! b.message.isNoteOff();
    });
}
}
