#include "audio/PluginProcessor.h"

#include "audio/PhraseText.h"
#include "audio/SafeXml.h"
#include "presets/Catalogue.h"

#include <cmath>

namespace morvane
{
namespace
{
    juce::ValueTree findParam (const juce::ValueTree& tree, const juce::String& id)
    {
        for (const auto& child : tree)
            if (child.hasType ("PARAM") && child.getProperty ("id").toString() == id)
                return child;
        return {};
    }

    // An old two-way switch becomes its newer continuous parameter, unless the document has both.
    void migrateSwitch (juce::ValueTree& tree, const char* oldId, const char* newId, bool (*isOn) (float), float onValue, float offValue)
    {
        if (findParam (tree, newId).isValid())
            return;
        const auto old = findParam (tree, oldId);
        if (! old.isValid())
            return;
        const float v = (float) old.getProperty ("value").toString().getFloatValue();
        juce::ValueTree added ("PARAM");
        added.setProperty ("id", newId, nullptr);
        added.setProperty ("value", isOn (v) ? onValue : offValue, nullptr);
        tree.appendChild (added, nullptr);
    }

    // Reads a value attribute as a float, recognising the spellings of NaN and infinity.
    float readValue (const juce::var& v)
    {
        const auto text = v.toString().trim().toLowerCase();
        if (text.contains ("nan"))
            return std::numeric_limits<float>::quiet_NaN();
        if (text.contains ("inf"))
            return text.startsWithChar ('-') ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
        const double d = text.getDoubleValue();
        return std::abs (d) > (double) std::numeric_limits<float>::max() ? (d < 0 ? -std::numeric_limits<float>::infinity()
                                                                                  : std::numeric_limits<float>::infinity())
                                                                        : (float) d;
    }
}

void MorvaneAudioProcessor::DirtyTracker::parameterChanged (const juce::String&, float)
{
    if (! owner.loadingPreset)
        owner.presetDirty = true;
}

void MorvaneAudioProcessor::migrateParameterTree (juce::ValueTree& tree) const
{
    migrateSwitch (tree, "stereoMode", "stereoWidth", [] (float v) { return v < 0.5f; }, 1.0f, 0.0f);
    migrateSwitch (tree, "driveEnabled", "driveMix", [] (float v) { return v >= 0.5f; }, 1.0f, 0.0f);
    // The drive switch came later than any document without it, and those were made with the drive on.
    if (! findParam (tree, "driveOn").isValid())
    {
        juce::ValueTree added ("PARAM");
        added.setProperty ("id", "driveOn", nullptr);
        added.setProperty ("value", 1.0f, nullptr);
        tree.appendChild (added, nullptr);
    }

    for (auto child : tree)
    {
        if (! child.hasProperty ("id") || ! child.hasProperty ("value"))
            continue;
        const float v = readValue (child.getProperty ("value"));
        if (std::isfinite (v))
            continue;
        const int index = findParameterIndex (child.getProperty ("id").toString());
        if (index < 0)
            continue;
        auto* parameter = parameterObjects[(size_t) index];
        child.setProperty ("value", parameter->convertFrom0to1 (std::clamp (parameter->getDefaultValue(), 0.0f, 1.0f)), nullptr);
    }
}

void MorvaneAudioProcessor::replaceTree (juce::ValueTree tree)
{
    migrateParameterTree (tree);

    // The tree adapter sends a parameter that the document does not name to its default; a
    // document is a partial patch, so those parameters are written in with the values they have.
    std::vector<bool> named (parameterObjects.size(), false);
    for (const auto& child : tree)
        if (child.hasType ("PARAM"))
            if (const int i = findParameterIndex (child.getProperty ("id").toString()); i >= 0)
                named[(size_t) i] = true;
    for (size_t i = 0; i < parameterObjects.size(); ++i)
        if (! named[i])
        {
            juce::ValueTree param ("PARAM");
            param.setProperty ("id", parameterObjects[i]->getParameterID(), nullptr);
            param.setProperty ("value", parameterValues[i]->load(), nullptr);
            tree.appendChild (param, nullptr);
        }

    loadingPreset = true;
    parameters.replaceState (tree);
    loadingPreset = false;
}

void MorvaneAudioProcessor::applyPresetXml (const juce::XmlElement& xml)
{
    auto tree = juce::ValueTree::fromXml (xml);
    if (! tree.isValid() || ! tree.hasType (parameters.state.getType()))
        return;
    replaceTree (tree);
    presetDirty = false;
    undoManager.clearUndoHistory();
}

std::unique_ptr<juce::XmlElement> MorvaneAudioProcessor::createStateXml()
{
    auto copy = parameters.copyState();
    if (! copy.isValid())
        return nullptr;
    // A restored state leaves its session children in the tree; a preset is the sound alone.
    for (const char* type : { "MIDILEARN", "UISTATE" })
        for (auto child = copy.getChildWithName (type); child.isValid(); child = copy.getChildWithName (type))
            copy.removeChild (child, nullptr);
    return copy.createXml();
}

void MorvaneAudioProcessor::setPhrase (const PhrasePattern& pattern)
{
    auto clean = pattern;
    clean.stepCount = std::clamp (clean.stepCount, 1, PhrasePattern::maxSteps);
    clean.swing = std::isfinite (clean.swing) ? std::clamp (clean.swing, PhrasePattern::minSwing, PhrasePattern::maxSwing)
                                              : PhrasePattern::minSwing;
    clean.velocityScale = std::isfinite (clean.velocityScale) ? std::clamp (clean.velocityScale, 0.0f, 1.0f) : 0.85f;
    for (auto& step : clean.steps)
        if (step.note < 0)
            step = {};
    const juce::ScopedLock lock (phraseLock);
    phraseEdit = clean;
    phraseMailbox.publish (clean);
}

PhrasePattern MorvaneAudioProcessor::getPhrase() const
{
    const juce::ScopedLock lock (phraseLock);
    return phraseEdit;
}

void MorvaneAudioProcessor::setPhraseEditMode (int mode)
{
    const juce::ScopedLock lock (phraseLock);
    phraseEditMode = std::clamp (mode, 0, 3);
}

int MorvaneAudioProcessor::getPhraseEditMode() const
{
    const juce::ScopedLock lock (phraseLock);
    return phraseEditMode;
}

void MorvaneAudioProcessor::loadDefaultPatch()
{
    const auto document = presets::loadFactoryDocument ("init_clean.xml");
    if (document == nullptr)
        return;
    applyPresetXml (*document);

    juce::String name ("init clean");
    const auto catalogue = presets::loadCatalogue();
    if (const auto* entry = presets::findEntryByXml (catalogue, "init_clean.xml"))
        name = entry->displayName;
    {
        const juce::ScopedLock lock (presetLock);
        presetName = name;
        presetSource = "factory:init_clean.xml";
    }
    presetDirty = false;
}

juce::String MorvaneAudioProcessor::getPresetName() const
{
    const juce::ScopedLock lock (presetLock);
    return presetName;
}

juce::String MorvaneAudioProcessor::getPresetSource() const
{
    const juce::ScopedLock lock (presetLock);
    return presetSource;
}

void MorvaneAudioProcessor::setPresetName (const juce::String& name)
{
    const juce::ScopedLock lock (presetLock);
    presetName = name;
}

void MorvaneAudioProcessor::setPresetIdentity (const juce::String& name, const juce::String& source)
{
    {
        const juce::ScopedLock lock (presetLock);
        presetName = name;
        presetSource = source;
    }
    presetDirty = false;
}

//==============================================================================
void MorvaneAudioProcessor::getStateInformation (juce::MemoryBlock& destData)
{
    auto copy = parameters.copyState();
    for (const char* type : { "MIDILEARN", "UISTATE" })
        for (auto child = copy.getChildWithName (type); child.isValid(); child = copy.getChildWithName (type))
            copy.removeChild (child, nullptr);

    juce::ValueTree learn ("MIDILEARN");
    for (int cc = 0; cc < 128; ++cc)
    {
        const int i = ccToParameter[(size_t) cc].load();
        if (i >= 0 && i < (int) parameterObjects.size() && parameterObjects[(size_t) i] != nullptr)
        {
            juce::ValueTree map ("MAP");
            map.setProperty ("cc", cc, nullptr);
            map.setProperty ("param", parameterObjects[(size_t) i]->getParameterID(), nullptr);
            learn.appendChild (map, nullptr);
        }
    }
    if (learn.getNumChildren() > 0)
        copy.appendChild (learn, nullptr);

    juce::ValueTree ui ("UISTATE");
    {
        const juce::ScopedLock lock (presetLock);
        if (presetName.isNotEmpty())
            ui.setProperty ("presetName", presetName, nullptr);
        if (presetSource.isNotEmpty())
            ui.setProperty ("presetSource", presetSource, nullptr);
    }
    ui.setProperty ("presetDirty", presetDirty.load() ? 1 : 0, nullptr);
    ui.setProperty ("activeView", activeView.load(), nullptr);
    {
        const juce::ScopedLock lock (phraseLock);
        if (! phraseEdit.isEmpty())
            ui.setProperty ("phrase", phraseToText (phraseEdit), nullptr);
        ui.setProperty ("phraseSwing", phraseEdit.swing, nullptr);
        ui.setProperty ("phraseEditMode", phraseEditMode, nullptr);
    }
    copy.appendChild (ui, nullptr);

    if (auto xml = copy.createXml())
        copyXmlToBinary (*xml, destData);
}

void MorvaneAudioProcessor::setStateInformation (const void* data, int sizeInBytes)
{
    if (data == nullptr || sizeInBytes <= 0)
        return;
    const auto xml = xmlFromStateBlob (data, sizeInBytes);
    if (xml == nullptr)
        return;
    auto tree = juce::ValueTree::fromXml (*xml);
    if (! tree.isValid() || ! tree.hasType (parameters.state.getType()))
        return;

    // The tree's replaceState has cleared the undo history under the tree's own lock; clearing it
    // again here, on a host's thread, would race with the message thread's writes to the history.
    replaceTree (tree);

    for (auto& entry : ccToParameter)
        entry.store (-1);
    const auto learn = tree.getChildWithName ("MIDILEARN");
    for (const auto& map : learn)
    {
        if (! map.hasType ("MAP"))
            continue;
        const int cc = map.hasProperty ("cc") ? (int) map.getProperty ("cc") : -1;
        const int index = findParameterIndex (map.getProperty ("param").toString());
        if (cc >= 0 && cc <= 127 && index >= 0)
            ccToParameter[(size_t) cc].store (index);
    }

    const auto ui = tree.getChildWithName ("UISTATE");
    {
        const juce::ScopedLock lock (presetLock);
        presetName = ui.getProperty ("presetName").toString();
        presetSource = ui.getProperty ("presetSource").toString();
    }
    presetDirty = ui.isValid() && (bool) ui.getProperty ("presetDirty", false);
    activeView = ui.isValid() ? (int) ui.getProperty ("activeView", 0) : 0;

    // A state without a phrase, or with one that doesn't read, brings an empty phrase.
    PhrasePattern restored;
    if (ui.hasProperty ("phrase"))
        if (phraseFromText (ui.getProperty ("phrase").toString(), restored).isNotEmpty())
            restored = {};
    restored.swing = (float) readValue (ui.getProperty ("phraseSwing", PhrasePattern::minSwing));
    setPhrase (restored);
    setPhraseEditMode (ui.isValid() ? (int) ui.getProperty ("phraseEditMode", 0) : 0);
    ++phraseRevision;

    panicRequested.store (true);
}

//==============================================================================
int MorvaneAudioProcessor::findParameterIndex (const juce::String& id) const
{
    for (size_t i = 0; i < parameterObjects.size(); ++i)
        if (parameterObjects[i] != nullptr && parameterObjects[i]->getParameterID() == id)
            return (int) i;
    return -1;
}

void MorvaneAudioProcessor::startMidiLearn (const juce::String& id)
{
    midiLearnTarget.store (findParameterIndex (id));
}

void MorvaneAudioProcessor::cancelMidiLearn()
{
    midiLearnTarget.store (-1);
}

bool MorvaneAudioProcessor::isMidiLearnTarget (const juce::String& id) const
{
    const int index = findParameterIndex (id);
    return index >= 0 && index == midiLearnTarget.load();
}

int MorvaneAudioProcessor::getControllerBinding (int controller) const noexcept
{
    return controller >= 0 && controller < 128 ? ccToParameter[(size_t) controller].load() : -1;
}
}
