#pragma once

#include <juce_core/juce_core.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>

namespace morvane
{
// One sixteenth of the phrase: a note (-1 for a rest), held on from the step before when tied.
struct PhraseNote
{
    std::int8_t note = -1;
    bool tied = false;
    bool accent = false;

    bool operator== (const PhraseNote& o) const noexcept { return note == o.note && tied == o.tied && accent == o.accent; }
};

struct PhrasePattern
{
    static constexpr int maxSteps = 16;
    static constexpr float minSwing = 0.5f, maxSwing = 0.75f;

    std::array<PhraseNote, maxSteps> steps {};
    int stepCount = maxSteps;
    float swing = minSwing;       // where the second sixteenth of each pair starts, as a share of the pair
    float velocityScale = 0.85f;  // the overlay's velocity slider

    bool isEmpty() const noexcept
    {
        return std::none_of (steps.begin(), steps.begin() + std::clamp (stepCount, 1, maxSteps),
                             [] (const PhraseNote& s) { return s.note >= 0; });
    }
};

// Hands the latest pattern from the editing side to the audio thread without a lock: a triple
// buffer, so the reader always gets a whole record and never waits for the writer. One writer at a
// time (the processor serialises its writers); one reader, the audio thread.
class PhraseMailbox
{
public:
    void publish (const PhrasePattern& pattern) noexcept
    {
        slots[(size_t) writeIndex] = pattern;
        writeIndex = middle.exchange (writeIndex | freshBit, std::memory_order_acq_rel) & indexMask;
    }

    const PhrasePattern& latest() noexcept
    {
        if ((middle.load (std::memory_order_relaxed) & freshBit) != 0)
            readIndex = middle.exchange (readIndex, std::memory_order_acq_rel) & indexMask;
        return slots[(size_t) readIndex];
    }

private:
    static constexpr int freshBit = 4, indexMask = 3;
    std::array<PhrasePattern, 3> slots {};
    std::atomic<int> middle { 1 };
    int writeIndex = 0, readIndex = 2;
};

// What the host's play head says about the transport, read once per block.
struct PhraseTransport
{
    bool hostPlaying = false;
    double bpm = 120.0;
    double ppq = 0.0;              // quarter notes at the block's first sample
    double ppqBarStart = 0.0;
    double barSixteenths = 16.0;   // the bar's length, from the time signature
};

// Plays the phrase on the audio thread, sample-accurately: a step fires at the first sample at or
// after its onset, so every onset is within one sample of its ideal time whatever the block size.
// Free-running it counts its own sixteenths from the first step; while the host plays it follows the
// host's position in the bar, so that sixteenth k of each bar plays step k (mod the step count).
struct PhraseSequencer
{
    // Set from the editing side; the audio thread clears `playRequested` when the host stops.
    std::atomic<bool> playRequested { false };
    // The step last played, for the grid's playhead; -1 while stopped.
    std::atomic<int> playhead { -1 };

    void prepare (double sampleRate) noexcept
    {
        rate = sampleRate > 0.0 ? sampleRate : 44100.0;
        running = false;
        soundingNote = -1;
        playhead.store (-1);
    }

    // At the start of a block: takes the newest pattern and the transport, and starts, stops or
    // re-places the phrase. `noteOff (note)` is called at once for a note that has to end here.
    template <typename NoteOff>
    void beginBlock (PhraseMailbox& mailbox, const PhraseTransport& transport, NoteOff&& noteOff) noexcept
    {
        pattern = &mailbox.latest();
        const double bpm = transport.bpm > 1.0 && std::isfinite (transport.bpm) ? std::min (transport.bpm, 1000.0) : 120.0;
        samplesPerSixteenth = rate * 15.0 / bpm;
        cursor = 0;

        const bool wanted = playRequested.load (std::memory_order_relaxed);
        const bool hostStopped = followingHost && ! transport.hostPlaying;
        if (! wanted || hostStopped)
        {
            if (hostStopped)
                playRequested.store (false, std::memory_order_relaxed);
            stop (noteOff);
            return;
        }

        if (transport.hostPlaying)
        {
            const double barLength = transport.barSixteenths >= 1.0 && std::isfinite (transport.barSixteenths)
                                         ? transport.barSixteenths : 16.0;
            const double absolute = transport.ppq * 4.0;
            double inBar = (transport.ppq - transport.ppqBarStart) * 4.0;
            if (! std::isfinite (inBar) || ! std::isfinite (absolute))
                inBar = 0.0;
            inBar = std::fmod (inBar, barLength);
            if (inBar < 0.0)
                inBar += barLength;
            loopLength = barLength;
            origin = std::isfinite (absolute) ? absolute - inBar : 0.0;
            blockStart = inBar;
            followingHost = true;
            running = true;
            // The host's position is the truth each block: the next step is the first onset not
            // already played, and a tempo change moves it onto the new grid.
            nextOnset = firstOnsetAfter (blockStart - 1.0 / samplesPerSixteenth);
            return;
        }

        if (! running || followingHost)
        {
            // Free-running from the first step, at this block's first sample. Its grid has no bar:
            // sixteenths count on from the start, and the step is the count modulo the step count.
            followingHost = false;
            running = true;
            loopLength = unbounded;
            origin = 0.0;
            blockStart = 0.0;
            nextOnset = 0.0;
            lastFired = never;
            segmentStart = 0.0;
            segmentSamples = 0;
            segmentSamplesPerSixteenth = samplesPerSixteenth;
            return;
        }

        // Within a span of one tempo the position is counted in whole samples, so that no rounding
        // builds up over a long phrase; a new tempo starts a new span where the old one ended.
        if (samplesPerSixteenth != segmentSamplesPerSixteenth)
        {
            segmentStart += (double) segmentSamples / segmentSamplesPerSixteenth;
            segmentSamples = 0;
            segmentSamplesPerSixteenth = samplesPerSixteenth;
        }
        blockStart = segmentStart + (double) segmentSamples / samplesPerSixteenth;
    }

    // Renders [start, start + count) of the block, cut at every step that falls in it.
    template <typename Render, typename NoteOn, typename NoteOff>
    void run (int start, int count, Render&& render, NoteOn&& noteOn, NoteOff&& noteOff) noexcept
    {
        const int end = start + count;
        cursor = start;
        while (running && cursor < end)
        {
            const int due = std::max (cursor, fireSample (nextOnset));
            if (due >= end)
                break;
            if (due > cursor)
                render (cursor, due - cursor);
            cursor = due;
            fire (nextOnset, noteOn, noteOff);
            nextOnset = firstOnsetAfter (nextOnset);
        }
        if (end > cursor)
            render (cursor, end - cursor);
        cursor = end;
    }

    // After the block's last run: where a free-running phrase goes on from.
    void endBlock (int numSamples) noexcept
    {
        if (running && ! followingHost)
            segmentSamples += numSamples;
    }

    template <typename NoteOff>
    void stop (NoteOff&& noteOff) noexcept
    {
        if (soundingNote >= 0)
            noteOff (soundingNote);
        soundingNote = -1;
        running = false;
        followingHost = false;
        lastFired = never;
        playhead.store (-1, std::memory_order_relaxed);
    }

    bool isRunning() const noexcept { return running; }
    int getSoundingNote() const noexcept { return soundingNote; }

    // Onset of grid sixteenth j within a bar or loop: the second of each pair comes late by the swing.
    double onsetOf (std::int64_t j) const noexcept
    {
        return (j & 1) == 0 ? (double) j : (double) (j - 1) + 2.0 * (double) pattern->swing;
    }

private:
    // Onsets this close to a sample (in samples, or sixteenths when comparing onsets) count as on it.
    static constexpr double epsilon = 1.0e-6;
    static constexpr double unbounded = 1.0e15, never = -1.0e300;

    int fireSample (double onset) const noexcept
    {
        const double offset = (onset - blockStart) * samplesPerSixteenth;
        return offset > 1.0e9 ? std::numeric_limits<int>::max() : (int) std::ceil (offset - epsilon);
    }

    // The first onset after position p, in the same frame as p: onsets of the next loop or bar
    // continue past its length.
    double firstOnsetAfter (double p) const noexcept
    {
        const double loops = std::floor (p / loopLength);
        const double base = loops * loopLength;
        const double local = p - base;
        auto j = std::max<std::int64_t> (0, (std::int64_t) std::floor (local) - 1);
        for (; (double) j < loopLength; ++j)
            if (onsetOf (j) > local + epsilon)
                return base + onsetOf (j);
        return base + loopLength;
    }

    template <typename NoteOn, typename NoteOff>
    void fire (double onset, NoteOn&& noteOn, NoteOff&& noteOff) noexcept
    {
        // The same onset never plays twice, even where a host's position jitters between blocks.
        if (std::abs (origin + onset - lastFired) < 1.0e-6)
            return;
        lastFired = origin + onset;

        const double local = onset - std::floor (onset / loopLength) * loopLength;
        const auto j = (std::int64_t) std::floor (local + 1.0e-6);
        const int count = std::clamp (pattern->stepCount, 1, PhrasePattern::maxSteps);
        const int index = (int) (j % count);
        playhead.store (index, std::memory_order_relaxed);

        const auto& step = pattern->steps[(size_t) index];
        if (step.note < 0)
        {
            if (soundingNote >= 0)
                noteOff (soundingNote);
            soundingNote = -1;
            return;
        }
        if (step.tied && soundingNote >= 0)
            return;
        if (soundingNote >= 0)
            noteOff (soundingNote);
        soundingNote = std::clamp ((int) step.note, 0, 127);
        noteOn (soundingNote, std::clamp ((step.accent ? 1.0f : 0.72f) * pattern->velocityScale, 0.05f, 1.0f));
    }

    const PhrasePattern* pattern = nullptr;
    double rate = 44100.0, samplesPerSixteenth = 5512.5;
    // Positions are in sixteenths from `origin`: the bar's start while following a host, the first
    // step while free-running.
    double loopLength = unbounded, origin = 0.0, blockStart = 0.0, nextOnset = 0.0, lastFired = never;
    double segmentStart = 0.0, segmentSamplesPerSixteenth = 0.0;
    std::int64_t segmentSamples = 0;
    int cursor = 0, soundingNote = -1;
    bool running = false, followingHost = false;
};
}
