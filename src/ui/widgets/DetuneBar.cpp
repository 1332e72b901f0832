#include "ui/widgets/DetuneBar.h"

#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/ValueFormat.h"

#include "audio/EditHistory.h"

#include <cmath>

namespace morvane::ui
{
void hidden::addChoiceSubmenu (juce::PopupMenu& menu, juce::AudioProcessorValueTreeState& state,
                               const juce::String& parameterId, const juce::String& title,
                               std::function<void (int)> choose)
{
    auto* choice = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter (parameterId));
    if (choice == nullptr)
        return;
    juce::PopupMenu sub;
    const int n = choice->choices.size();
    for (int i = 0; i < n; ++i)
        sub.addItem (choice->choices[i], true, i == choice->getIndex(), [choice, i, n, choose] {
            if (choose)
            {
                choose (i);
                return;
            }
            if (n <= 1)
                return;
            choice->beginChangeGesture();
            choice->setValueNotifyingHost (juce::jlimit (0.0f, 1.0f, (float) i / (float) (n - 1)));
            choice->endChangeGesture();
        });
    menu.addSubMenu (title + juce::String (juce::CharPointer_UTF8 ("  \xc2\xb7  ")) + choice->getCurrentChoiceName(), sub);
}

namespace widgets
{
    namespace
    {
        std::unique_ptr<ostrel::widgets::SegmentedControl> makeUnitControl (juce::AudioProcessorValueTreeState& state)
        {
            if (auto* mode = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter ("detuneMode")))
                return std::make_unique<ostrel::widgets::SegmentedControl> (*mode, juce::StringArray { "CT", "HZ" });
            return {};
        }

        void writeOneGesture (juce::RangedAudioParameter* p, float realValue)
        {
            if (p == nullptr)
                return;
            p->beginChangeGesture();
            p->setValueNotifyingHost (p->convertTo0to1 (realValue));
            p->endChangeGesture();
        }
    }

    DetuneBar::DetuneBar (juce::AudioProcessorValueTreeState& s, MorvaneAudioProcessor* processor)
        : state (s),
          detuneUnit (makeUnitControl (s)),
          detuneUnitField ("DETUNE", detuneUnit.get()),
          phaseChoice (s, "phaseMode", "Phase mode"),
          lockButton (s, "reeseLock", "Reese lock", "Oscillator 2 takes the wave, DCW and pulse width of oscillator 1."),
          monoButton (s, "monoLowEnabled", "Mono low", "Keep the low end mono below the frequency set here.")
    {
        setName ("DetuneBar");
        setTitle ("OSC LINK");
        addAndMakeVisible (title);
        if (detuneUnit != nullptr)
        {
            detuneUnit->getCell (0)->setTooltip ("Cents detune unit.");
            detuneUnit->getCell (1)->setTooltip ("Hertz detune unit (relative to A4).");
            detuneUnit->onChoosing = [this] (int index) { switchDetuneUnit (index); return true; };
        }
        // A 44-unit field has room for a caption row and one control row only.
        detuneUnitField.setCompact (true);
        phaseField.setCompact (true);
        addAndMakeVisible (detuneUnitField);
        phaseChoice.setJustification (36);
        phaseField.setContent (&phaseChoice);
        addAndMakeVisible (phaseField);

        detuneKnob.setLabel ("DETUNE");
        detuneKnob.setTooltip ("Oscillator 2 pitch offset relative to oscillator 1.");
        detuneKnob.setExtraMenuBuilder ([this] (juce::PopupMenu& m) { hidden::addChoiceSubmenu (m, state, "detuneMode", "Detune mode", [this] (int i) { switchDetuneUnit (i); }); });
        phaseKnob.setLabel ("PHASE");
        phaseKnob.setTooltip ("Oscillator 2 phase offset relative to oscillator 1.");
        phaseKnob.setValueFormatter ([] (double v) { return formatSignedInt (juce::roundToInt (v), true, false) + juce::String (juce::CharPointer_UTF8 ("\xc2\xb0")); });
        phaseKnob.setExtraMenuBuilder ([this] (juce::PopupMenu& m) { hidden::addChoiceSubmenu (m, state, "phaseMode", "Phase mode"); });
        driftKnob.setLabel ("Z-DRIFT");
        driftKnob.setTooltip ("Shared experimental oscillator drift for unstable beating.");
        driftKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });
        stereoKnob.setLabel ("STEREO");
        stereoKnob.setTooltip ("Detune width from mono-safe to full opposing stereo.");
        stereoKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });

        auto attach = [this] (ostrel::widgets::Knob& knob, const char* id) {
            if (state.getParameter (id) == nullptr)
                return std::unique_ptr<juce::AudioProcessorValueTreeState::SliderAttachment>();
            return std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, id, knob);
        };
        phaseAttachment = attach (phaseKnob, "osc2PhaseOffset");
        driftAttachment = attach (driftKnob, "oscDrift");
        stereoAttachment = attach (stereoKnob, "stereoWidth");
        for (auto* knob : { &detuneKnob, &phaseKnob, &driftKnob, &stereoKnob })
            addAndMakeVisible (knob);

        beatKnob.setLabel ("BEAT");
        beatKnob.setTooltip ("Reese beat: a detune in hertz that beats at the same rate on every note.");
        beatKnob.setValueFormatter ([] (double v) { return juce::String (v, 1) + " Hz"; });
        spreadKnob.setLabel ("SPREAD");
        spreadKnob.setTooltip ("Reese spread: how far the detune is split between left and right.");
        spreadKnob.setValueFormatter ([] (double v) { return formatPercent (v, false); });
        monoFreqKnob.setLabel ("LOW FREQ");
        monoFreqKnob.setTooltip ("Below this frequency the sound is kept mono.");
        monoFreqKnob.setValueFormatter ([] (double v) { return juce::String (juce::roundToInt (v)) + " Hz"; });
        beatAttachment = attach (beatKnob, "reeseBeat");
        spreadAttachment = attach (spreadKnob, "reeseSpread");
        monoFreqAttachment = attach (monoFreqKnob, "monoLowFreq");
        if (processor != nullptr)
        {
            matrix::wireKnob (beatKnob, *processor, "reeseBeat", 24);
            matrix::wireKnob (spreadKnob, *processor, "reeseSpread", 25);
        }
        for (auto [field, button] : { std::pair { &lockField, &lockButton }, { &monoField, &monoButton } })
        {
            field->setCompact (true);
            field->setContent (button);
            button->onToggled = [this] (bool) { updateMonoDimming(); };
        }
        for (auto* c : std::initializer_list<juce::Component*> { &beatKnob, &spreadKnob, &monoFreqKnob, &lockField, &monoField })
            addChildComponent (c);
        faceToggle.setTooltip ("Show the reese pair and the mono low end, or go back to detune and phase.");
        faceToggle.onFlip = [this] (bool second) { showFace (second); };
        addAndMakeVisible (faceToggle);
        updateMonoDimming();

        syncDetuneBinding();
        state.addParameterListener ("detuneMode", this);
    }

    DetuneBar::~DetuneBar() { state.removeParameterListener ("detuneMode", this); }

    void DetuneBar::switchDetuneUnit (int modeIndex)
    {
        auto* mode = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter ("detuneMode"));
        if (mode == nullptr || modeIndex == mode->getIndex() || modeIndex < 0 || modeIndex >= mode->choices.size())
            return;
        const EditHistory::Step step (state);
        const bool toHertz = modeIndex > 0;
        if (auto* from = state.getParameter (toHertz ? "osc2Detune" : "osc2DetuneHz"))
        {
            const float v = from->convertFrom0to1 (from->getValue());
            if (toHertz)
                writeOneGesture (state.getParameter ("osc2DetuneHz"), (std::pow (2.0f, v / 1200.0f) - 1.0f) * 440.0f);
            else
                writeOneGesture (state.getParameter ("osc2Detune"), std::log2 ((v + 440.0f) / 440.0f) * 1200.0f);
        }
        writeOneGesture (mode, (float) modeIndex);
        syncDetuneBinding();
    }

    void DetuneBar::syncDetuneBinding()
    {
        auto* mode = dynamic_cast<juce::AudioParameterChoice*> (state.getParameter ("detuneMode"));
        const juce::String target = mode != nullptr && mode->getIndex() > 0 ? "osc2DetuneHz" : "osc2Detune";
        if (target == boundDetuneId && detuneAttachment != nullptr)
            return;
        boundDetuneId = target;
        if (target == "osc2DetuneHz")
            detuneKnob.setValueFormatter ([] (double v) { return formatSigned (v, 1, true, false, false) + " Hz"; });
        else
            detuneKnob.setValueFormatter ([] (double v) { return formatSignedInt (juce::roundToInt (v), true, false) + " ct"; });
        detuneAttachment.reset();
        if (state.getParameter (target) != nullptr)
            detuneAttachment = std::make_unique<juce::AudioProcessorValueTreeState::SliderAttachment> (state, target, detuneKnob);
        detuneKnob.repaint();
    }

    void DetuneBar::showFace (bool second)
    {
        for (auto* c : std::initializer_list<juce::Component*> { &detuneKnob, &phaseKnob, &driftKnob, &stereoKnob, &detuneUnitField, &phaseField })
            c->setVisible (! second);
        for (auto* c : std::initializer_list<juce::Component*> { &beatKnob, &spreadKnob, &monoFreqKnob, &lockField, &monoField })
            c->setVisible (second);
    }

    void DetuneBar::updateMonoDimming()
    {
        monoFreqKnob.setAlpha (monoButton.getToggleState() ? 1.0f : 0.4f);
    }

    void DetuneBar::parameterChanged (const juce::String& id, float)
    {
        if (id != "detuneMode")
            return;
        triggerAsyncUpdate();
    }

    void DetuneBar::resized()
    {
        SectionFrame::resized();
        const auto bounds = getLocalBounds();
        const int w = getWidth(), h = getHeight();
        title.setBounds (20, 8, 112, 22);
        faceToggle.setBounds (w - 20 - 44, 12, 44, 22);
        detuneUnitField.setBounds (insetAtEdges ({ 0, 38, 96, 44 }, bounds, 8));
        phaseField.setBounds (insetAtEdges ({ 108, 38, 96, 44 }, bounds, 8));
        lockField.setBounds (detuneUnitField.getBounds());
        monoField.setBounds (phaseField.getBounds());

        const int rowH = std::max ((h - 108 - 8) / 2, 0);
        const int leftW = std::min (w, w / 2);
        const juce::Rectangle<int> cells[] = {
            { 0, 108, leftW, rowH }, { leftW, 108, w - leftW, rowH },
            { 0, 108 + rowH + 8, leftW, rowH }, { leftW, 108 + rowH + 8, w - leftW, rowH },
        };
        ostrel::widgets::Knob* knobs[] = { &detuneKnob, &phaseKnob, &driftKnob, &stereoKnob };
        for (int i = 0; i < 4; ++i)
            knobs[i]->setBounds (cells[i].withSizeKeepingCentre (std::min (44, cells[i].getWidth()), std::min (96, cells[i].getHeight())));
        // The second face: the reese pair in the left column under its lock, mono low on the right.
        beatKnob.setBounds (detuneKnob.getBounds());
        spreadKnob.setBounds (driftKnob.getBounds());
        monoFreqKnob.setBounds (phaseKnob.getBounds());
    }
}
}
