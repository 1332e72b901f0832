#pragma once

#include "audio/BitCrusher.h"
#include "audio/EditHistory.h"
#include "audio/ModFx.h"
#include "audio/PhraseSequencer.h"
#include "audio/PlateReverb.h"
#include "audio/StereoDelay.h"
#include "audio/UiCommand.h"
#include "engine/VoiceEngine.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace morvane
{
class MorvaneAudioProcessor : public juce::AudioProcessor,
                              private juce::Timer
{
public:
    MorvaneAudioProcessor();
    ~MorvaneAudioProcessor() override;

    const juce::String getName() const override { return "Morvane"; }

    void prepareToPlay (double sampleRate, int maximumExpectedSamplesPerBlock) override;
    void releaseResources() override {}
    void processBlock (juce::AudioBuffer<float>&, juce::MidiBuffer&) override;
    void processBlock (juce::AudioBuffer<double>&, juce::MidiBuffer&) override {}
    // A host's bypass: the voice lets go and the output fades to silence over 10 ms while the
    // instrument runs on unheard, so that its tails have died away when the bypass ends and the
    // output fades back in.
    void processBlockBypassed (juce::AudioBuffer<float>&, juce::MidiBuffer&) override;
    void processBlockBypassed (juce::AudioBuffer<double>&, juce::MidiBuffer&) override {}
    bool supportsDoublePrecisionProcessing() const override { return false; }

    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return false; }
    bool supportsMPE() const override { return false; }
    bool isMidiEffect() const override { return false; }
    void reset() override {}

    juce::AudioProcessorEditor* createEditor() override;
    bool hasEditor() const override { return true; }

    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int) override {}
    const juce::String getProgramName (int) override { return {}; }
    void changeProgramName (int, const juce::String&) override {}

    void getStateInformation (juce::MemoryBlock& destData) override;
    void setStateInformation (const void* data, int sizeInBytes) override;

    bool isBusesLayoutSupported (const BusesLayout& layouts) const override;

    // Editor side: non-blocking pushes onto the command ring. A full ring drops the command.
    void pushNoteOn (int note, float velocity);
    void pushNoteOff (int note);
    void pushPitchBend (float value);
    void pushModWheel (float value);
    void pushAftertouch (float value);
    void pushPanic();

    // The step phrase, played on the audio thread. Its pattern, swing and edit mode live here, so
    // that they outlast the editor and go into the state; presets don't carry them.
    void setPhrase (const PhrasePattern& pattern);
    PhrasePattern getPhrase() const;
    void setPhraseEditMode (int mode);
    int getPhraseEditMode() const;
    void setPhrasePlaying (bool on) noexcept { phrase.playRequested.store (on); }
    bool isPhrasePlaying() const noexcept { return phrase.playRequested.load(); }
    int getPhrasePlayhead() const noexcept { return phrase.playhead.load(); }
    // Counts the phrases that came from outside the editor (a restored state), so it can reload.
    int getPhraseRevision() const noexcept { return phraseRevision.load(); }

    // Preset documents and identity.
    void applyPresetXml (const juce::XmlElement& xml);
    std::unique_ptr<juce::XmlElement> createStateXml();
    void migrateParameterTree (juce::ValueTree& tree) const;
    void loadDefaultPatch();
    juce::String getPresetName() const;
    juce::String getPresetSource() const;
    void setPresetName (const juce::String& name);
    void setPresetIdentity (const juce::String& name, const juce::String& source);
    bool isPresetDirty() const noexcept { return presetDirty.load(); }
    int getActiveView() const noexcept { return activeView.load(); }
    void setActiveView (int view) noexcept { activeView.store (view); }

    // MIDI learn, message side.
    int findParameterIndex (const juce::String& id) const;
    void startMidiLearn (const juce::String& id);
    void cancelMidiLearn();
    bool isMidiLearnTarget (const juce::String& id) const;
    int getControllerBinding (int controller) const noexcept;
    // Tells the host of values set by learnt controllers; the 30 Hz timer's only duty.
    void flushLearntControllers();

    float getPeakDb() const noexcept { return peakDb.load(); }
    float getCpuPercent() const noexcept { return cpuPercent.load(); }
    juce::AudioProcessorValueTreeState& getParameterTree() noexcept { return parameters; }
    juce::UndoManager& getUndoManager() noexcept { return undoManager; }
    EditHistory& getEditHistory() noexcept { return editHistory; }

    const VoiceEngine& getEngine() const noexcept { return engine; }
    int getHeldCount() const noexcept { return heldCount; }

    static constexpr int ringSize = 256;
    static constexpr int maxHeldNotes = 128;

private:
    struct DirtyTracker : juce::AudioProcessorValueTreeState::Listener
    {
        explicit DirtyTracker (MorvaneAudioProcessor& p) : owner (p) {}
        void parameterChanged (const juce::String&, float) override;
        MorvaneAudioProcessor& owner;
    };

    void replaceTree (juce::ValueTree tree);
    void push (UiCommand::Type type, int note, float value) noexcept;
    void drainCommands() noexcept;
    void handleMidi (const juce::MidiMessageMetadata& event) noexcept;
    void handleController (int number, int value, int samplePosition) noexcept;
    void noteOn (int note, float velocity) noexcept;
    void noteOff (int note) noexcept;
    void panic() noexcept;
    PhraseTransport readTransport (juce::AudioPlayHead::PositionInfo* position, double bpm) const noexcept;
    void removeHeld (int note) noexcept;
    void updateReadouts (const juce::AudioBuffer<float>& buffer, juce::int64 startTicks) noexcept;
    void renderBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) noexcept;
    void rampOutputGain (juce::AudioBuffer<float>& buffer, float target) noexcept;
    void updateFxParameters() noexcept;
    void processFxBlock (juce::AudioBuffer<float>& buffer) noexcept;
    void timerCallback() override;

    juce::UndoManager undoManager { 30000, 30 };
    juce::AudioProcessorValueTreeState parameters;
    EditHistory editHistory { parameters, undoManager };
    VoiceEngine engine;

    StereoDelay delay;
    PlateReverb reverb;
    BitCrusher crusher;
    ModFx modFxLeft, modFxRight;
    std::array<std::atomic<float>*, 24> fxValues {};

    PhraseSequencer phrase;
    PhraseMailbox phraseMailbox;
    // Serialises the phrase's writers (the editor, and a host restoring state on its own thread);
    // never taken on the audio thread.
    juce::CriticalSection phraseLock;
    PhrasePattern phraseEdit;
    int phraseEditMode = 0;
    std::atomic<int> phraseRevision { 0 };

    std::array<HeldNote, maxHeldNotes> heldNotes {};
    int heldCount = 0;

    std::vector<juce::RangedAudioParameter*> parameterObjects;
    std::vector<std::atomic<float>*> parameterValues;
    std::atomic<float>* lfoSyncBpmValue = nullptr;
    std::atomic<float>* legatoValue = nullptr;

    std::array<std::atomic<int>, 128> ccToParameter;
    std::atomic<int> midiLearnTarget { -1 };
    std::unique_ptr<std::atomic<float>[]> pendingNormalised;
    std::unique_ptr<std::atomic<std::uint8_t>[]> pendingFlags;
    int pendingCount = 0;

    std::array<UiCommand, ringSize> commandRing {};
    std::atomic<size_t> commandWrite { 0 };
    std::atomic<size_t> commandRead { 0 };

    std::atomic<float> cpuPercent { 0.0f };
    std::atomic<float> peakDb { -120.0f };

    DirtyTracker dirtyTracker { *this };
    juce::CriticalSection presetLock;
    juce::String presetName, presetSource;
    // Atomics: a host may automate or ask for the state on a thread of its own, and parameter
    // listeners run on the thread that made the change.
    std::atomic<bool> presetDirty { false };
    std::atomic<int> activeView { 0 };
    std::atomic<bool> loadingPreset { false };
    std::atomic<bool> panicRequested { false };

    double currentSampleRate = 44100.0;
    bool hostBypassed = false;
    float outputGain = 1.0f;
    juce::MidiBuffer noMidi;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (MorvaneAudioProcessor)
};
}
