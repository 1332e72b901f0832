#include "render/MidiFileEvents.h"

#include <algorithm>
#include <cmath>

namespace morvane::render
{
bool loadMidiFileEvents (const juce::File& file, double sampleRate, std::vector<TimedEvent>& events,
                         juce::String& error)
{
    if (! file.existsAsFile())
    {
        error = "cannot read MIDI file '" + file.getFullPathName() + "': no such file";
        return false;
    }

    juce::FileInputStream stream (file);
    if (! stream.openedOk())
    {
        error = "cannot read MIDI file '" + file.getFullPathName() + "'";
        return false;
    }

    juce::MidiFile midiFile;
    int fileType = 0;
    if (! midiFile.readFrom (stream, true, &fileType))
    {
        error = "cannot parse MIDI file '" + file.getFullPathName() + "': not a standard MIDI file";
        return false;
    }

    midiFile.convertTimestampTicksToSeconds();

    for (int t = 0; t < midiFile.getNumTracks(); ++t)
    {
        const auto* track = midiFile.getTrack (t);
        for (const auto* holder : *track)
        {
            const auto& m = holder->message;
            if (m.isMetaEvent() || m.isSysEx())
                continue;
            const double seconds = std::max (0.0, m.getTimeStamp());
            events.push_back ({ (juce::int64) std::llround (seconds * sampleRate), m });
        }
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
