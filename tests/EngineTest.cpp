#include "TestHelpers.h"

#include "engine/VoiceEngine.h"
#include "engine/WaveShape.h"

#include <gtest/gtest.h>

using namespace morvane;
using namespace morvane::test;

namespace
{
// An engine on a processor's parameter tree, driven directly.
struct EngineRig
{
    MorvaneAudioProcessor processor;
    VoiceEngine engine { processor.getParameterTree() };
    juce::AudioBuffer<float> buffer { 2, 4096 };

    explicit EngineRig (double rate = 48000.0, int block = 512) { engine.prepare (rate, block); }

    void set (const juce::String& id, float v) { setParameter (processor, id, v); }

    void render (int n)
    {
        buffer.setSize (2, n, false, false, true);
        buffer.clear();
        engine.render (buffer, 0, n);
    }
};

double renderedFrequency (MorvaneAudioProcessor& p, int note, double rate = 48000.0)
{
    const auto out = renderProcessor (p, (int) rate, 512, { { 0, note, 1.0f } });
    const int skip = (int) (rate * 0.1);
    return zeroCrossingFrequency (out.getReadPointer (0) + skip, out.getNumSamples() - skip, rate);
}
}

TEST (Engine, PitchFollowsNoteRateTuneBendAndOctave)
{
    struct Row { const char* what; double rate; Settings settings; float bend; int note; double hz, tolerance; };
    const Row rows[] = {
        { "A4 at 44.1 kHz", 44100.0, {}, 0.0f, 69, 440.0, 0.05 },
        { "A4 at 48 kHz", 48000.0, {}, 0.0f, 69, 440.0, 0.05 },
        { "A4 at 96 kHz", 96000.0, {}, 0.0f, 69, 440.0, 0.05 },
        { "A2", 48000.0, {}, 0.0f, 45, 110.0, 0.02 },
        { "tuned", 48000.0, { { "osc1Semitone", 7.0f }, { "osc1Fine", 50.0f } }, 0.0f, 57, 220.0 * std::pow (2.0, 7.5 / 12.0), 0.05 },
        { "octave -1", 48000.0, { { "octave", 1.0f } }, 0.0f, 69, 220.0, 0.05 },
        { "full bend", 48000.0, {}, 1.0f, 69, 440.0 * std::pow (2.0, 1.99976 / 12.0), 0.1 },
    };
    for (const auto& row : rows)
    {
        auto p = makePatched (row.settings, row.rate);
        if (row.bend != 0.0f)
            p->pushPitchBend (row.bend);
        EXPECT_NEAR (renderedFrequency (*p, row.note, row.rate), row.hz, row.tolerance) << row.what;
    }
}

TEST (Engine, DefaultPatchLevelIsTheOutputGain)
{
    auto p = makePrepared();
    const auto out = renderNote (*p, 69, 48000);
    // A DCW-0 saw is a cosine of the saw's loudness, at the default output of -6 dB, on both sides.
    for (int ch = 0; ch < 2; ++ch)
    {
        const float* x = out.getReadPointer (ch) + 4800;
        EXPECT_NEAR (peak (x, 40000), 0.5f * waveRmsGain()[0], 0.005f);
        EXPECT_NEAR (rms (x, 40000), 0.5 * waveRmsGain()[0] / std::sqrt (2.0), 0.005);
    }
}

TEST (Engine, OutputDoesNotDependOnTheBlockSize)
{
    const std::vector<NoteEvent> events { { 100, 45, 0.8f }, { 9000, 52, 1.0f }, { 13000, 45, 0.0f },
                                          { 20000, 52, 0.0f }, { 21000, 40, 0.6f }, { 30000, 40, 0.0f } };

    // The second patch's osc 2 sides start alike, so they run as one, and part when the slow
    // filter envelope's share of detune first shows in one side's frequency: in the middle of a
    // group of samples at 512, where one side then stands for the other for only some of the
    // group's steps; at a block of 1 a group is one sample. Its noise keeps the chain's two sides
    // apart, so those steps are heard on the right.
    const Settings patches[] = {
        { { "osc1Wave", 5.0f }, { "osc1DcwDepth", 0.8f }, { "osc2Level", 0.0f }, { "osc2Wave", 8.0f }, { "glideTime", 0.05f } },
        { { "osc2Level", 0.0f }, { "osc2Wave", 2.0f }, { "reeseSpread", 0.5f }, { "mod1Source", 8.0f }, { "mod1Dest", 10.0f },
          { "mod1Amount", 0.001f }, { "filterAttack", 4.0f }, { "noiseLevel", -20.0f } },
    };
    for (size_t patch = 0; patch < std::size (patches); ++patch)
    {
        auto renderWith = [&] (int block)
        {
            auto p = makePatched (patches[patch], 48000.0, block);
            return renderProcessor (*p, 40000, block, events);
        };

        const auto reference = renderWith (512);
        EXPECT_GT (peak (reference.getReadPointer (0), 40000), 0.1f);
        for (int block : { 1, 64, 333, 4096 })
        {
            const auto other = renderWith (block);
            // Compared until the last release ends (30000 + 0.18 s): when the voice goes idle it stops
            // in the middle of its chunk, so what its DC blockers still ring out depends on the chunk.
            float worst = 0.0f;
            for (int ch = 0; ch < 2; ++ch)
                for (int i = 0; i < 38600; ++i)
                    worst = std::max (worst, std::abs (other.getSample (ch, i) - reference.getSample (ch, i)));
            EXPECT_LT (worst, 1.0e-5f) << "patch " << patch << ", block " << block;
        }
    }
}

TEST (Engine, GlideStartsOnPitchFromIdleAndGlidesBetweenOverlappingNotes)
{
    EngineRig rig;
    rig.set ("glideTime", 0.2f);
    rig.engine.startNote (48, 1.0f, false);
    EXPECT_EQ (rig.engine.currentPitch, 48.0f);
    rig.render (480);
    EXPECT_EQ (rig.engine.currentPitch, 48.0f);

    rig.engine.startNote (60, 1.0f, false);
    rig.render (480);
    const float after10ms = rig.engine.currentPitch;
    EXPECT_GT (after10ms, 48.0f);
    EXPECT_LT (after10ms, 60.0f);
    // A one-pole slew: after t the remaining distance is exp(-t / T).
    EXPECT_NEAR (60.0f - after10ms, 12.0f * std::exp (-0.01f / 0.2f), 0.01f);

    rig.engine.startNote (36, 1.0f, false); // glides on from where it stands
    EXPECT_EQ (rig.engine.currentPitch, after10ms);
}

TEST (Engine, OctaveAndNoteAreClampedTogether)
{
    EngineRig rig;
    rig.set ("octave", 4.0f); // "+2"
    rig.engine.startNote (120, 1.0f, false);
    EXPECT_EQ (rig.engine.targetPitch, 127.0f);
    rig.set ("octave", 0.0f); // "-2"
    rig.engine.startNote (10, 1.0f, false);
    EXPECT_EQ (rig.engine.targetPitch, 0.0f);
}

TEST (Engine, OctaveChangeDuringANoteGlidesAtTheNextChunk)
{
    EngineRig rig;
    rig.set ("glideTime", 0.1f);
    rig.engine.startNote (60, 1.0f, false);
    rig.render (256);
    rig.set ("octave", 3.0f); // "+1"
    EXPECT_EQ (rig.engine.targetPitch, 60.0f); // nothing until the engine reads its chunk
    rig.render (256);
    EXPECT_EQ (rig.engine.targetPitch, 72.0f);
    EXPECT_GT (rig.engine.currentPitch, 60.0f);
    EXPECT_LT (rig.engine.currentPitch, 72.0f);
}

TEST (Engine, LegatoNotesDrawNoteRandomWithoutRestarting)
{
    EngineRig rig;
    rig.engine.startNote (60, 1.0f, false);
    rig.render (4800);
    const float random = rig.engine.noteRandom;
    const float env = rig.engine.ampEnvelope.getNextSample();
    rig.engine.startNote (62, 0.5f, true);
    EXPECT_NE (rig.engine.noteRandom, random);
    EXPECT_GE (rig.engine.noteRandom, -1.0f);
    EXPECT_LE (rig.engine.noteRandom, 1.0f);
    EXPECT_EQ (rig.engine.noteVelocity, 0.5f);
    EXPECT_NEAR (rig.engine.ampEnvelope.getNextSample(), env, 1.0e-3f); // no retrigger
}

TEST (Engine, NothingIsAddedWhenIdleOrForZeroSamples)
{
    EngineRig rig;
    rig.buffer.clear();
    rig.buffer.setSample (0, 3, 0.25f);
    rig.engine.render (rig.buffer, 0, 512);
    EXPECT_EQ (rig.buffer.getSample (0, 3), 0.25f);

    rig.engine.startNote (60, 1.0f, false);
    rig.engine.render (rig.buffer, 0, 0);
    EXPECT_EQ (rig.buffer.getSample (0, 3), 0.25f);
    EXPECT_EQ (rig.buffer.getSample (1, 3), 0.0f);
}

TEST (Engine, VoiceStartsWithAnAntiClickFadeFromZero)
{
    EngineRig rig;
    rig.set ("ampAttack", 0.001f);
    rig.engine.startNote (69, 1.0f, false);
    rig.render (512);
    EXPECT_EQ (rig.buffer.getSample (0, 0), 0.0f);
    EXPECT_EQ (rig.engine.antiClickLength, (int) (48000 * 0.003 + 0.5));
    // Within the fade the level is held below the smoothstep's value.
    for (int i = 1; i < rig.engine.antiClickLength; ++i)
    {
        const float t = 1.0f - (float) (rig.engine.antiClickLength - i) / (float) rig.engine.antiClickLength;
        ASSERT_LE (std::abs (rig.buffer.getSample (0, i)), 0.51f * (3.0f - 2.0f * t) * t * t + 1.0e-3f) << i;
    }
}

TEST (Engine, ReleaseEndsTheVoice)
{
    EngineRig rig;
    rig.set ("ampRelease", 0.05f);
    rig.engine.startNote (50, 1.0f, false);
    rig.render (2400);
    rig.engine.releaseAll();
    EXPECT_EQ (rig.engine.currentNote, -1);
    EXPECT_FALSE (rig.engine.isIdle());
    rig.render (2400);     // 50 ms of release
    rig.render (512);
    EXPECT_TRUE (rig.engine.isIdle());
    EXPECT_EQ (peak (rig.buffer.getReadPointer (0), 512), 0.0f);
}

TEST (Engine, TwoOscillatorsMixOrRingAtTheirLevels)
{
    // Mixed: 220 Hz from osc 1 and 440 Hz from osc 2, each a cosine of amplitude 0.5. Ring:
    // cos(a) cos(2a) = (cos(a) + cos(3a)) / 2, at the output gain of 0.5.
    for (bool ring : { false, true })
    {
        auto p = makePatched ({ { "mode", ring ? 1.0f : 0.0f }, { "osc2Level", 0.0f }, { "osc2Semitone", 12.0f } });
        const auto out = renderNote (*p, 57, 48000);
        const auto at = [x = out.getReadPointer (0) + 4800] (double hz) { return toneMagnitude (x, 38400, hz, 48000.0); };
        EXPECT_NEAR (at (220.0), ring ? 0.25 : 0.5, 0.01) << ring;
        if (ring)
        {
            EXPECT_NEAR (at (660.0), 0.25, 0.01);
            EXPECT_LT (at (440.0), 0.01);
        }
        else
        {
            EXPECT_NEAR (at (440.0), 0.5, 0.01);
        }
    }
}

namespace
{
// Envelope of a rendered tone: the peak of each 1 ms window.
std::vector<float> windowPeaks (const juce::AudioBuffer<float>& b, int window)
{
    std::vector<float> out;
    for (int i = 0; i + window <= b.getNumSamples(); i += window)
        out.push_back (peak (b.getReadPointer (0) + i, window));
    return out;
}
}

TEST (Engine, AmpEnvelopeSegmentTimesOnRenderedOutput)
{
    auto p = makePatched ({ { "ampAttack", 0.1f }, { "ampDecay", 0.2f }, { "ampSustain", 0.5f }, { "ampRelease", 0.3f } });
    // Held for 0.5 s, then released.
    const auto out = renderProcessor (*p, 48000, 480, { { 0, 69, 1.0f }, { 24000, 69, 0.0f } });
    const auto env = windowPeaks (out, 48); // 1 ms windows, 440 Hz has a peak in each half-cycle
    const float top = *std::max_element (env.begin(), env.end());
    EXPECT_NEAR (top, 0.5f, 0.01f);

    const auto peakAt = (int) (std::max_element (env.begin(), env.end()) - env.begin());
    EXPECT_NEAR (peakAt, 100, 3); // attack of 100 ms
    EXPECT_NEAR (env[50] / top, 0.5f, 0.03f); // linear attack
    EXPECT_NEAR (env[200] / top, 1.0f - 0.5f * 0.5f, 0.03f); // halfway through the decay
    EXPECT_NEAR (env[450] / top, 0.5f, 0.02f); // sustain
    EXPECT_NEAR (env[650] / top, 0.25f, 0.03f); // release halfway from the held 0.5
    EXPECT_EQ (env[810], 0.0f); // over after 300 ms of release
}

TEST (Engine, FilterShapesTheToneAndPassesFullLevelWhenDisabled)
{
    auto brightness = [] (bool enabled, float cutoff)
    {
        auto p = makePatched ({ { "osc1DcwDepth", 1.0f }, { "osc1DcwSustain", 1.0f }, { "filterEnabled", enabled ? 1.0f : 0.0f },
                                { "filterCutoff", cutoff } });
        const auto out = renderNote (*p, 45, 24000);
        const float* x = out.getReadPointer (0) + 4800;
        return std::pair { toneMagnitude (x, 19200, 110.0, 48000.0), toneMagnitude (x, 19200, 1760.0, 48000.0) };
    };

    const auto open = brightness (true, 20000.0f);
    const auto disabled = brightness (false, 200.0f);
    const auto closed = brightness (true, 200.0f);
    EXPECT_NEAR (disabled.first, open.first, open.first * 0.01);
    EXPECT_NEAR (disabled.second, open.second, open.second * 0.02);
    // The 16th harmonic, three octaves above a 200 Hz cut-off, falls by far more than 60 dB.
    EXPECT_LT (closed.second, open.second * 1.0e-3);
    EXPECT_GT (closed.first, open.first * 0.5);
}

TEST (Engine, FilterEnvelopeOpensTheCutoffScaledByVelocity)
{
    auto upper = [] (float velocity, float velToFilter)
    {
        auto p = makePatched ({ { "osc1DcwDepth", 1.0f }, { "osc1DcwSustain", 1.0f }, { "filterCutoff", 100.0f }, { "filterEnvAmount", 48.0f },
                                { "filterSustain", 1.0f }, { "velToFilterEnv", velToFilter },
                                { "mod1Amount", 0.0f } }); // keep velocity off the amp
        const auto out = renderNote (*p, 45, 24000, velocity);
        return toneMagnitude (out.getReadPointer (0) + 4800, 19200, 880.0, 48000.0);
    };

    const double fullEnvelope = upper (1.0f, 1.0f);
    const double noEnvelope = upper (1.0f / 127.0f, 1.0f); // the lowest velocity takes the reach to almost 0
    const double velocityIgnored = upper (1.0f / 127.0f, 0.0f);
    EXPECT_GT (fullEnvelope, noEnvelope * 100.0); // 1.6 kHz cut-off against 100 Hz
    EXPECT_NEAR (velocityIgnored, fullEnvelope, fullEnvelope * 0.02);
}

TEST (HalfBandDecimator, IsTheFrameworksDownwardFilterBitForBit)
{
    // Blocks of uneven length, then silence long enough for the states to fall below the size
    // they snap to zero at.
    const int blocks[] = { 1, 7, 64, 513, 3, 300, 300, 300, 300 };
    int total = 0;
    for (int b : blocks)
        total += b;

    juce::dsp::Oversampling<float> reference (2, 1, juce::dsp::Oversampling<float>::filterHalfBandPolyphaseIIR, true, false);
    reference.initProcessing (1024);
    reference.reset();
    juce::AudioBuffer<float> hostRate (2, 1024);
    hostRate.clear();
    juce::dsp::AudioBlock<float> upFrom (hostRate);
    auto twice = reference.processSamplesUp (upFrom);

    HalfBandDecimator decimator;
    decimator.prepare();

    juce::Random random (11);
    std::vector<float> over[2], ours[2];
    for (int c = 0; c < 2; ++c)
    {
        over[c].resize ((size_t) (2 * total));
        for (size_t i = 0; i < over[c].size(); ++i)
            over[c][i] = i < 2 * 600 ? random.nextFloat() * 2.0f - 1.0f : 0.0f;
        ours[c].resize ((size_t) total);
    }

    int at = 0;
    for (int b : blocks)
    {
        for (int c = 0; c < 2; ++c)
            std::copy_n (over[c].data() + 2 * at, 2 * b, twice.getChannelPointer ((size_t) c));
        juce::dsp::AudioBlock<float> down (hostRate.getArrayOfWritePointers(), 2, (size_t) b);
        reference.processSamplesDown (down);
        decimator.process (over[0].data() + 2 * at, over[1].data() + 2 * at, ours[0].data() + at, ours[1].data() + at, b);
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < b; ++i)
                ASSERT_EQ (ours[c][(size_t) (at + i)], hostRate.getSample (c, i)) << "channel " << c << ", sample " << at + i;
        at += b;
    }
}
