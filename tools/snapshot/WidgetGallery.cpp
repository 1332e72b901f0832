#include "WidgetGallery.h"

#include "widgets/Widgets.h"

#include "snapshot/ParameterOnlyProcessor.h"
#include <juce_audio_processors/juce_audio_processors.h>

using namespace ostrel::widgets;

namespace
{
constexpr int sheetWidth = 1332;
constexpr int margin = 12;

// Choice controls bind to parameters; the gallery owns a few of its own.
class GalleryParameters : public ParameterOnlyProcessor
{
public:
    GalleryParameters() : ParameterOnlyProcessor("GALLERY", layout()) {}

    static juce::AudioProcessorValueTreeState::ParameterLayout layout()
    {
        juce::AudioProcessorValueTreeState::ParameterLayout l;
        l.add(std::make_unique<juce::AudioParameterChoice>(juce::ParameterID { "wave", 1 }, "Wave",
                                                           juce::StringArray { "Saw", "Square", "Pulse", "Reso" }, 1));
        l.add(std::make_unique<juce::AudioParameterChoice>(juce::ParameterID { "model", 1 }, "Filter model",
                                                           juce::StringArray { "Ladder", "SVF", "Comb", "Formant" }, 0));
        l.add(std::make_unique<juce::AudioParameterChoice>(juce::ParameterID { "slope", 1 }, "Slope",
                                                           juce::StringArray { "12 dB", "24 dB" }, 1));
        l.add(std::make_unique<juce::AudioParameterFloat>(juce::ParameterID { "glide", 1 }, "Glide",
                                                          juce::NormalisableRange<float>(0.0f, 2000.0f), 120.0f));
        l.add(std::make_unique<juce::AudioParameterFloat>(juce::ParameterID { "octave", 1 }, "Octave",
                                                          juce::NormalisableRange<float>(-3.0f, 3.0f, 1.0f), -1.0f));
        return l;
    }

    juce::AudioParameterChoice& choice(const char* id) { return *dynamic_cast<juce::AudioParameterChoice*>(state.getParameter(id)); }
};

// A drop-down drawn open: the popup itself is a desktop window and cannot be drawn in place.
class OpenChoicePreview : public juce::Component
{
public:
    OpenChoicePreview(juce::StringArray itemsIn, int selectedIn) : items(std::move(itemsIn)), selected(selectedIn)
    {
        setSize(160, 44 + 8 + rowHeight * items.size() + 8);
    }

    void paint(juce::Graphics& g) override
    {
        auto box = getLocalBounds().removeFromTop(44).toFloat();
        g.setColour(paletteColour(surfaceOverlay));
        g.fillRoundedRectangle(box, 2.0f);
        g.setColour(paletteColour(borderFocus));
        g.drawRoundedRectangle(box.reduced(1.0f), 2.0f, 2.0f);
        drawRoleText(g, 5, items[selected].toUpperCase(), box.toNearestInt().reduced(12, 0), paletteColour(textPrimary), 33);

        auto list = getLocalBounds().withTrimmedTop(48).toFloat();
        g.setColour(paletteColour(surfaceRaised));
        g.fillRoundedRectangle(list, 2.0f);
        g.setColour(paletteColour(borderSubtle));
        g.drawRoundedRectangle(list.reduced(0.5f), 2.0f, 1.0f);
        auto rows = list.toNearestInt().reduced(4, 4);
        for (int i = 0; i < items.size(); ++i)
        {
            auto row = rows.removeFromTop(rowHeight);
            if (i == selected)
            {
                g.setColour(paletteColour(accentSelection));
                g.fillRoundedRectangle(row.toFloat(), 2.0f);
            }
            drawRoleText(g, 5, items[i].toUpperCase(), row.reduced(8, 0), paletteColour(i == selected ? textPrimary : textMuted), 33);
        }
    }

private:
    static constexpr int rowHeight = 28;
    juce::StringArray items;
    int selected;
};

// A caption under a sample, so that each state says what it shows.
class Caption : public juce::Component
{
public:
    explicit Caption(juce::String t) : text(std::move(t)) { setInterceptsMouseClicks(false, false); }
    void paint(juce::Graphics& g) override { drawRoleText(g, 4, text, getLocalBounds(), paletteColour(textMuted), 36); }

private:
    juce::String text;
};

class Gallery : public juce::Component
{
public:
    Gallery()
    {
        setOpaque(true);
        int y = margin;
        y = knobSection(y) + margin;
        y = valueSection(y) + margin;
        y = frameSection(y) + margin;
        y = choiceSection(y) + margin;
        y = performanceSection(y) + margin;
        y = phraseSection(y) + margin;
        setSize(sheetWidth, y);
    }

    void paint(juce::Graphics& g) override { g.fillAll(paletteColour(surfaceBase)); }

private:
    template <typename T, typename... Args>
    T& make(juce::Component& parent, Args&&... args)
    {
        auto owned = std::make_unique<T>(std::forward<Args>(args)...);
        auto& ref = *owned;
        parent.addAndMakeVisible(ref);
        children.push_back(std::move(owned));
        return ref;
    }

    BypassablePanel& section(const juce::String& title, int y, int height)
    {
        auto& panel = make<BypassablePanel>(*this, title);
        panel.setBounds(margin, y, sheetWidth - 2 * margin, height);
        return panel;
    }

    void caption(juce::Component& parent, const juce::String& text, juce::Rectangle<int> under)
    {
        make<Caption>(parent, text).setBounds(under.getX() - 8, under.getBottom() + 2, under.getWidth() + 16, 16);
    }

    Knob& knob(juce::Component& parent, KnobSize size, const juce::String& label, double value, bool bipolar = false)
    {
        auto& k = make<Knob>(parent, size, bipolar, false);
        k.setLabel(label);
        if (bipolar)
            k.setRange(-1.0, 1.0, 0.0);
        k.setValue(value, juce::dontSendNotification);
        return k;
    }

    int knobSection(int y)
    {
        auto& panel = section("Knobs", y, 214);
        const struct { KnobSize size; const char* name; } sizes[] = {
            { KnobSize::Mini, "Mini" }, { KnobSize::Small, "Small" }, { KnobSize::Medium, "Medium" }, { KnobSize::Large, "Large" },
        };
        int x = 24;
        for (const auto& s : sizes)
        {
            const auto geo = knobGeometry(s.size);
            const int top = 44 + (132 - geo.height);
            auto& plain = knob(panel, s.size, "Cutoff", 0.62);
            plain.setValueFormatter([](double v) { return juce::String(juce::roundToInt(20.0 * std::pow(1000.0, v))) + " Hz"; });
            plain.setTopLeftPosition(x, top);

            auto& bipolar = knob(panel, s.size, "Detune", -0.35, true);
            bipolar.setValueFormatter([](double v) { return juce::String(v * 100.0, 0) + " ct"; });
            bipolar.setTopLeftPosition(x + geo.width + 4, top);

            auto& modulated = knob(panel, s.size, "Drive", 0.4);
            modulated.setModulated(true);
            modulated.setDepthCallbacks([] { return 0.45f; }, {}, {}, {});
            modulated.setLivePosition(0.68);
            modulated.setTopLeftPosition(x + 2 * (geo.width + 4), top);

            caption(panel, juce::String(s.name) + ": plain, bipolar, modulated",
                    { x, 44 + 132, 3 * geo.width + 8, 0 });
            x += 3 * (geo.width + 4) + 24;
        }
        auto& learn = knob(panel, KnobSize::Medium, "Learn", 0.3);
        learn.setMidiLearnPending(true);
        learn.setTopLeftPosition(x, 44 + 24);
        caption(panel, "MIDI learn", learn.getBounds());
        return y + panel.getHeight();
    }

    int valueSection(int y)
    {
        auto& panel = section("Values", y, 150);
        int x = 24;
        const int top = 48;
        auto& chip = make<ValueChip>(panel, "Glide");
        chip.setRange(0.0, 2000.0, 0.0);
        chip.setValue(120.0, juce::dontSendNotification);
        chip.setValueFormatter([](double v) { return juce::String(juce::roundToInt(v)) + " ms"; });
        chip.setTopLeftPosition(x, top);
        caption(panel, "Value chip", chip.getBounds());
        x += 96 + 16;

        auto& plainChip = make<ValueChip>(panel, "");
        plainChip.setRange(-3.0, 3.0, 1.0);
        plainChip.setValue(-1.0, juce::dontSendNotification);
        plainChip.setValueFormatter([](double v) { return (v > 0 ? "+" : "") + juce::String(juce::roundToInt(v)) + " oct"; });
        plainChip.setArrowsVisible(false);
        plainChip.setTopLeftPosition(x, top);
        caption(panel, "No label, no arrows", plainChip.getBounds());
        x += 96 + 24;

        auto& bar = make<BipolarBar>(panel);
        bar.setInteractive(true);
        bar.setDisplayValue(0.35f);
        bar.setTopLeftPosition(x, top);
        caption(panel, "Bipolar bar", bar.getBounds());
        auto& negative = make<BipolarBar>(panel);
        negative.setBarWidth(148);
        negative.setSize(200, 44);
        negative.setDisplayValue(-0.6f);
        negative.setTopLeftPosition(x + 304 + 16, top);
        caption(panel, "Narrow, negative", negative.getBounds());
        x += 304 + 16 + 200 + 24;

        auto& row = make<KnobRow>(panel, KnobSize::Mini);
        std::vector<Knob*> rowKnobs;
        const char* names[] = { "Atk", "Dec", "Sus", "Rel" };
        for (int i = 0; i < 4; ++i)
            rowKnobs.push_back(&knob(panel, KnobSize::Mini, names[i], 0.2 + 0.2 * i));
        row.setBounds(x, top - 20, 4 * 44 + 3 * 8, 96);
        row.setGapStep(2);
        row.setKnobs(rowKnobs);
        caption(panel, "Knob row", row.getBounds());
        x += row.getWidth() + 24;

        auto& field = make<FieldBox>(panel, "Field box");
        auto& fieldChip = make<ValueChip>(field, "");
        fieldChip.setValue(0.5, juce::dontSendNotification);
        fieldChip.setArrowsVisible(false);
        field.setBounds(x, 8, 120, 100);
        field.setContent(&fieldChip);
        x += 120 + 12;
        auto& compact = make<FieldBox>(panel, "Compact");
        auto& compactChip = make<ValueChip>(compact, "");
        compactChip.setValue(0.25, juce::dontSendNotification);
        compact.setCompact(true);
        compact.setBounds(x, top - 16, 120, 66);
        compact.setContent(&compactChip);
        return y + panel.getHeight();
    }

    int frameSection(int y)
    {
        auto& panel = section("Frames", y, 232);
        const int top = 44;

        auto& active = make<BypassablePanel>(panel, "Active panel");
        active.setOutlineThickness(1.0f);
        auto& toggle = make<Tab>(active, "On");
        toggle.setToggleState(true, juce::dontSendNotification);
        active.setHeaderControl(&toggle, 36);
        active.setBounds(24, top, 300, 164);
        auto& a1 = knob(active, KnobSize::Small, "Amount", 0.7);
        a1.setTopLeftPosition(36, 44);
        auto& a2 = knob(active, KnobSize::Small, "Tone", 0.3);
        a2.setTopLeftPosition(156, 44);

        auto& bypassed = make<BypassablePanel>(panel, "Bypassed panel");
        bypassed.setOutlineThickness(1.0f);
        bypassed.setBounds(336, top, 300, 164);
        auto& b1 = knob(bypassed, KnobSize::Small, "Amount", 0.7);
        b1.setTopLeftPosition(36, 44);
        auto& b2 = knob(bypassed, KnobSize::Small, "Tone", 0.3);
        b2.setTopLeftPosition(156, 44);
        bypassed.addDimmedChild(&b1);
        bypassed.addDimmedChild(&b2);
        bypassed.setActive(false);

        auto& frame = make<SectionFrame>(panel);
        frame.setFillIndex(surfaceOverlay);
        frame.setBounds(648, top, 200, 164);
        auto& inner = make<Caption>(frame, "Section frame, overlay fill");
        frame.setContent(&inner);

        auto& header = make<SectionHeader>(panel, "Section header");
        header.setActionText("Reset");
        header.setOnAction([] {});
        header.setBounds(860, top, 436, 44);
        auto& title = make<SectionTitle>(panel, "Section title");
        title.setStatusText("Status");
        title.setBounds(860, top + 48, 436, 44);

        const struct { const char* text; int variant; bool on; } tabs[] = {
            { "Keys", 0, true }, { "Phrase", 0, false }, { "Panic", 1, false }, { "Clear", 1, true },
        };
        int x = 860;
        for (const auto& t : tabs)
        {
            auto& tab = make<Tab>(panel, t.text, t.variant);
            tab.setToggleState(t.on, juce::dontSendNotification);
            tab.setBounds(x, top + 120, 104, 44);
            x += 112;
        }
        return y + panel.getHeight();
    }

    int choiceSection(int y)
    {
        auto& panel = section("Choices", y, 226);
        const int top = 44;
        auto& dropdown = make<ChoiceDropdown>(panel, params.state, "wave", "Wave");
        dropdown.setBounds(24, top, dropdown.preferredWidth() + 24, 44);
        caption(panel, "Drop-down", dropdown.getBounds());
        auto& header = make<HeaderChoice>(panel, params.state, "slope", "Slope");
        // The look-and-feel draws the compact box; give it room for any face it may use.
        header.setBounds(24, top + 80, header.preferredWidth() + 40, 32);
        caption(panel, "Header choice", header.getBounds());

        auto& open = make<OpenChoicePreview>(panel, juce::StringArray { "Saw", "Square", "Pulse", "Reso" }, 1);
        open.setTopLeftPosition(220, top);

        auto& segments = make<SegmentedControl>(panel, params.choice("model"), juce::StringArray { "Ladder", "SVF", "Comb", "Formant" });
        segments.setTopLeftPosition(420, top);
        caption(panel, "Segmented control", segments.getBounds());

        auto& spaced = make<SegmentedControl>(panel, params.choice("wave"), juce::StringArray { "Saw", "Square", "Pulse", "Reso" });
        spaced.setGapStep(1);
        const int spacedWidth = spaced.getWidth(); // the field resizes its content once it has one
        auto& field = make<SegmentField>(panel, "Segment field, gap step 1", &spaced);
        field.setBounds(408, top + 60, spacedWidth + 24, 100);
        return y + panel.getHeight();
    }

    int performanceSection(int y)
    {
        auto& panel = section("Performance", y, 180);
        const int top = 44;
        auto& keys = make<PianoKeyboard>(panel);
        keys.setTopLeftPosition(24, top);
        keys.setScale(0, 0xAB5);
        for (int note : { 48, 52, 55 })
            keys.setNoteDisplayed(note, true);
        keys.setKeyMarked(43, true);
        keys.setKeyMarked(46, true);
        caption(panel, "Keyboard: C major, held C3 E3 G3, marked keys", keys.getBounds());

        int x = 24 + 616 + 32;
        auto place = [&](PerformanceControl& c, float value, const juce::String& text) {
            c.setValue(value, false);
            c.setTopLeftPosition(x, top);
            caption(panel, text, c.getBounds());
            x += c.getWidth() + 32;
        };
        place(make<PerformanceWheel>(panel), 0.0f, "At rest");
        place(make<PerformanceWheel>(panel), 0.6f, "Bent");
        place(make<PerformanceSlider>(panel), 0.0f, "At rest");
        place(make<PerformanceSlider>(panel), 0.45f, "Moved");
        place(make<PressurePad>(panel), 0.0f, "At rest");
        place(make<PressurePad>(panel), 0.7f, "Pressed");
        return y + panel.getHeight();
    }

    int phraseSection(int y)
    {
        auto& panel = section("Phrase", y, 412 + 64);
        auto& grid = make<StepPhraseGrid>(panel);
        grid.setScale(0, 0xAB5);
        grid.setTopLeftPosition(24, 44);
        const PhraseStep phrase[] = {
            { 36, false, true, 0.9f }, { -1 }, { 43, false, false, 0.6f }, { 43, true, false, 0.6f },
            { 48, false, false, 0.8f }, { -1 }, { 46, false, false, 0.35f }, { 45, false, true, 0.7f },
            { 36, false, false, 0.72f }, { 36, true, false, 0.72f }, { 36, true, false, 0.72f }, { -1 },
            { 40, false, false, 0.5f }, { 41, false, false, 0.2f }, { 43, false, true, 1.0f }, { 38, false, false, 0.6f },
        };
        for (int i = 0; i < 16; ++i)
            grid.setStep(i, phrase[i]);
        grid.setPlayheadStep(4);

        auto& small = make<StepPhraseGrid>(panel);
        small.setBounds(24 + 824 + 24, 44, 400, 220);
        small.setStepCount(8);
        small.setStepsPerBeat(2);
        small.setRulerVisible(false);
        small.setEditMode(StepPhraseGrid::eraseMode);
        for (int i = 0; i < 8; i += 2)
            small.setStep(i, { 36 + i, false, i == 4, 0.5f + 0.06f * i });
        small.setPlayheadStep(6);
        caption(panel, "8 steps, no ruler", small.getBounds());
        return y + panel.getHeight();
    }

    GalleryParameters params;
    std::vector<std::unique_ptr<juce::Component>> children;

public:
    ~Gallery() override
    {
        // Parents were made before their children: destroy the other way round.
        while (! children.empty())
            children.pop_back();
    }
};
} // namespace

std::unique_ptr<juce::Component> createWidgetGallery() { return std::make_unique<Gallery>(); }
