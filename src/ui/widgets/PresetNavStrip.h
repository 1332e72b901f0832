#pragma once

#include "ui/primitives/canonical/IconButton.h"
#include "ui/primitives/canonical/LabeledChipButton.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>

namespace morvane::ui::widgets
{
// Previous and next, the preset's name with its place in the bank, the browser; a click on the
// name renames it in place, a right-click offers save, load and the folder.
class PresetNavStrip : public juce::Component,
                       public juce::SettableTooltipClient
{
public:
    class ArrowButton : public primitives::canonical::IconButton
    {
    public:
        explicit ArrowButton (bool forward);
        const bool forward;
    };

    class BrowseButton : public primitives::canonical::LabeledChipButton
    {
    public:
        BrowseButton();
    };

    PresetNavStrip();
    ~PresetNavStrip() override;

    std::function<void()> onPrevious, onNext, onBrowse;
    std::function<void (juce::String)> onRename;
    std::function<void()> onSave, onSaveAs, onLoad, onReveal;

    void setPosition (int index, int total);
    void setName (const juce::String& name);
    const juce::String& getNameText() const noexcept { return nameText; }
    juce::String counterText() const;
    juce::Rectangle<int> nameArea() const;
    juce::TextEditor* getRenameEditor() const noexcept { return renameEditor.get(); }
    juce::PopupMenu buildMenu();

    void mouseDown (const juce::MouseEvent&) override;
    void paint (juce::Graphics&) override;
    void resized() override;

private:
    void beginRename();
    void commitRename();
    void cancelRename();

    int positionIndex = 1, positionTotal = 1;
    juce::String nameText;
    ArrowButton previousButton { false }, nextButton { true };
    BrowseButton browseButton;
    std::unique_ptr<juce::TextEditor> renameEditor;
};
}
