#include "TestHelpers.h"

#include <gtest/gtest.h>

#include <map>

using namespace morvane;

namespace
{
// The bundle's description as triples, read by Debian's serd: subject -> (predicate, object).
std::multimap<juce::String, std::pair<juce::String, juce::String>> readTriples (const juce::File& ttl)
{
    juce::ChildProcess serdi;
    std::multimap<juce::String, std::pair<juce::String, juce::String>> triples;
    if (! serdi.start (juce::StringArray { "serdi", "-i", "turtle", "-o", "ntriples", ttl.getFullPathName() }))
        return triples;
    for (const auto& line : juce::StringArray::fromLines (serdi.readAllProcessOutput()))
    {
        const auto subject = line.upToFirstOccurrenceOf (" ", false, false);
        const auto rest = line.fromFirstOccurrenceOf (" ", false, false);
        const auto predicate = rest.upToFirstOccurrenceOf (" ", false, false);
        const auto object = rest.fromFirstOccurrenceOf (" ", false, false).upToLastOccurrenceOf (" .", false, false);
        if (subject.isNotEmpty())
            triples.insert ({ subject, { predicate, object } });
    }
    return triples;
}

juce::String lexical (const juce::String& literal) { return literal.fromFirstOccurrenceOf ("\"", false, false).upToLastOccurrenceOf ("\"", false, false); }
}

TEST (Lv2Description, EveryParameterHasItsRangeDefaultAndScalePointsInItsOwnUnits)
{
    const auto triples = readTriples (juce::File (MORVANE_LV2_BUNDLE).getChildFile ("dsp.ttl"));
    ASSERT_FALSE (triples.empty()) << "serdi could not read the bundle's description";

    auto objects = [&] (const juce::String& subject, const char* predicate)
    {
        juce::StringArray found;
        const auto [first, last] = triples.equal_range (subject);
        for (auto it = first; it != last; ++it)
            if (it->second.first.endsWith (juce::String (predicate) + ">"))
                found.add (it->second.second);
        return found;
    };

    MorvaneAudioProcessor processor;
    int checked = 0, withPoints = 0;
    for (auto* p : processor.getParameters())
    {
        auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p);
        ASSERT_NE (ranged, nullptr);
        const auto id = ranged->getParameterID();
        const auto subject = "<https://morvane.audio/plugins/morvane:" + id + ">";
        const auto range = ranged->getNormalisableRange();
        const auto number = [&] (const char* predicate)
        {
            const auto found = objects (subject, predicate);
            return found.size() == 1 ? lexical (found[0]).getFloatValue() : std::numeric_limits<float>::quiet_NaN();
        };
        const float tolerance = 1.0e-4f * std::max (1.0f, std::abs (range.end - range.start));
        EXPECT_NEAR (number ("lv2core#minimum"), range.start, tolerance) << id;
        EXPECT_NEAR (number ("lv2core#maximum"), range.end, tolerance) << id;
        EXPECT_NEAR (number ("lv2core#default"), ranged->convertFrom0to1 (ranged->getDefaultValue()), tolerance) << id;

        const auto points = objects (subject, "lv2core#scalePoint");
        const int steps = ranged->getNumSteps();
        if (ranged->isDiscrete() && steps >= 2 && steps < 1000)
        {
            ASSERT_EQ (points.size(), steps) << id;
            std::map<float, juce::String> listed;
            for (const auto& node : points)
                listed[lexical (objects (node, "rdf-syntax-ns#value")[0]).getFloatValue()] = lexical (objects (node, "rdf-schema#label")[0]);
            for (int i = 0; i < steps; ++i)
            {
                const float normalised = (float) i / (float) (steps - 1);
                const float value = ranged->convertFrom0to1 (normalised);
                EXPECT_GE (value, range.start);
                EXPECT_LE (value, range.end);
                ASSERT_EQ (listed.count (value), 1u) << id << " lists no point at " << value;
                EXPECT_EQ (listed[value], ranged->getText (normalised, 1024)) << id;
            }
            ++withPoints;
        }
        ++checked;
    }
    EXPECT_EQ (checked, processor.getParameters().size());
    EXPECT_GE (withPoints, 30) << "every choice and switch lists its points";

    for (const auto& [subject, po] : triples)
        EXPECT_FALSE (po.first.contains ("foaf/0.1/mbox") && ! po.second.startsWith ("<mailto:")) << "an empty e-mail address";
}
