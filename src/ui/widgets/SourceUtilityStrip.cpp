#include "ui/widgets/SourceUtilityStrip.h"

#include "audio/PluginProcessor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/ValueFormat.h"

namespace morvane::ui::widgets
{
namespace
{
const juce::String minusInfinityDb = juce::String (juce::CharPointer_UTF8 ("\xe2\x88\x92\xe2\x88\x9e dB"));
const char* const listenedIds[] = { "subMode", "subWave", "subLevel", "noiseLevel" };

juce::String levelText (double v, double floor)
{
    return v <= floor ? minusInfinityDb : formatSigned (v, 1, false, true, false) + " dB";
}

int indexOf (juce::RangedAudioParameter* p)
{
    return p != nullptr ? juce::roundToInt (p->convertFrom0to1 (p->getValue())) : 0;
}

void setIndex (juce::RangedAudioParameter* p, int index)
{
    if (p == nullptr || indexOf (p) == index)
        return;
    p->beginChangeGesture();
    p->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, p->convertTo0to1 ((float) index)));
    p->endChangeGesture();
}

juce::AudioParameterChoice* choiceParameter (juce::AudioProcessorValueTreeState& state, const char* id)
{
    return dynamic_cast<juce::AudioParameterChoice*> (state.getParameter (id));
}
}

// Two cells on a float parameter: the cells stand on a choice parameter of their own that no
// host hears, and a click writes the float's two ends.
class FloatEndpointSegmentedControl : public juce::Component,
                                      private juce::AudioProcessorParameter::Listener,
                                      private juce::AsyncUpdater
{
public:
    FloatEndpointSegmentedControl (juce::RangedAudioParameter& p, const juce::StringArray& labels, const juce::StringArray& tips)
        : parameter (p), displayParameter ("sourceUtilityNoiseRouteDisplay", "noise route display", labels, 0),
          control (displayParameter, labels)
    {
        control.setGapStep (1);
        for (int i = 0; i < control.getNumCells(); ++i)
        {
            auto* cell = control.getCell (i);
            cell->setTooltip (tips[i]);
            // Replaces the control's own write, which would go to the display parameter; the cell
            // that the radio group switches off also reports a click, and writes nothing.
            cell->onClick = [this, i, cell] { if (cell->getToggleState()) write (i); };
        }
        addAndMakeVisible (control);
        setSize (control.getTotalWidth(), 44);
        parameter.addListener (this);
        synchronise();
    }

    ~FloatEndpointSegmentedControl() override
    {
        parameter.removeListener (this);
        cancelPendingUpdate();
    }

    void resized() override { control.setBounds (getLocalBounds()); }

    ostrel::widgets::SegmentedControl& segments() noexcept { return control; }

    void synchronise()
    {
        const int index = parameter.convertFrom0to1 (parameter.getValue()) >= 0.5f ? 1 : 0;
        for (int i = 0; i < control.getNumCells(); ++i)
            control.getCell (i)->setToggleState (i == index, juce::dontSendNotification);
        if (displayParameter.getIndex() != index)
            displayParameter.setValueNotifyingHost (displayParameter.convertTo0to1 ((float) index));
    }

private:
    void write (int index)
    {
        parameter.beginChangeGesture();
        parameter.setValueNotifyingHost (parameter.convertTo0to1 (index == 1 ? 1.0f : 0.0f));
        parameter.endChangeGesture();
        synchronise();
    }

    // Any thread, the audio thread too: a posted update that needs no allocation.
    void parameterValueChanged (int, float) override { triggerAsyncUpdate(); }
    void handleAsyncUpdate() override { synchronise(); }
    void parameterGestureChanged (int, bool) override {}

    juce::RangedAudioParameter& parameter;
    juce::AudioParameterChoice displayParameter;
    ostrel::widgets::SegmentedControl control;
};

SourceUtilityStrip::SourceUtilityStrip (MorvaneAudioProcessor& processor)
    : state (processor.getParameterTree()),
      subOctaveChoice (state, "subOctave", "Sub octave"),
      subSemitoneChip (state, "subSemitone", "SEMI"),
      subFineChip (state, "subFine", "FINE")
{
    setName ("SourceUtilityStrip");
    addAndMakeVisible (subFrame);
    addAndMakeVisible (noiseFrame);
    addAndMakeVisible (subTitle);
    addAndMakeVisible (noiseTitle);

    // Every wave of the list has an item, the resonant pulse last.
    static const char* const waveNames[] = { "SINE", "SAW", "SQR", "PLS", "SPLS", "HALF", "RSAW", "RTRI", "RTRP", "PWM", "RPLS" };
    for (int i = 0; i < 11; ++i)
        waveChoice.addItem (waveNames[i], i + 1);
    waveChoice.setJustification (33);
    waveChoice.setCompact (true);
    waveChoice.getComboBox().onChange = [this] { waveChosen(); };
    waveField.setCompact (true);
    waveField.setContent (&waveChoice);

    auto makeSegments = [] (juce::AudioParameterChoice* p, const juce::StringArray& labels, const juce::StringArray& tips)
    {
        std::unique_ptr<ostrel::widgets::SegmentedControl> control;
        if (p == nullptr || p->choices.size() != labels.size())
            return control;
        control = std::make_unique<ostrel::widgets::SegmentedControl> (*p, labels);
        control->setGapStep (1);
        for (int i = 0; i < control->getNumCells(); ++i)
            control->getCell (i)->setTooltip (tips[i]);
        return control;
    };
    subRouteControl = makeSegments (choiceParameter (state, "subRouting"), { "DRV", "CLN" },
                                    { "Before drive and filter.", "After drive and filter." });
    colourControl = makeSegments (choiceParameter (state, "noiseColour"), { "W", "P", "B" },
                                  { "White noise", "Pink noise", "Brown noise" });
    if (auto* route = state.getParameter ("noiseRouting"))
        noiseRouteControl = std::make_unique<FloatEndpointSegmentedControl> (
            *route, juce::StringArray { "PRE", "POST" }, juce::StringArray { "Noise before the filter.", "Noise after the filter." });
    subRouteField.setContent (subRouteControl.get());
    colourField.setContent (colourControl.get());
    noiseRouteField.setContent (noiseRouteControl.get());

    struct KnobSpec
    {
        ostrel::widgets::Knob& knob;
        ostrel::widgets::FieldBox& field;
        const char* id;
        const char* tip;
        std::function<juce::String (double)> text;
    };
    const KnobSpec knobs[] = {
        { subLevelKnob, subLevelField, "subLevel", "Sub oscillator level into the bass path.", [] (double v) { return levelText (v, -120.0); } },
        { dirtKnob, dirtField, "subDriveSend", "Sub amount sent into drive; the remainder stays clean.", [] (double v) { return formatPercent (v, true); } },
        { noiseLevelKnob, noiseLevelField, "noiseLevel", "Noise source level into the filter and amp envelope.", [] (double v) { return levelText (v, -90.0); } },
        { subDcwKnob, subDcwField, "subDcwDepth", "Phase distortion of the sub in its PD mode.", [] (double v) { return formatPercent (v, true); } },
    };
    for (const auto& k : knobs)
    {
        k.knob.setLabel (k.field.getLabel());
        k.knob.setValueFormatter (k.text);
        k.knob.setTooltip (k.tip);
        k.knob.attachToParameter (state, k.id);
    }
    // The DCW came with the second face, as a destination of the matrix like the oscillators' DCW.
    matrix::wireKnob (subDcwKnob, processor, "subDcwDepth", 13);

    subOctaveChoice.setJustification (33);
    subOctaveChoice.setCompact (true);
    subOctaveField.setCompact (true);
    subOctaveField.setContent (&subOctaveChoice);
    subSemitoneChip.setArrowsVisible (false);
    subSemitoneChip.setValueFormatter ([] (double v) { return formatSignedInt (juce::roundToInt (v), true, false) + " st"; });
    subSemitoneChip.setTooltip ("Sub coarse pitch in semitones, on top of its octave.");
    subFineChip.setArrowsVisible (false);
    subFineChip.setValueFormatter ([] (double v) { return formatSigned (v, 1, false, true, false) + " c"; });
    subFineChip.setTooltip ("Sub fine pitch in cents.");
    for (auto* c : std::initializer_list<juce::Component*> { &subOctaveField, &subSemitoneChip, &subFineChip, &subDcwField })
        addChildComponent (c);
    subFace.onFlip = [this] (bool second) { showSubFace (second); };
    subFace.setTooltip ("Show the sub's tuning and DCW, or go back to its wave, route and levels.");
    addAndMakeVisible (subFace);

    for (auto* field : std::initializer_list<ostrel::widgets::FieldBox*> { &waveField, &subRouteField, &subLevelField, &dirtField,
                                                                          &colourField, &noiseRouteField, &noiseLevelField })
    {
        field->setCompact (true);
        addAndMakeVisible (*field);
    }

    for (auto* id : listenedIds)
        state.addParameterListener (id, this);
    syncWave();
    updateSubMuting();
    updateNoiseMuting();
    mutingKnown = true;
}

SourceUtilityStrip::~SourceUtilityStrip()
{
    for (auto* id : listenedIds)
        state.removeParameterListener (id, this);
    cancelPendingUpdate();
}

ostrel::widgets::SegmentedControl* SourceUtilityStrip::noiseRouteSegments() const
{
    return noiseRouteControl != nullptr ? &noiseRouteControl->segments() : nullptr;
}

void SourceUtilityStrip::parameterChanged (const juce::String& id, float)
{
    // Any thread, the audio thread too: mark what changed and post an update that needs no allocation.
    if (id == "subLevel")
        subLevelChanged = true;
    else if (id == "noiseLevel")
        noiseLevelChanged = true;
    else
        waveChanged = true;
    triggerAsyncUpdate();
}

void SourceUtilityStrip::handleAsyncUpdate()
{
    if (subLevelChanged.exchange (false))
        updateSubMuting();
    if (noiseLevelChanged.exchange (false))
        updateNoiseMuting();
    if (waveChanged.exchange (false))
        syncWave();
}

int SourceUtilityStrip::waveIdFromParameters() const
{
    return indexOf (state.getParameter ("subMode")) == 0 ? 1 : indexOf (state.getParameter ("subWave")) + 2;
}

void SourceUtilityStrip::waveChosen()
{
    const int id = waveChoice.getSelectedId();
    if (syncingWave || id <= 0)
        return;
    setIndex (state.getParameter ("subMode"), id == 1 ? 0 : 1);
    if (id != 1)
        setIndex (state.getParameter ("subWave"), id - 2);
    syncWave();
}

void SourceUtilityStrip::syncWave()
{
    const juce::ScopedValueSetter<bool> guard (syncingWave, true);
    waveChoice.setSelectedId (waveIdFromParameters(), juce::dontSendNotification);
    updateSubDcwDimming();
    repaint();
}

void SourceUtilityStrip::updateSubDcwDimming()
{
    // The sine sub has no phase distortion to set.
    const bool heard = indexOf (state.getParameter ("subMode")) == 1;
    subDcwField.setAlpha ((subMuted ? 0.42f : 1.0f) * (heard ? 1.0f : 0.4f));
}

void SourceUtilityStrip::updateSubMuting()
{
    const auto* level = state.getRawParameterValue ("subLevel");
    const bool muted = level != nullptr && level->load() <= -120.0f;
    if (muted == subMuted && mutingKnown)
        return;
    subMuted = muted;
    for (auto* c : std::initializer_list<juce::Component*> { &subFrame, &subTitle, &waveField, &subRouteField, &subLevelField, &dirtField,
                                                             &subOctaveField, &subSemitoneChip, &subFineChip, &subFace })
        c->setAlpha (muted ? 0.42f : 1.0f);
    updateSubDcwDimming();
}

void SourceUtilityStrip::updateNoiseMuting()
{
    const auto* level = state.getRawParameterValue ("noiseLevel");
    const bool muted = level != nullptr && level->load() <= -90.0f;
    if (muted == noiseMuted && mutingKnown)
        return;
    noiseMuted = muted;
    for (auto* c : std::initializer_list<juce::Component*> { &noiseFrame, &noiseTitle, &colourField, &noiseRouteField, &noiseLevelField })
        c->setAlpha (muted ? 0.42f : 1.0f);
}

void SourceUtilityStrip::showSubFace (bool second)
{
    for (auto* c : std::initializer_list<juce::Component*> { &waveField, &subRouteField, &subLevelField, &dirtField })
        c->setVisible (! second);
    for (auto* c : std::initializer_list<juce::Component*> { &subOctaveField, &subSemitoneChip, &subFineChip, &subDcwField })
        c->setVisible (second);
}

void SourceUtilityStrip::resized()
{
    const int x = 0, y = 0;
    subFrame.setBounds (x, y, 96, 312);
    noiseFrame.setBounds (x + 108, y, 96, 312);
    subTitle.setBounds (subFrame.getX() + 20, y + 8, 56, 22);
    noiseTitle.setBounds (noiseFrame.getX() + 20, y + 8, 56, 22);

    auto column = [y] (int cx, std::initializer_list<juce::Component*> fields)
    {
        int top = y + 38, rest = 274;
        for (auto* field : fields)
        {
            const int h = juce::jmin (rest, 52);
            field->setBounds (cx + 8, top, 80, h);
            rest -= h;
            const int gap = juce::jmin (rest, 8);
            rest -= gap;
            top += h + gap;
        }
    };
    column (subFrame.getX(), { &waveField, &subRouteField, &subLevelField, &dirtField });
    column (subFrame.getX(), { &subOctaveField, &subSemitoneChip, &subFineChip, &subDcwField });
    subFace.setBounds (subFrame.getX() + 8, y + 282, 80, 22);
    column (noiseFrame.getX(), { &colourField, &noiseRouteField, &noiseLevelField });
}
}
