// Guards the sound of the factory bank against unintended change, e.g. from faster maths.
//
// Each preset's audition phrase is reduced, per channel, to its energy and to 64 random
// projections p_k = sum_n r_k[n] x[n] with r_k[n] = +-1 from a fixed hash. For a difference
// d = x - x_ref, each (p_k - p_ref_k) has mean square equal to the energy of d, so
// mean_k (p_k - p_ref_k)^2 estimates the difference energy without keeping the audio.
// The estimate is spread like a chi-square of 64 degrees of freedom over 64: with 99% odds it lies
// within -1.7 .. +1.6 dB of the true difference energy, so the -60 dB limit below passes any
// difference at or under -61.7 dB and fails any at or over -58.4 dB.
//
// MORVANE_RECORD_FINGERPRINTS=1 rewrites the reference table from the current build.
#include "presets/Catalogue.h"
#include "render/RenderSession.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>

namespace
{
constexpr double rate = 48000.0;
constexpr int projections = 64;
constexpr double limitDb = -60.0;

struct ChannelPrint
{
    double energy = 0.0;
    std::array<double, projections> p {};
};

using Print = std::array<ChannelPrint, 2>;

std::uint64_t mix (std::uint64_t z)
{
    z += 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

Print fingerprint (const juce::AudioBuffer<float>& audio)
{
    Print print;
    for (int ch = 0; ch < 2; ++ch)
    {
        const int source = std::min (ch, audio.getNumChannels() - 1);
        const float* x = audio.getReadPointer (source);
        auto& out = print[(size_t) ch];
        std::array<double, projections> sum {};
        for (int n = 0; n < audio.getNumSamples(); ++n)
        {
            const double v = x[n];
            out.energy += v * v;
            const std::uint64_t bits = mix ((std::uint64_t) n * 2 + (std::uint64_t) ch);
            for (int k = 0; k < projections; ++k)
                sum[(size_t) k] += ((bits >> k) & 1u) != 0 ? v : -v;
        }
        out.p = sum;
    }
    return print;
}

juce::File tableFile()
{
    return juce::File (MORVANE_SOURCE_DIR).getChildFile ("tests/data/factory_fingerprints.txt");
}

// One line per preset and channel: xml name, channel, energy, then the projections.
std::map<juce::String, Print> readTable()
{
    std::map<juce::String, Print> table;
    juce::StringArray lines;
    tableFile().readLines (lines);
    for (const auto& line : lines)
    {
        auto tokens = juce::StringArray::fromTokens (line, " ", "");
        if (tokens.size() != 3 + projections)
            continue;
        auto& c = table[tokens[0]][(size_t) std::clamp (tokens[1].getIntValue(), 0, 1)];
        c.energy = tokens[2].getDoubleValue();
        for (int k = 0; k < projections; ++k)
            c.p[(size_t) k] = tokens[3 + k].getDoubleValue();
    }
    return table;
}

void writeTable (const std::map<juce::String, Print>& table)
{
    juce::String text;
    for (const auto& [name, print] : table)
        for (int ch = 0; ch < 2; ++ch)
        {
            const auto& c = print[(size_t) ch];
            char buffer[32];
            text << name << " " << ch;
            std::snprintf (buffer, sizeof (buffer), " %.17g", c.energy);
            text << buffer;
            for (double v : c.p)
            {
                std::snprintf (buffer, sizeof (buffer), " %.10g", v);
                text << buffer;
            }
            text << "\n";
        }
    tableFile().getParentDirectory().createDirectory();
    ASSERT_TRUE (tableFile().replaceWithText (text));
}

// Difference energy over signal energy in dB, estimated from the two prints.
double differenceDb (const ChannelPrint& now, const ChannelPrint& reference)
{
    double sum = 0.0;
    for (int k = 0; k < projections; ++k)
    {
        const double d = now.p[(size_t) k] - reference.p[(size_t) k];
        sum += d * d;
    }
    const double difference = sum / projections;
    return 10.0 * std::log10 (std::max (difference, 1.0e-30) / std::max (reference.energy, 1.0e-30));
}
}

TEST (SoundFingerprint, EstimateFollowsAKnownDifference)
{
    juce::AudioBuffer<float> a (2, 48000), b (2, 48000);
    juce::Random random (7);
    for (int ch = 0; ch < 2; ++ch)
        for (int n = 0; n < 48000; ++n)
        {
            const float x = std::sin (0.01f * (float) n) + 0.3f * (random.nextFloat() - 0.5f);
            a.setSample (ch, n, x);
            // Noise 50 dB below the signal: far too loud to pass, and it must read so.
            b.setSample (ch, n, x + 0.003f * (random.nextFloat() * 2.0f - 1.0f) * 1.7320508f);
        }
    const auto pa = fingerprint (a), pb = fingerprint (b);
    for (int ch = 0; ch < 2; ++ch)
    {
        const double trueDb = 10.0 * std::log10 (0.003 * 0.003 * 48000.0 / pa[(size_t) ch].energy);
        EXPECT_NEAR (differenceDb (pb[(size_t) ch], pa[(size_t) ch]), trueDb, 2.0);
        EXPECT_LT (differenceDb (pa[(size_t) ch], pa[(size_t) ch]), -200.0);
    }
}

TEST (SoundFingerprint, EveryFactoryPresetSoundsAsRecorded)
{
    const auto catalogue = morvane::presets::loadCatalogue();
    const auto entries = morvane::presets::flatEntries (catalogue);
    ASSERT_EQ (entries.size(), 68u);

    if (std::getenv ("MORVANE_RECORD_FINGERPRINTS") != nullptr)
    {
        std::map<juce::String, Print> table;
        for (const auto* e : entries)
            table[e->xml] = fingerprint (morvane::render::renderAudition (e->xml, rate, 512));
        writeTable (table);
        GTEST_SKIP() << "recorded " << table.size() << " fingerprints to " << tableFile().getFullPathName();
    }

    const auto table = readTable();
    ASSERT_EQ (table.size(), 68u) << tableFile().getFullPathName();
    double worst = -400.0;
    for (const auto* e : entries)
    {
        SCOPED_TRACE (e->displayName);
        const auto found = table.find (e->xml);
        ASSERT_NE (found, table.end());
        const auto now = fingerprint (morvane::render::renderAudition (e->xml, rate, 512));
        for (int ch = 0; ch < 2; ++ch)
        {
            const double db = differenceDb (now[(size_t) ch], found->second[(size_t) ch]);
            EXPECT_LT (db, limitDb) << "channel " << ch;
            worst = std::max (worst, db);
        }
    }
    std::printf ("largest difference: %.1f dB below the signal\n", -worst);
}
