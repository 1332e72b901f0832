#include "ui/Editor.h"

#include "audio/PluginProcessor.h"
#include "presets/PresetLibrary.h"
#include "ui/PatchTools.h"

namespace morvane::ui
{
void Editor::refreshPresetDisplay()
{
    header.setPresetPosition (currentPresetIndex, juce::jmax (1, presets::totalEntries (catalogue)));
    header.setPresetName (presets::presetDisplayName (processor, catalogue, currentPresetIndex));
}

void Editor::loadFactoryPreset (int position)
{
    currentPresetIndex = presets::loadFactoryPosition (processor, catalogue, position, currentPresetIndex);
    lastDirty = processor.isPresetDirty();
    refreshPresetDisplay();
}

void Editor::presetChosenInBrowser (const juce::String& xml)
{
    if (const auto position = presets::positionOfXml (catalogue, xml); position > 0)
        currentPresetIndex = position;
    const auto* entry = presets::findEntryByXml (catalogue, xml);
    processor.setPresetIdentity (entry != nullptr ? entry->displayName : juce::String(), "factory:" + xml);
    refreshPresetDisplay();
}

void Editor::saveCurrentPreset (bool askForName)
{
    const auto folder = presets::userPresetFolder();
    folder.createDirectory();
    auto proposed = processor.getPresetName();
    if (proposed.isEmpty())
        proposed = "untitled";
    if (! askForName)
    {
        presets::writeUserPreset (processor, proposed, folder);
        refreshPresetDisplay();
        return;
    }

    auto* window = new juce::AlertWindow ("Save preset", "Name your preset", juce::MessageBoxIconType::NoIcon, this);
    window->addTextEditor ("name", proposed, "Preset name:");
    window->addButton ("Save", 1, juce::KeyPress (juce::KeyPress::returnKey));
    window->addButton ("Cancel", 0, juce::KeyPress (juce::KeyPress::escapeKey));
    juce::Component::SafePointer<Editor> safe (this);
    window->enterModalState (true, juce::ModalCallbackFunction::create ([safe, window, folder] (int result)
    {
        const auto name = window->getTextEditorContents ("name").trim();
        if (result != 1 || name.isEmpty() || safe == nullptr)
            return;
        presets::writeUserPreset (safe->processor, name, folder);
        safe->refreshPresetDisplay();
    }), true);
}

void Editor::loadPresetFromFile()
{
    const auto folder = presets::userPresetFolder();
    folder.createDirectory();
    chooser = std::make_shared<juce::FileChooser> ("Load Morvane preset", folder, "*.xml", true);
    juce::Component::SafePointer<Editor> safe (this);
    auto keep = chooser;
    chooser->launchAsync (juce::FileBrowserComponent::openMode | juce::FileBrowserComponent::canSelectFiles,
                          [safe, keep] (const juce::FileChooser& fc)
    {
        const auto file = fc.getResult();
        if (safe == nullptr || file == juce::File())
            return;
        if (presets::loadPresetFile (safe->processor, file))
        {
            safe->lastDirty = safe->processor.isPresetDirty();
            safe->refreshPresetDisplay();
        }
    });
}

void Editor::revealUserPresetFolder()
{
    const auto folder = presets::userPresetFolder();
    folder.createDirectory();
    folder.startAsProcess();
}

void Editor::captureSlot (int slot)
{
    (slot == 0 ? compareA : compareB) = patch::capture (processor.getParameterTree());
}

void Editor::recallSlot (int slot)
{
    const auto& tree = slot == 0 ? compareA : compareB;
    if (! tree.isValid())
        return;
    patch::recall (processor.getParameterTree(), tree);
    refreshPresetDisplay();
}

void Editor::undoEdit()
{
    processor.getEditHistory().undo();
    refreshPresetDisplay();
}

void Editor::redoEdit()
{
    processor.getEditHistory().redo();
    refreshPresetDisplay();
}

void Editor::morphSlots (float t)
{
    const EditHistory::Step step (processor.getParameterTree());
    patch::morph (processor.getParameterTree(), compareA, compareB, t);
    refreshPresetDisplay();
}

void Editor::randomisePatch (const juce::String& scope)
{
    const EditHistory::Step step (processor.getParameterTree());
    patch::randomise (processor.getParameterTree(), scope, randomEngine);
    refreshPresetDisplay();
}

void Editor::applyMacro (int index, float value, widgets::StatusFooter::MacroGesture gesture)
{
    patch::applyMacro (processor.getParameterTree(), index, value, (patch::Gesture) (int) gesture);
}

juce::PopupMenu Editor::buildWorkflowMenu()
{
    auto& undo = processor.getUndoManager();
    juce::PopupMenu menu;
    menu.addItem ("Undo", undo.canUndo(), false, [this] { undoEdit(); });
    menu.addItem ("Redo", undo.canRedo(), false, [this] { redoEdit(); });
    menu.addSeparator();
    menu.addItem ("Capture A", true, false, [this] { captureSlot (0); });
    menu.addItem ("Capture B", true, false, [this] { captureSlot (1); });
    menu.addItem ("Recall A", compareA.isValid(), false, [this] { recallSlot (0); });
    menu.addItem ("Recall B", compareB.isValid(), false, [this] { recallSlot (1); });

    const bool both = compareA.isValid() && compareB.isValid();
    juce::PopupMenu morph;
    for (auto [text, t] : { std::pair<const char*, float> { "25%", 0.25f }, { "50%", 0.5f }, { "75%", 0.75f } })
        morph.addItem (text, both, false, [this, t = t] { morphSlots (t); });
    menu.addSubMenu ("Morph A to B", morph);

    juce::PopupMenu randomise;
    for (auto [text, scope] : { std::pair<const char*, const char*> { "Oscillators", "osc" }, { "Filter", "filter" },
                                { "Drive", "drive" }, { "Movement", "movement" }, { "Full patch", "full" } })
        randomise.addItem (text, true, false, [this, scope = juce::String (scope)] { randomisePatch (scope); });
    menu.addSubMenu ("Randomise", randomise);

    menu.addSeparator();
    menu.addItem ("Open matrix", true, false, [this] { setActiveView (matrixView); });
    menu.addItem ("Open browser", true, false, [this] { setActiveView (browserView); });
    return menu;
}

void Editor::showWorkflowMenu()
{
    buildWorkflowMenu().showMenuAsync (juce::PopupMenu::Options());
}
}
