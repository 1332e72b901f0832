#pragma once

#include "ValueEntry.h"
#include "WidgetStyle.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>
#include <optional>

namespace ostrel::widgets
{

// Reads a drag description of a modulation source: an integer as is, a source id by name;
// 1..7 are valid, 0 means none.
int dragSourceIndex(const juce::var& description);

// The rotary control of every card. It knows no patch: modulation, MIDI learn and the
// matrix reach it only through the callbacks its host installs.
class Knob : public juce::Slider, public juce::DragAndDropTarget, private juce::Timer
{
public:
    using Formatter = std::function<juce::String(double)>;
    using Parser = std::function<std::optional<double>(const juce::String&)>;

    // Context-menu item ids.
    enum MenuId
    {
        menuMidiLearn = 2,
        menuReset = 3,
        menuCopy = 4,
        menuPaste = 5,
        menuReveal = 7,
        menuRemoveModulation = 8,
        menuTypeValue = 9,
        menuFirstSource = 101
    };

    explicit Knob(KnobSize sizeClass = KnobSize::Small, bool bipolarArc = false, bool modulated = false);
    ~Knob() override;

    void setLabel(const juce::String& text);
    const juce::String& getLabel() const noexcept { return label; }
    void setMidiLearnPending(bool pending);
    void setModulationEnabled(bool enabled);
    void setModulated(bool isModulated);
    void setLivePosition(double position);
    void setDepthCallbacks(std::function<float()> getter, std::function<void()> onStart,
                           std::function<void(float)> onChanged, std::function<void()> onEnd);
    void setModulationSources(juce::StringArray names, std::function<void(int)> onChosen);
    void setModulationStatus(std::function<juce::String()> statusProvider, std::function<void()> onRemove);
    void setSourceDropHandler(std::function<bool(int)> handler);
    void setMidiLearnHandler(std::function<void()> handler);
    void setRevealHandler(std::function<void()> handler);
    void setExtraMenuBuilder(std::function<void(juce::PopupMenu&)> builder);
    void setValueVisible(bool visible);
    void setValueFormatter(Formatter formatter);
    // Reads typed text in the knob's units; the default takes a plain number.
    void setValueParser(Parser parser);
    void setCentreDetent(bool on, double width);
    void attachToParameter(juce::AudioProcessorValueTreeState& state, const juce::String& parameterId);
    void flashHalo();

    KnobSize getSizeClass() const noexcept { return sizeClass; }
    bool isBipolarArc() const noexcept { return bipolarArc; }
    bool isModulated() const noexcept { return modulated; }
    bool isModulationEnabled() const noexcept { return modulationEnabled; }
    bool isMidiLearnPending() const noexcept { return midiLearnPending; }
    bool isSourceDragOver() const noexcept { return sourceDragOver; }
    bool isDraggingDepth() const noexcept { return draggingDepth; }
    bool isFlashActive() const noexcept { return flashActive; }
    bool isAnimating() const { return isTimerRunning(); }
    double getLivePosition() const noexcept { return livePosition; }
    juce::String formattedValue() const;

    // Menu, built afresh at each opening; handleMenuResult acts on a chosen id.
    juce::PopupMenu buildContextMenu() const;
    void handleMenuResult(int itemId);
    void showContextMenu();

    // Typed value entry: reads what the formatter prints (units, names), clamps a value outside
    // the range, refuses anything else and then changes nothing.
    std::optional<double> parseValue(const juce::String& text);
    bool applyTypedValue(const juce::String& text);
    void showValueEntry();
    bool isEditingValue() const noexcept { return valueEditor.isEditing(); }

    struct Geometry
    {
        float size, cx, cy, bodyD, arcD, haloD;
    };
    Geometry geometry() const;

    // Mouse.
    void mouseDown(const juce::MouseEvent&) override;
    void mouseDrag(const juce::MouseEvent&) override;
    void mouseUp(const juce::MouseEvent&) override;
    void mouseDoubleClick(const juce::MouseEvent&) override;
    void mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails&) override;
    bool keyPressed(const juce::KeyPress&) override;
    void paint(juce::Graphics&) override;
    void resized() override;
    double snapValue(double attemptedValue, DragMode dragMode) override;
    juce::String getTextFromValue(double value) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;
    double getValueFromText(const juce::String& text) override;

    // Drop target for modulation sources.
    bool isInterestedInDragSource(const SourceDetails&) override;
    void itemDragEnter(const SourceDetails&) override;
    void itemDragExit(const SourceDetails&) override;
    void itemDropped(const SourceDetails&) override;

private:
    void timerCallback() override;
    void setValueFromUser(double newValue);
    void resetToDefault();
    void paintModulation(juce::Graphics&, const Geometry&, float haloR);
    juce::Rectangle<int> valueRowBounds() const;

    KnobSize sizeClass;
    bool bipolarArc;
    bool modulated;
    bool midiLearnPending = false;
    bool fineDrag = false;
    bool valueVisible = true;
    bool detentEnabled = false;
    bool modulationEnabled = false;
    bool sourceDragOver = false;
    bool draggingDepth = false;
    bool flashActive = false;
    juce::uint32 flashEndMs = 0;
    float pulsePhase = 0.0f;
    float depthAtDragStart = 0.0f;
    int dragStartY = 0;
    double livePosition = 0.0;
    double detentWidth = 0.5;
    juce::String label;
    Formatter valueFormatter;
    Parser valueParser;
    std::function<bool(int)> onSourceDropped;
    std::function<void(juce::PopupMenu&)> extraMenuBuilder;
    juce::StringArray sourceNames;
    std::function<void(int)> onSourceChosen;
    std::function<juce::String()> modulationStatus;
    std::function<void()> onRemoveModulation, onDepthDragStart, onDepthDragEnd, onMidiLearn, onRevealInMatrix;
    std::function<float()> depthGetter;
    std::function<void(float)> onDepthChanged;
    std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment> attachment;

    // Value drag of our own, so that Shift can change the rate mid-drag without a jump.
    bool valueDragging = false;
    juce::Point<float> lastDragPosition;
    double dragProportion = 0.0;
    std::optional<juce::Slider::ScopedDragNotification> dragNotification;
    ValueEntryEditor valueEditor;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(Knob)
};

} // namespace ostrel::widgets
