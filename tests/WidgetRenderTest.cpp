#include "WidgetTestSupport.h"
#include "snapshot/WidgetGallery.h"

using namespace ostrel::widgets;
using namespace ostrel::widgets::test;

namespace
{
// Paints c into a larger transparent image and counts touched pixels outside its own bounds.
int pixelsOutside(juce::Component& c, float scale)
{
    constexpr int pad = 8;
    const int w = (int) std::ceil(c.getWidth() * scale), h = (int) std::ceil(c.getHeight() * scale);
    juce::Image image(juce::Image::ARGB, w + 2 * pad, h + 2 * pad, true);
    {
        juce::Graphics g(image);
        g.addTransform(juce::AffineTransform::scale(scale).translated((float) pad, (float) pad));
        c.paintEntireComponent(g, true);
    }
    int touched = 0;
    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
        {
            const bool inside = x >= pad && y >= pad && x < pad + w && y < pad + h;
            if (! inside && image.getPixelAt(x, y).getAlpha() != 0)
                ++touched;
        }
    return touched;
}

using Controls = std::vector<std::unique_ptr<juce::Component>>;

template <typename Control, typename... Args>
Control& add(Controls& all, Args&&... args)
{
    all.push_back(std::make_unique<Control>(std::forward<Args>(args)...));
    return static_cast<Control&>(*all.back());
}

// Each control in its fullest drawing: values at the extremes, halos, labels and marks on.
Controls everyControl(ParameterHost& host)
{
    Controls all;
    for (auto size : { KnobSize::Mini, KnobSize::Small, KnobSize::Medium, KnobSize::Large })
    {
        auto& k = add<Knob>(all, size, true, true);
        k.setLabel("Drive");
        k.setDepthCallbacks([] { return -0.8f; }, {}, {}, {});
        k.setLivePosition(0.5);
        k.flashHalo();
    }
    add<ValueChip>(all, host.state, "cutoff", "Cutoff");
    auto& bar = add<BipolarBar>(all);
    bar.setInteractive(true);
    bar.setDisplayValue(-1.0f);
    auto& panel = add<BypassablePanel>(all, "Panel");
    panel.setSize(200, 120);
    panel.setOutlineThickness(1.0f);
    panel.setActive(false);
    add<SectionHeader>(all, "Header").setActionText("Action");
    add<Tab>(all, "Tab", 1);
    add<ChoiceDropdown>(all, host.state, "mode", "Mode");
    add<SegmentedControl>(all, host.mode(), juce::StringArray { "Saw", "Square", "Pulse" });
    auto& keys = add<PianoKeyboard>(all);
    keys.setNoteDisplayed(37, true);
    keys.setKeyMarked(40, true);
    for (float v : { -1.0f, 1.0f })
        add<PerformanceWheel>(all).setValue(v, false);
    add<PerformanceSlider>(all).setValue(1.0f, false);
    add<PressurePad>(all).setValue(1.0f, false);
    auto& grid = add<StepPhraseGrid>(all);
    grid.setStep(0, { 36, false, true, 1.0f });
    grid.setStep(15, { 48, false, false, 0.5f });
    grid.setPlayheadStep(15);
    return all;
}
} // namespace

TEST(WidgetRender, EveryControlStaysInsideItsBoundsAtEveryScale)
{
    ParameterHost host;
    auto controls = everyControl(host);
    for (float scale : { 0.75f, 1.0f, 1.5f, 2.0f })
        for (auto& c : controls)
            EXPECT_EQ(pixelsOutside(*c, scale), 0) << typeid(*c).name() << " at " << scale;
}

TEST(WidgetRender, PaletteColoursShowWhereTheyShould)
{
    // Between the rail and the centred cells of a phrase grid only the panel ground shows.
    StepPhraseGrid grid;
    EXPECT_TRUE(near(render(grid).getPixelAt(120, 200), paletteColour(surfacePanel), 1));

    PianoKeyboard keys;
    keys.setNoteDisplayed(36, true);
    EXPECT_TRUE(near(render(keys).getPixelAt(22, 80), paletteColour(accentPrimary), 2)) << "a held key";

    ScopedTheme light(lightTheme());
    EXPECT_TRUE(near(render(grid).getPixelAt(120, 200), juce::Colour(0xfffaf6ea), 1)) << "read at paint time";

    PerformanceSlider slider;
    slider.setValue(1.0f, false);
    const auto image = render(slider);
    EXPECT_TRUE(near(image.getPixelAt(3, 48), juce::Colour(0xfffaf6ea), 1));
    const auto fill = juce::Colour(0xfffaf6ea)
                          .overlaidWith(juce::Colour(0xff8a7a55).withAlpha(0.45f))
                          .overlaidWith(juce::Colour(0xffa65a00).withAlpha(0.85f));
    EXPECT_TRUE(near(image.getPixelAt(22, 48), fill, 3)) << "slider fill in the light accent over its track";
}

TEST(WidgetRender, GalleryDrawsTheWholeLibrary)
{
    auto gallery = createWidgetGallery();
    ASSERT_NE(gallery, nullptr);
    EXPECT_EQ(gallery->getWidth(), 1332);

    // Every kind of control is on the sheet.
    std::set<juce::String> kinds;
    std::function<void(juce::Component&)> walk = [&](juce::Component& c) {
        kinds.insert(typeid(c).name());
        for (auto* child : c.getChildren())
            walk(*child);
    };
    walk(*gallery);
    const std::type_info* expected[] = {
        &typeid(Knob), &typeid(ValueChip), &typeid(BipolarBar), &typeid(KnobRow), &typeid(FieldBox),
        &typeid(SectionFrame), &typeid(BypassablePanel), &typeid(SectionHeader), &typeid(SectionTitle), &typeid(Tab),
        &typeid(ChoiceDropdown), &typeid(HeaderChoice), &typeid(SegmentedControl), &typeid(SegmentField),
        &typeid(PianoKeyboard), &typeid(PerformanceWheel), &typeid(PerformanceSlider), &typeid(PressurePad),
        &typeid(StepPhraseGrid),
    };
    for (auto* type : expected)
        EXPECT_EQ(kinds.count(type->name()), 1u) << type->name();

    // Sections never overlap and stay on the sheet.
    for (auto* a : gallery->getChildren())
    {
        EXPECT_TRUE(gallery->getLocalBounds().contains(a->getBounds())) << a->getBounds().toString();
        for (auto* b : gallery->getChildren())
            EXPECT_TRUE(a == b || ! a->getBounds().intersects(b->getBounds())) << a->getBounds().toString();
    }

    const auto image = render(*gallery);
    EXPECT_TRUE(near(image.getPixelAt(4, 4), paletteColour(surfaceBase), 1));

    // Pictures for a person to look at: MORVANE_GALLERY_DIR=/some/dir writes dark and light sheets.
    const auto dir = juce::SystemStats::getEnvironmentVariable("MORVANE_GALLERY_DIR", {});
    if (dir.isNotEmpty())
    {
        const auto save = [&](const juce::Image& picture, const juce::String& name) {
            juce::File file = juce::File(dir).getChildFile(name);
            file.deleteFile();
            juce::FileOutputStream out(file);
            ASSERT_TRUE(out.openedOk());
            EXPECT_TRUE(juce::PNGImageFormat().writeImageToStream(picture, out));
        };
        save(image, "gallery-dark.png");
        // Close-ups at twice the size, one per section, to judge the drawing itself.
        const auto large = render(*gallery, 2.0f);
        int index = 0;
        for (auto* section : gallery->getChildren())
            save(large.getClippedImage((section->getBounds() * 2).getIntersection(large.getBounds())),
                 "gallery-dark@2x-" + juce::String(index++) + ".png");
        ScopedTheme light(lightTheme());
        save(render(*gallery), "gallery-light.png");
    }
}
