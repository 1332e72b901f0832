#include "TestHelpers.h"

using namespace morvane;
using namespace morvane::test;

namespace
{
// A plain sine on osc 1 (a saw with no DCW), nothing else, filter open.
std::unique_ptr<MorvaneAudioProcessor> sineVoice (Settings settings)
{
    auto p = makePatched ({ { "osc1DcwDepth", 0.0f }, { "osc2Level", -90.0f } });
    setParameters (*p, settings);
    return p;
}

juce::AudioBuffer<float> holdNote (Settings settings, int note = 45, int length = 48000)
{
    return renderNote (*sineVoice (settings), note, length);
}

// Level after the first 200 ms.
double level (Settings settings)
{
    const auto b = holdNote (settings);
    return rms (b.getReadPointer (0) + 9600, b.getNumSamples() - 9600);
}

double harmonic (const juce::AudioBuffer<float>& b, double f)
{
    return toneMagnitude (b.getReadPointer (0) + 9600, 32768, f, 48000.0);
}

double decibels (double ratio) { return 20.0 * std::log10 (ratio); }

void expectSameSamples (const juce::AudioBuffer<float>& a, const juce::AudioBuffer<float>& b, const char* what)
{
    ASSERT_EQ (a.getNumSamples(), b.getNumSamples());
    for (int ch = 0; ch < 2; ++ch)
        for (int i = 0; i < a.getNumSamples(); ++i)
            ASSERT_EQ (a.getSample (ch, i), b.getSample (ch, i)) << what << ", channel " << ch << ", sample " << i;
}

// Largest sample-to-sample move in [from, to).
float largestStep (const juce::AudioBuffer<float>& b, int from, int to)
{
    float m = 0.0f;
    for (int ch = 0; ch < b.getNumChannels(); ++ch)
        for (int i = std::max (from, 1); i < to; ++i)
            m = std::max (m, std::abs (b.getSample (ch, i) - b.getSample (ch, i - 1)));
    return m;
}

// Holds a note and moves one parameter at a block boundary, returning the whole render.
juce::AudioBuffer<float> switchDuring (MorvaneAudioProcessor& p, const char* id, float value, int atSample)
{
    juce::AudioBuffer<float> out (2, 2 * atSample);
    auto first = renderProcessor (p, atSample, 256, { { 0, 45, 1.0f } });
    setParameter (p, id, value);
    auto second = renderProcessor (p, atSample, 256, {});
    for (int ch = 0; ch < 2; ++ch)
    {
        out.copyFrom (ch, 0, first, ch, 0, atSample);
        out.copyFrom (ch, atSample, second, ch, 0, atSample);
    }
    return out;
}
}

TEST (VoiceStages, OffAtMixZeroOrAtTheFloorTheyRenderAsWithout)
{
    struct Row { const char* what; Settings with, without; };
    const Row rows[] = {
        { "drive at mix 0", { { "driveGain", 12.0f }, { "drive", 18.0f }, { "driveMix", 0.0f } }, {} },
        { "drive switched off", { { "driveGain", 12.0f }, { "drive", 18.0f }, { "driveOn", 0.0f } }, {} },
        // At -90 dB nothing of the noise reaches the output, whatever its colour and routing.
        { "noise at the floor", { { "noiseLevel", -90.0f }, { "noiseColour", 2.0f }, { "noiseRouting", 0.5f } }, {} },
        { "multiband at mix 0", { { "mbdLowAmount", 12.0f }, { "mbdEnable", 1.0f }, { "mbdMix", 0.0f } }, { { "mbdLowAmount", 12.0f } } },
    };
    for (const auto& row : rows)
        expectSameSamples (holdNote (row.without), holdNote (row.with), row.what);
}

TEST (VoiceStages, GainsAndCutsAgainstTheSameVoiceWithout)
{
    EXPECT_NEAR (level ({ { "driveGain", 6.0206f } }) / level ({}), 2.0, 1.0e-3); // makeup is a plain gain at drive 0
    EXPECT_NEAR (level ({ { "driveGain", 6.0206f }, { "driveOn", 0.0f } }) / level ({}), 1.0, 1.0e-6); // and goes with the switch
    EXPECT_NEAR (decibels (level ({ { "drive", 24.0f }, { "driveMode", 2.0f }, { "driveAutoMakeup", 1.0f } })
                           / level ({ { "drive", 24.0f }, { "driveMode", 2.0f } })),
                 9.6, 0.01); // fold's auto makeup at full drive
    // The ring product is scaled by both gains: osc 2 at -60 dB leaves almost nothing.
    EXPECT_NEAR (level ({ { "mode", 1.0f }, { "osc2Level", -60.0f }, { "osc2DcwDepth", 0.0f } })
                     / level ({ { "mode", 1.0f }, { "osc2Level", 0.0f }, { "osc2DcwDepth", 0.0f } }),
                 1.0e-3, 1.0e-4);

    const double flat = harmonic (holdNote ({}), 110.0);
    const auto notched = holdNote ({ { "postEqEnable", 1.0f }, { "postEqNotchHz", 110.0f }, { "postEqNotchDepth", 1.0f } });
    EXPECT_NEAR (decibels (harmonic (notched, 110.0) / flat), -18.0, 0.3);
    EXPECT_GT (harmonic (holdNote ({ { "postEqEnable", 1.0f }, { "postEqTilt", -12.0f } }), 110.0), 2.5 * flat);

    // The multiband's low band turns the clean sine into odd harmonics.
    const auto clean = holdNote ({ { "mbdLowAmount", 12.0f } });
    const auto driven = holdNote ({ { "mbdLowAmount", 12.0f }, { "mbdEnable", 1.0f } });
    EXPECT_LT (harmonic (clean, 330.0) / harmonic (clean, 110.0), 1.0e-3);
    EXPECT_GT (harmonic (driven, 330.0) / harmonic (driven, 110.0), 0.05);
}

TEST (VoiceDrive, OddHarmonicsRiseWithDrive)
{
    double previous = 0.0;
    for (float driveDb : { 0.0f, 6.0f, 12.0f, 24.0f })
    {
        const auto out = holdNote ({ { "drive", driveDb } });
        const double fundamental = harmonic (out, 110.0);
        const double second = harmonic (out, 220.0) / fundamental;
        double odd = 0.0;
        for (int h = 3; h <= 9; h += 2)
            odd += std::pow (harmonic (out, 110.0 * h) / fundamental, 2.0);
        odd = std::sqrt (odd);
        if (driveDb == 0.0f)
        {
            EXPECT_LT (odd, 1.0e-3);
        }
        else
        {
            EXPECT_GT (odd, previous * 1.2) << driveDb;
        }
        EXPECT_LT (second, std::max (0.1 * odd, 1.0e-3)) << driveDb; // "soft" is odd-symmetric
        previous = odd;
    }
}

TEST (VoiceMix, RingModeMultipliesTheTwoOscillators)
{
    const auto out = holdNote ({ { "mode", 1.0f }, { "osc2Level", 0.0f }, { "osc2DcwDepth", 0.0f }, { "osc2Semitone", 7.0f } }, 57);
    const double f1 = 220.0, f2 = 220.0 * std::pow (2.0, 7.0 / 12.0);
    const double sum = harmonic (out, f1 + f2), difference = harmonic (out, f2 - f1);
    EXPECT_GT (sum, 0.05);
    EXPECT_NEAR (difference / sum, 1.0, 0.1);
    EXPECT_LT (harmonic (out, f1), 0.01 * sum);
    EXPECT_LT (harmonic (out, f2), 0.01 * sum);
}

TEST (VoiceSub, PitchFollowsOctaveSemitoneAndFine)
{
    struct Case { float octave, semitone, fine; double hz; };
    for (auto c : { Case { 0, 0, 0, 55.0 }, Case { 1, 0, 0, 110.0 }, Case { 2, 0, 0, 220.0 }, Case { 3, 0, 0, 440.0 },
                    Case { 4, 0, 0, 880.0 }, Case { 2, 7, 0, 220.0 * std::pow (2.0, 7.0 / 12.0) },
                    Case { 1, -12, 50, 55.0 * std::pow (2.0, 0.5 / 12.0) } })
    {
        const auto out = holdNote ({ { "osc1Level", -60.0f }, { "subLevel", 0.0f }, { "subOctave", c.octave },
                                     { "subSemitone", c.semitone }, { "subFine", c.fine } },
                                   57, 96000);
        EXPECT_NEAR (zeroCrossingFrequency (out.getReadPointer (0) + 9600, 86000, 48000.0), c.hz, c.hz * 2.0e-4)
            << c.octave << " " << c.semitone << " " << c.fine;
    }
}

TEST (VoiceSub, RoutingDecidesWhetherTheSubMeetsTheFilter)
{
    // A sub at 110 Hz against a filter closed to 30 Hz: what reaches the output passed around it.
    auto subLevel = [] (float routing, float send)
    {
        return level ({ { "osc1Level", -60.0f }, { "subLevel", 0.0f }, { "subOctave", 2.0f }, { "filterCutoff", 20.0f },
                        { "subRouting", routing }, { "subDriveSend", send } });
    };
    const double around = subLevel (0.0f, 0.0f);
    EXPECT_GT (around, 0.1);
    EXPECT_LT (subLevel (0.0f, 1.0f), 0.01 * around);
    EXPECT_NEAR (subLevel (1.0f, 1.0f), around, 1.0e-6); // the send has no effect after the filter
    EXPECT_NEAR (subLevel (0.0f, 0.5f), 0.5 * around, 0.01 * around);
}

TEST (VoiceNoise, RoutingSplitsTheFilter)
{
    // Through a filter closed to 20 Hz, only the post share of the noise is heard.
    auto noiseLevel = [] (float routing)
    {
        return level ({ { "osc1Level", -60.0f }, { "noiseLevel", -12.0f }, { "filterCutoff", 20.0f }, { "noiseRouting", routing } });
    };
    const double post = noiseLevel (1.0f);
    EXPECT_GT (post, 0.05);
    EXPECT_LT (noiseLevel (0.0f), 0.05 * post);
    EXPECT_NEAR (noiseLevel (0.25f) / post, 0.25, 0.02);
}

TEST (VoiceFeedback, StaysBoundedAndSurvivesANewNote)
{
    auto p = sineVoice ({ { "feedbackAmount", 1.0f }, { "drive", 12.0f }, { "filterReso", 0.9f }, { "filterCutoff", 400.0f } });
    const auto out = renderProcessor (*p, 96000, 512, { { 0, 45, 1.0f }, { 48000, 47, 1.0f } });
    for (int ch = 0; ch < 2; ++ch)
    {
        EXPECT_LT (peak (out.getReadPointer (ch), out.getNumSamples()), 4.0f);
        for (int i = 0; i < out.getNumSamples(); ++i)
            ASSERT_TRUE (std::isfinite (out.getSample (ch, i)));
    }
    // The loop adds to the sound: the same patch without feedback differs.
    EXPECT_GT (std::abs (level ({ { "drive", 12.0f }, { "filterReso", 0.9f }, { "filterCutoff", 400.0f } })
                         - level ({ { "feedbackAmount", 1.0f }, { "drive", 12.0f }, { "filterReso", 0.9f }, { "filterCutoff", 400.0f } })),
               1.0e-3);
}

TEST (VoiceFades, DrivePositionSwitchAndSubRoutingChangeWithoutAStep)
{
    // Compared with the larger of the steady states either side: a step would stand out above both.
    struct Case { const char* id; float from, to; };
    for (auto c : { Case { "drivePosition", 0.0f, 1.0f }, Case { "drivePosition", 1.0f, 0.0f }, Case { "subRouting", 1.0f, 0.0f },
                    Case { "driveOn", 1.0f, 0.0f }, Case { "driveOn", 0.0f, 1.0f } })
    {
        auto p = sineVoice ({ { "drive", 18.0f }, { "filterCutoff", 300.0f }, { "filterReso", 0.6f }, { "subLevel", -6.0f },
                              { "subDriveSend", 1.0f }, { c.id, c.from } });
        const int at = 24064;
        const auto out = switchDuring (*p, c.id, c.to, at);
        const float steady = std::max (largestStep (out, at - 12000, at), largestStep (out, at + 12000, 2 * at));
        const float across = largestStep (out, at, at + 960);
        EXPECT_LT (across, 1.25f * steady) << c.id << " to " << c.to;
    }
}

TEST (VoiceFades, AfterADrivePositionChangeTheVoiceSoundsAsOneStartedThere)
{
    // The filter envelope has moved the cut-off since the note began and has settled when the
    // position changes: the filters that take over must stand where the cut-off now is.
    const auto render = [] (float startPosition)
    {
        auto p = sineVoice ({ { "drive", 12.0f }, { "filterCutoff", 300.0f }, { "filterReso", 0.6f }, { "filterEnvAmount", 36.0f },
                              { "filterDecay", 0.02f }, { "filterSustain", 0.0f }, { "drivePosition", startPosition } });
        return switchDuring (*p, "drivePosition", 1.0f, 24064);
    };
    const auto switched = render (0.0f), started = render (1.0f);
    const int from = 24064 + 12000, n = 12000;
    juce::AudioBuffer<float> difference (1, n);
    difference.copyFrom (0, 0, switched, 0, from, n);
    difference.addFrom (0, 0, started, 0, from, n, -1.0f);
    const double heard = rms (started.getReadPointer (0) + from, n);
    EXPECT_GT (heard, 0.01);
    EXPECT_LT (rms (difference.getReadPointer (0), n), 1.0e-3 * heard);
}

TEST (VoiceFades, SubToPostFilterCutsTheSendAtOnce)
{
    // The send falls to 0 at once and the post share runs through cos + sin, about 3 dB over its end value.
    auto p = sineVoice ({ { "osc1Level", -60.0f }, { "subLevel", -6.0f }, { "subDriveSend", 1.0f }, { "filterCutoff", 20.0f } });
    const int at = 24064;
    const auto out = switchDuring (*p, "subRouting", 1.0f, at);
    const float during = peak (out.getReadPointer (0) + at + 60, 120);   // around the fade's middle
    const float after = peak (out.getReadPointer (0) + at + 12000, 1200); // settled
    EXPECT_GT (during, 1.2f * after);
    EXPECT_LT (during, 1.45f * after);
}

TEST (VoiceMix, ARightSideRunAsACopySoundsAsOneRunOnItsOwn)
{
    // A phase stereo offset only moves the "phase" model, so with the ladder it changes no sample,
    // but it keeps the right side running on its own. Every stage that holds state is on, the drive
    // position fades, and a noise burst parts the two sides for a while.
    Settings patch { { "drive", 12.0f }, { "feedbackAmount", 0.6f }, { "filterReso", 0.7f }, { "filterCutoff", 500.0f },
                     { "mbdEnable", 1.0f }, { "mbdLowAmount", 9.0f }, { "subLevel", -12.0f }, { "subDriveSend", 0.5f } };
    auto copied = sineVoice (patch);
    auto ownRight = sineVoice (patch);
    setParameter (*ownRight, "phaseStereo", 0.001f);
    const auto play = [] (MorvaneAudioProcessor& p)
    {
        juce::AudioBuffer<float> out (2, 4 * 12032);
        const auto part = [&] (int index, const std::vector<NoteEvent>& notes)
        {
            const auto b = renderProcessor (p, 12032, 256, notes);
            for (int ch = 0; ch < 2; ++ch)
                out.copyFrom (ch, index * 12032, b, ch, 0, 12032);
        };
        part (0, { { 0, 40, 1.0f } });
        setParameter (p, "drivePosition", 1.0f);
        part (1, {});
        setParameter (p, "noiseLevel", -20.0f);
        part (2, { { 5000, 43, 1.0f } });
        setParameter (p, "noiseLevel", -90.0f);
        part (3, {});
        return out;
    };
    const auto a = play (*copied);
    expectSameSamples (a, play (*ownRight), "right side on its own");
    EXPECT_GT (rms (a.getReadPointer (1), a.getNumSamples()), 0.01);
}
