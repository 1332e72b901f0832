#include "audio/PluginProcessor.h"

#include "audio/MidiBlock.h"
#include "audio/Parameters.h"
#include "ui/Editor.h"

#include <algorithm>
#include <cmath>

namespace morvane
{
MorvaneAudioProcessor::MorvaneAudioProcessor()
    : AudioProcessor (BusesProperties().withOutput ("Out", juce::AudioChannelSet::stereo(), true)),
      parameters (*this, &undoManager, "PARAMS", createParameterLayout()),
      engine (parameters)
{
    for (auto& entry : ccToParameter)
        entry.store (-1);
    for (auto& slot : commandRing)
        slot = UiCommand {};

    for (auto* p : getParameters())
    {
        auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p);
        jassert (ranged != nullptr);
        parameterObjects.push_back (ranged);
        parameterValues.push_back (parameters.getRawParameterValue (ranged->getParameterID()));
    }

    lfoSyncBpmValue = parameters.getRawParameterValue ("lfoSyncBpm");
    legatoValue = parameters.getRawParameterValue ("legato");
    const char* fxIds[] = { "delayEnable", "delayPingPong", "delayTimeMs", "delayFeedback", "delayTone", "delayMix",
                            "reverbEnable", "reverbPredelayMs", "reverbBandwidth", "reverbDecay", "reverbDamping", "reverbMix",
                            "crushEnable", "crushBits", "crushRateHz", "crushJitter", "crushDither", "crushMix",
                            "modFxEnable", "modFxMode", "modFxRate", "modFxDepth", "modFxFeedback", "modFxMix" };
    for (size_t i = 0; i < fxValues.size(); ++i)
        fxValues[i] = parameters.getRawParameterValue (fxIds[i]);

    pendingCount = (int) parameterObjects.size();
    pendingNormalised = std::make_unique<std::atomic<float>[]> ((size_t) pendingCount);
    pendingFlags = std::make_unique<std::atomic<std::uint8_t>[]> ((size_t) pendingCount);
    for (int i = 0; i < pendingCount; ++i)
    {
        pendingNormalised[(size_t) i].store (0.0f);
        pendingFlags[(size_t) i].store (0);
    }

    for (auto* parameter : parameterObjects)
        parameters.addParameterListener (parameter->getParameterID(), &dirtyTracker);
    // Each parameter's adapter reports its first change to its listeners even when the value stands
    // still; this first round runs here, as a load, so that a learnt controller never marks the patch.
    loadingPreset = true;
    for (auto* parameter : parameterObjects)
        parameter->sendValueChangedMessageToListeners (parameter->getValue());
    loadingPreset = false;

    loadDefaultPatch();
    startTimerHz (30);
}

MorvaneAudioProcessor::~MorvaneAudioProcessor()
{
    stopTimer();
    for (auto* parameter : parameterObjects)
        parameters.removeParameterListener (parameter->getParameterID(), &dirtyTracker);
}

bool MorvaneAudioProcessor::isBusesLayoutSupported (const BusesLayout& layouts) const
{
    const auto out = layouts.getMainOutputChannelSet();
    return out == juce::AudioChannelSet::stereo() || out == juce::AudioChannelSet::mono();
}

void MorvaneAudioProcessor::prepareToPlay (double sampleRate, int maximumExpectedSamplesPerBlock)
{
    currentSampleRate = sampleRate;
    engine.prepare (sampleRate, maximumExpectedSamplesPerBlock);
    delay.prepare (sampleRate);
    reverb.prepare (sampleRate);
    crusher.prepare (sampleRate);
    modFxLeft.prepare (sampleRate);
    modFxRight.prepare (sampleRate);
    modFxLeft.lfoOffset = 0.0f;
    modFxRight.lfoOffset = 1.5707964f;
    setLatencySamples (engine.getLatencySamples());
    heldCount = 0;
    phrase.prepare (sampleRate);
}

juce::AudioProcessorEditor* MorvaneAudioProcessor::createEditor()
{
    return new ui::Editor (*this);
}

//==============================================================================
void MorvaneAudioProcessor::push (UiCommand::Type type, int note, float value) noexcept
{
    const auto write = commandWrite.load (std::memory_order_relaxed);
    const auto next = (write + 1) & (size_t) (ringSize - 1);
    if (next == commandRead.load (std::memory_order_acquire))
        return;

    commandRing[write] = { type, note, value };
    commandWrite.store (next, std::memory_order_release);
}

void MorvaneAudioProcessor::pushNoteOn (int note, float velocity)
{
    push (UiCommand::noteOn, std::clamp (note, 0, 127), std::clamp (velocity, 0.0f, 1.0f));
}

void MorvaneAudioProcessor::pushNoteOff (int note) { push (UiCommand::noteOff, std::clamp (note, 0, 127), 0.0f); }
void MorvaneAudioProcessor::pushPitchBend (float value) { push (UiCommand::pitchBend, 0, std::clamp (value, -1.0f, 1.0f)); }
void MorvaneAudioProcessor::pushModWheel (float value) { push (UiCommand::modWheel, 0, std::clamp (value, 0.0f, 1.0f)); }
void MorvaneAudioProcessor::pushAftertouch (float value) { push (UiCommand::aftertouch, 0, std::clamp (value, 0.0f, 1.0f)); }
void MorvaneAudioProcessor::pushPanic() { push (UiCommand::panic, 0, 0.0f); }

void MorvaneAudioProcessor::drainCommands() noexcept
{
    const auto write = commandWrite.load (std::memory_order_acquire);
    auto read = commandRead.load (std::memory_order_relaxed);

    while (read != write)
    {
        const auto command = commandRing[read];
        read = (read + 1) & (size_t) (ringSize - 1);
        commandRead.store (read, std::memory_order_release);

        switch (command.type)
        {
            case UiCommand::noteOn:     noteOn (command.note, command.value); break;
            case UiCommand::noteOff:    noteOff (command.note); break;
            case UiCommand::pitchBend:  engine.pitchBendSemitones = bendSemitonesFromNormalised (command.value); break;
            case UiCommand::modWheel:   engine.modWheel.store (std::clamp (command.value, 0.0f, 1.0f)); break;
            case UiCommand::aftertouch: engine.aftertouch.store (std::clamp (command.value, 0.0f, 1.0f)); break;
            case UiCommand::panic:      panic(); break;
            default: break;
        }
    }
}

//==============================================================================
void MorvaneAudioProcessor::removeHeld (int note) noexcept
{
    auto* end = std::remove_if (heldNotes.begin(), heldNotes.begin() + heldCount,
                                [note] (const HeldNote& h) { return h.note == note; });
    heldCount = (int) (end - heldNotes.begin());
}

void MorvaneAudioProcessor::noteOn (int note, float velocity) noexcept
{
    if (note < 0 || note > 127)
        return;

    const bool wasHeld = heldCount > 0;
    removeHeld (note);
    if (heldCount == maxHeldNotes)
        return;

    heldNotes[(size_t) heldCount++] = { note, velocity };

    const bool legato = legatoValue != nullptr && legatoValue->load (std::memory_order_relaxed) > 0.5f;
    engine.startNote (note, velocity, legato && wasHeld);
}

void MorvaneAudioProcessor::noteOff (int note) noexcept
{
    if (note < 0 || note > 127)
        return;

    removeHeld (note);

    if (heldCount > 0)
    {
        // Last-note priority: fall back to the newest held key, always as a legato move.
        const auto newest = heldNotes[(size_t) heldCount - 1];
        if (newest.note != engine.currentNote)
            engine.startNote (newest.note, newest.velocity, true);
        return;
    }

    engine.releaseAll();
}

void MorvaneAudioProcessor::panic() noexcept
{
    heldCount = 0;
    phrase.playRequested.store (false);
    phrase.stop ([] (int) {});
    engine.releaseAll();
}

void MorvaneAudioProcessor::handleController (int number, int value, int samplePosition) noexcept
{
    juce::ignoreUnused (samplePosition);
    if (number < 0 || number > 127)
        return;
    if (number == 1)
        engine.modWheel.store (std::clamp ((float) value * (1.0f / 127.0f), 0.0f, 1.0f));

    const int count = (int) parameterObjects.size();
    const int target = midiLearnTarget.load();
    if (target >= 0 && target < count)
    {
        ccToParameter[(size_t) number].store (target);
        midiLearnTarget.store (-1);
    }

    const int index = ccToParameter[(size_t) number].load();
    if (index < 0 || index >= count)
        return;
    auto* parameter = parameterObjects[(size_t) index];
    const float normalised = std::clamp ((float) value * 0.007874016f, 0.0f, 1.0f);
    const float sent = std::clamp (parameter->convertTo0to1 (parameter->convertFrom0to1 (normalised)), 0.0f, 1.0f);
    // The value the host adapter will work out from `sent` when the timer passes it on: the
    // parameter keeps convertFrom0to1 (sent) and the adapter converts its normalised form back.
    // Float rounding makes that differ from the first conversion for some skews and values, and
    // the adapter would then see a change and mark the patch.
    const float real = parameter->convertFrom0to1 (parameter->convertTo0to1 (parameter->convertFrom0to1 (sent)));
    // The engine reads this atomic directly; the host hears of it from the timer.
    parameterValues[(size_t) index]->store (real);
    if (pendingNormalised != nullptr && index < pendingCount)
    {
        pendingNormalised[(size_t) index].store (sent);
        pendingFlags[(size_t) index].store (1);
    }
}

void MorvaneAudioProcessor::handleMidi (const juce::MidiMessageMetadata& event) noexcept
{
    if (event.numBytes < 1)
        return;

    const auto* data = event.data;
    const int status = data[0] & 0xf0;
    const int d1 = event.numBytes > 1 ? (data[1] & 0x7f) : 0;
    const int d2 = event.numBytes > 2 ? (data[2] & 0x7f) : 0;

    if (status == 0x90 && event.numBytes >= 3 && d2 > 0)
        noteOn (d1, (float) d2 * (1.0f / 127.0f));
    else if ((status == 0x80 && event.numBytes >= 3) || (status == 0x90 && event.numBytes >= 3 && d2 == 0))
        noteOff (d1);
    else if (status == 0xb0 && event.numBytes >= 3 && (d1 == 120 || d1 == 123))
        panic();
    else if (status == 0xe0 && event.numBytes >= 3)
        engine.pitchBendSemitones = bendSemitonesFromRaw (d1 | (d2 << 7));
    else if (status == 0xb0 && event.numBytes >= 3)
        handleController (d1, d2, event.samplePosition);
    else if (status == 0xd0 && event.numBytes >= 2)
        engine.aftertouch.store (std::clamp ((float) d1 * (1.0f / 127.0f), 0.0f, 1.0f));
}

void MorvaneAudioProcessor::processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi)
{
    hostBypassed = false;
    renderBlock (buffer, midi);
    rampOutputGain (buffer, 1.0f);
}

void MorvaneAudioProcessor::processBlockBypassed (juce::AudioBuffer<float>& buffer, juce::MidiBuffer&)
{
    if (! hostBypassed)
    {
        hostBypassed = true;
        panic();
    }
    renderBlock (buffer, noMidi);
    rampOutputGain (buffer, 0.0f);
}

void MorvaneAudioProcessor::rampOutputGain (juce::AudioBuffer<float>& buffer, float target) noexcept
{
    if (outputGain == target)
    {
        if (target == 0.0f)
            buffer.clear();
        return;
    }
    const float step = 1.0f / (float) std::max (1.0, 0.01 * currentSampleRate);
    const int numSamples = buffer.getNumSamples();
    float gain = outputGain;
    for (int ch = 0; ch < buffer.getNumChannels(); ++ch)
    {
        gain = outputGain;
        auto* data = buffer.getWritePointer (ch);
        for (int i = 0; i < numSamples; ++i)
        {
            gain = target > gain ? std::min (target, gain + step) : std::max (target, gain - step);
            data[i] *= gain;
        }
    }
    outputGain = gain;
}

void MorvaneAudioProcessor::renderBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) noexcept
{
    juce::ScopedNoDenormals noDenormals;
    const auto startTicks = juce::Time::getHighResolutionTicks();
    const int numSamples = buffer.getNumSamples();

    if (! buffer.hasBeenCleared())
        buffer.clear();

    if (panicRequested.exchange (false))
        panic();

    drainCommands();

    float bpm = lfoSyncBpmValue != nullptr ? std::clamp (lfoSyncBpmValue->load(), 40.0f, 240.0f) : 120.0f;
    juce::Optional<juce::AudioPlayHead::PositionInfo> position;
    if (auto* head = getPlayHead())
        position = head->getPosition();
    if (position.hasValue())
        if (const auto hostTempo = position->getBpm())
            bpm = (float) *hostTempo;
    engine.hostBpm = bpm;

    auto phraseNoteOn = [this] (int note, float velocity) { noteOn (note, velocity); };
    auto phraseNoteOff = [this] (int note) { noteOff (note); };
    phrase.beginBlock (phraseMailbox, readTransport (position.hasValue() ? &*position : nullptr, bpm), phraseNoteOff);
    forEachMidiSegment (midi, numSamples,
                        [&] (int start, int count)
                        {
                            phrase.run (start, count, [this, &buffer] (int s, int n) { engine.render (buffer, s, n); },
                                        phraseNoteOn, phraseNoteOff);
                        },
                        [this] (const juce::MidiMessageMetadata& event, int) { handleMidi (event); });
    phrase.endBlock (numSamples);

    updateFxParameters();
    processFxBlock (buffer);

    updateReadouts (buffer, startTicks);
}

PhraseTransport MorvaneAudioProcessor::readTransport (juce::AudioPlayHead::PositionInfo* position, double bpm) const noexcept
{
    PhraseTransport transport;
    transport.bpm = bpm;
    if (position == nullptr)
        return transport;
    const auto ppq = position->getPpqPosition();
    transport.hostPlaying = position->getIsPlaying() && ppq.hasValue();
    if (! transport.hostPlaying)
        return transport;
    transport.ppq = *ppq;
    transport.ppqBarStart = position->getPpqPositionOfLastBarStart().orFallback (0.0);
    if (const auto signature = position->getTimeSignature())
        if (signature->numerator > 0 && signature->denominator > 0)
            transport.barSixteenths = 16.0 * signature->numerator / signature->denominator;
    return transport;
}

void MorvaneAudioProcessor::updateReadouts (const juce::AudioBuffer<float>& buffer, juce::int64 startTicks) noexcept
{
    const int numSamples = buffer.getNumSamples();

    float peak = 0.0f;
    if (! buffer.hasBeenCleared())
        for (int ch = 0; ch < buffer.getNumChannels(); ++ch)
        {
            const auto range = juce::FloatVectorOperations::findMinAndMax (buffer.getReadPointer (ch), numSamples);
            peak = std::max ({ peak, std::abs (range.getStart()), std::abs (range.getEnd()) });
        }

    const float newDb = peak > 0.0f ? std::max (20.0f * std::log10 (peak), -120.0f) : -120.0f;
    const float fall = currentSampleRate > 0.0 ? (float) (numSamples * 24.0 / currentSampleRate) : 1.0f;
    peakDb.store (std::max ({ peakDb.load() - fall, newDb, -120.0f }));

    if (currentSampleRate > 0.0 && numSamples >= 1)
    {
        const double elapsed = juce::Time::highResolutionTicksToSeconds (juce::Time::getHighResolutionTicks() - startTicks);
        const double blockSeconds = numSamples / currentSampleRate;
        const double percent = elapsed / blockSeconds * 100.0;
        const double alpha = std::clamp (blockSeconds, 0.005, 0.5);
        const float old = cpuPercent.load();
        cpuPercent.store (old + (float) ((percent - old) * alpha));
    }
}

void MorvaneAudioProcessor::timerCallback()
{
    flushLearntControllers();
}

void MorvaneAudioProcessor::flushLearntControllers()
{
    if (pendingNormalised == nullptr || pendingFlags == nullptr || pendingCount == 0)
        return;
    for (int i = 0; i < pendingCount; ++i)
        if (pendingFlags[(size_t) i].exchange (0) != 0 && parameterObjects[(size_t) i] != nullptr)
            parameterObjects[(size_t) i]->setValueNotifyingHost (std::clamp (pendingNormalised[(size_t) i].load(), 0.0f, 1.0f));
}
}

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new morvane::MorvaneAudioProcessor();
}
