#include "AllocationCounter.h"
#include "TestHelpers.h"

#include <random>

using namespace morvane;
using namespace morvane::test;

namespace
{
const char* const stageSwitches[] = { "filterEnabled", "mbdEnable", "modFxEnable", "postEqEnable", "delayEnable",
                                      "reverbEnable", "crushEnable", "monoLowEnabled" };
const char* const stageMixes[] = { "mbdMix", "modFxMix", "delayMix", "reverbMix", "crushMix", "driveMix" };

// Every parameter to a random value, then every stage on with some of its mix. Without the matrix
// the gain staging is bounded by the controls; the matrix may add +60 dB per slot to a level by design.
void randomisePatch (MorvaneAudioProcessor& p, std::mt19937& rng, bool withMatrix)
{
    std::uniform_real_distribution<float> unit (0.0f, 1.0f);
    for (auto* parameter : p.getParameters())
    {
        const float r = unit (rng);
        parameter->setValueNotifyingHost (r < 0.1f ? 0.0f : (r > 0.9f ? 1.0f : unit (rng)));
    }
    for (auto* id : stageSwitches)
        setParameter (p, id, 1.0f);
    for (auto* id : stageMixes)
        setParameter (p, id, 0.2f + 0.8f * unit (rng));
    setParameter (p, "outputGain", -6.0f);
    if (! withMatrix)
        for (int slot = 1; slot <= 8; ++slot)
            setParameter (p, ("mod" + juce::String (slot) + "Amount").toRawUTF8(), 0.0f);
}

void addRandomEvents (juce::MidiBuffer& midi, int blockSize, std::mt19937& rng)
{
    const int count = (int) (rng() % 5);
    for (int e = 0; e < count; ++e)
    {
        const int pos = (int) (rng() % (unsigned) blockSize);
        switch (rng() % 8)
        {
            case 0:
            case 1: midi.addEvent (juce::MidiMessage::noteOn (1, 24 + (int) (rng() % 60), (juce::uint8) (1 + rng() % 127)), pos); break;
            case 2: midi.addEvent (juce::MidiMessage::noteOff (1, 24 + (int) (rng() % 60)), pos); break;
            case 3: midi.addEvent (juce::MidiMessage::pitchWheel (1, (int) (rng() % 16384)), pos); break;
            case 4: midi.addEvent (juce::MidiMessage::controllerEvent (1, (int) (rng() % 128), (int) (rng() % 128)), pos); break;
            case 5: midi.addEvent (juce::MidiMessage::channelPressureChange (1, (int) (rng() % 128)), pos); break;
            case 6: midi.addEvent (juce::MidiMessage::allNotesOff (1), pos); break;
            default: midi.addEvent (juce::MidiMessage::controllerEvent (1, 1, (int) (rng() % 128)), pos); break;
        }
    }
}
}

TEST (Stress, RandomPatchesAndMidiAtEveryRateAndBlockSizeStayFiniteAndAllocateNothing)
{
    std::mt19937 rng (20261122);
    for (double rate : { 44100.0, 48000.0, 88200.0, 96000.0, 192000.0 })
        for (int blockSize : { 1, 17, 64, 333, 512, 4096 })
        {
            SCOPED_TRACE (testing::Message() << rate << " Hz, block " << blockSize);
            auto p = std::make_unique<MorvaneAudioProcessor>();
            p->setRateAndBufferSizeDetails (rate, blockSize);
            p->prepareToPlay (rate, blockSize);

            juce::AudioBuffer<float> buffer (2, blockSize);
            juce::MidiBuffer midi;
            midi.ensureSize (2048);
            // About 1.5 seconds of audio, at least 60 blocks.
            const int blocks = std::max (60, (int) (rate * 1.5) / blockSize);
            const int changeEvery = std::max (1, blocks / 12);
            long allocations = 0;
            float loudest = 0.0f, loudestWithMatrix = 0.0f;
            bool withMatrix = false;
            for (int b = 0; b < blocks; ++b)
            {
                if (b % changeEvery == 0)
                {
                    // The first half plays without the matrix, so no loud tail of a slot leaks into it.
                    withMatrix = b >= blocks / 2;
                    randomisePatch (*p, rng, withMatrix);
                }
                if (b % 37 == 36)
                    p->pushPanic();
                if (withMatrix && b % 11 == 5) // a learn completes on the audio thread, then acts through its binding
                    p->startMidiLearn (p->getParameters()[(int) (rng() % (unsigned) p->getParameters().size())]
                                           ->getName (64)); // an unknown id as often as not: no learn
                if (withMatrix && b % 11 == 6)
                    if (auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p->getParameters()[(int) (rng() % 157)]))
                        p->startMidiLearn (ranged->getParameterID());
                midi.clear();
                addRandomEvents (midi, blockSize, rng);
                if (b % changeEvery == 1 || blockSize == 1)
                    midi.addEvent (juce::MidiMessage::noteOn (1, 36 + (int) (rng() % 24), (juce::uint8) 127), 0);

                AllocationCounter counter;
                p->processBlock (buffer, midi);
                allocations += counter.allocations();

                for (int ch = 0; ch < 2; ++ch)
                    for (int i = 0; i < blockSize; ++i)
                    {
                        const float x = buffer.getSample (ch, i);
                        ASSERT_TRUE (std::isfinite (x)) << "block " << b;
                        auto& level = withMatrix ? loudestWithMatrix : loudest;
                        level = std::max (level, std::abs (x));
                    }
            }
            EXPECT_EQ (allocations, 0);
            EXPECT_LT (loudest, 32.0f);          // +30 dBFS: every makeup and level at its top
            EXPECT_LT (loudestWithMatrix, 1.0e5f); // no runaway, whatever the slots add
            RecordProperty ("loudest", std::to_string (loudest));
        }
}
