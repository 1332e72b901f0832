#include "TestHelpers.h"

#include "presets/Catalogue.h"
#include "render/AudioMeasures.h"
#include "render/RenderSession.h"

using namespace morvane;
using namespace morvane::test;

namespace
{
constexpr double rate = 48000.0;

juce::AudioBuffer<float> slice (const juce::AudioBuffer<float>& b, double from, double to)
{
    const int start = (int) (from * rate), n = (int) ((to - from) * rate);
    juce::AudioBuffer<float> out (b.getNumChannels(), n);
    for (int ch = 0; ch < b.getNumChannels(); ++ch)
        out.copyFrom (ch, 0, b, ch, start, n);
    return out;
}

double levelDb (const juce::AudioBuffer<float>& b, double from, double to)
{
    return render::measureAudio (slice (b, from, to), rate).rmsDb;
}
}

// The audition phrase: eighths of low and mid notes at full velocity from 0 to 2 s, then a note
// held from 2.0 to 3.5 s. The bank is matched to -11 LUFS on it, each preset held at or below a peak
// of -1.2 dBFS; the window below allows for the few whose peak stops them short of the target.
TEST (FactoryBank, EveryPresetIsFiniteUnclippedAudibleAndLoudnessMatched)
{
    const auto catalogue = presets::loadCatalogue();
    const auto entries = presets::flatEntries (catalogue);
    ASSERT_EQ (entries.size(), 68u);
    float quietest = 0.0f, loudest = -100.0f;
    for (const auto* e : entries)
    {
        SCOPED_TRACE (e->displayName);
        const auto audio = render::renderAudition (e->xml, rate, 512);
        ASSERT_EQ (audio.getNumSamples(), (int) (4.5 * rate));
        for (int ch = 0; ch < audio.getNumChannels(); ++ch)
            for (int i = 0; i < audio.getNumSamples(); ++i)
                ASSERT_TRUE (std::isfinite (audio.getSample (ch, i)));

        const auto m = render::measureAudio (audio, rate);
        EXPECT_LT (m.peakDb, 0.0f);
        EXPECT_GT (m.rmsDb, -40.0f);
        EXPECT_GE (m.loudnessLufs, -18.0f);
        EXPECT_LE (m.loudnessLufs, -8.5f);
        quietest = std::min (quietest, m.loudnessLufs);
        loudest = std::max (loudest, m.loudnessLufs);

        const auto& d = e->description;
        // A pluck or a short sound has died well away by the end of the held note.
        if (d.contains ("pluck") || d.contains ("short"))
        {
            EXPECT_LT (levelDb (audio, 3.0, 3.5) - levelDb (audio, 2.0, 2.3), -12.0);
        }
        // A pad or drone still stands at the end of it.
        if ((d.contains ("sustain") || d.contains ("drone")) && ! d.contains ("short"))
        {
            EXPECT_GT (levelDb (audio, 3.0, 3.5) - levelDb (audio, 2.5, 3.0), -6.0);
        }
    }
    EXPECT_LT (loudest - quietest, 10.0f);
}

TEST (FactoryBank, NamesTellTheTruth)
{
    const auto catalogue = presets::loadCatalogue();
    for (const auto& category : catalogue.categories)
        for (const auto& e : category.entries)
        {
            SCOPED_TRACE (e.displayName);
            const auto audio = render::renderAudition (e.xml, rate, 512);
            const auto whole = render::measureAudio (audio, rate);

            // Sub basses keep their energy at the bottom of the spectrum.
            if (category.id == "bass-sub" || e.xml == "init_sub.xml")
            {
                EXPECT_LT (whole.centroidHz, 150.0f);
            }

            // Reese and wide patches differ between the sides.
            if (e.description.contains ("reese") && (e.description.contains ("wide") || e.description.contains ("stereo")))
            {
                double difference = 0.0, sum = 0.0;
                for (int i = 0; i < audio.getNumSamples(); ++i)
                {
                    const double l = audio.getSample (0, i), r = audio.getSample (1, i);
                    difference += (l - r) * (l - r);
                    sum += (l + r) * (l + r);
                }
                EXPECT_GT (difference / sum, 0.01);
            }

            // An acid patch squelches: its filter envelope opens bright and closes within the note.
            if (e.description.contains ("acid") && e.description.contains ("envelope"))
            {
                const auto early = render::measureAudio (slice (audio, 2.0, 2.09), rate).centroidHz;
                const auto late = render::measureAudio (slice (audio, 2.6, 2.69), rate).centroidHz;
                EXPECT_GT (early, 1.3f * late);
            }
        }
}
