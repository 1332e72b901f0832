#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <algorithm>
#include <cmath>

namespace morvane
{
// Pitch wheel, 14-bit raw value to semitones: centre 8192 is exactly 0, range just under +-2.
inline float bendSemitonesFromRaw (int raw) noexcept
{
    return (float) (std::clamp (raw, 0, 16383) - 8192) / 8192.0f * 2.0f;
}

// The editor's bend, -1 to 1, mapped onto the same 14-bit grid as the wheel.
inline float bendSemitonesFromNormalised (float value) noexcept
{
    const float v = std::clamp (value, -1.0f, 1.0f);
    return bendSemitonesFromRaw ((int) std::lround (v * 8191.0f + 8192.0f));
}

// Walks a block cut at every MIDI event: renderRange (start, count) for the samples before each
// event, never with a count of 0, then onEvent (metadata, samplePosition). Events past the end are
// handled at the end, after every sample up to it has been rendered.
template <typename RenderRange, typename OnEvent>
void forEachMidiSegment (const juce::MidiBuffer& midi, int numSamples, RenderRange&& renderRange, OnEvent&& onEvent)
{
    int cursor = 0;
    for (const auto metadata : midi)
    {
        const int position = std::clamp (metadata.samplePosition, 0, numSamples);
        if (position > cursor)
        {
            renderRange (cursor, position - cursor);
            cursor = position;
        }
        onEvent (metadata, position);
    }

    if (numSamples > cursor)
        renderRange (cursor, numSamples - cursor);
}
}
