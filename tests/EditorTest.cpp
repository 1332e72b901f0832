#include "AllocationCounter.h"
#include "EditorTestSupport.h"
#include "TestHelpers.h"

#include "EditorTestSupport.h"
#include "snapshot/Snapshot.h"
#include "ui/matrix/MatrixWiring.h"
#include "widgets/Widgets.h"
#include "ui/Editor.h"
#include "ui/theme/Themes.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/CardFaces.h"
#include "ui/widgets/RoutingRow.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <thread>

using namespace morvane;
using namespace morvane::ui;
using morvane::test::TempSettings;

namespace
{

juce::KeyPress ctrl (int key, bool shift = false)
{
    return juce::KeyPress (key, juce::ModifierKeys (juce::ModifierKeys::ctrlModifier | (shift ? juce::ModifierKeys::shiftModifier : 0)), 0);
}

template <typename Control>
void collect (juce::Component& c, std::vector<Control*>& out)
{
    if (auto* control = dynamic_cast<Control*> (&c))
        out.push_back (control);
    for (auto* child : c.getChildren())
        collect (*child, out);
}

// Every value control of the editor with its typed-value reader, by the text above or in it.
struct ValueControl
{
    juce::String name;
    juce::Slider* slider;
    std::function<std::optional<double> (const juce::String&)> parse;
};

std::vector<ValueControl> valueControls (Editor& editor)
{
    std::vector<ValueControl> all;
    std::vector<ostrel::widgets::Knob*> knobs;
    std::vector<ostrel::widgets::ValueChip*> chips;
    std::vector<header::HeaderValueChip*> headerChips;
    collect (editor, knobs);
    collect (editor, chips);
    collect (editor, headerChips);
    for (auto* k : knobs)
        all.push_back ({ k->getLabel(), k, [k] (const juce::String& t) { return k->parseValue (t); } });
    for (auto* c : chips)
        all.push_back ({ c->getLabel(), c, [c] (const juce::String& t) { return c->parseValue (t); } });
    for (auto* c : headerChips)
        all.push_back ({ c->getTitle(), c, [c] (const juce::String& t) { return c->parseValue (t); } });
    return all;
}

bool menuEntryEnabled (const juce::PopupMenu& menu, const juce::String& text)
{
    for (juce::PopupMenu::MenuItemIterator it (menu, true); it.next();)
        if (it.getItem().text == text)
            return it.getItem().isEnabled;
    ADD_FAILURE() << "no entry " << text;
    return false;
}
}

TEST (EditorScale, SnappingAndTheConstrainer)
{
    const std::pair<float, float> snaps[] = { { 2.0f, 1.5f }, { 0.9f, 1.0f }, { 0.875f, 0.75f }, { 1.125f, 1.0f },
                                              { 1.13f, 1.25f }, { 0.1f, 0.75f }, { 1.05f, 1.0f } };
    for (auto [in, out] : snaps)
        EXPECT_FLOAT_EQ (snapScale (in), out) << in;
    EXPECT_FLOAT_EQ (nextScaleStep (1.5f, +1), 1.5f);
    EXPECT_FLOAT_EQ (nextScaleStep (0.75f, -1), 0.75f);
    EXPECT_FLOAT_EQ (nextScaleStep (1.0f, +1), 1.25f);

    SnapScaleConstrainer constrainer;
    const juce::Rectangle<int> previous (100, 100, 1332, 828), limits (0, 0, 4000, 4000);
    auto bounds = juce::Rectangle<int> (100, 100, 1400, 870);
    constrainer.checkBounds (bounds, previous, limits, false, false, true, true);
    EXPECT_EQ (bounds, previous) << "1.05 still snaps to 1";
    bounds = { 100, 100, 1700, 1050 };
    constrainer.checkBounds (bounds, previous, limits, false, false, true, true);
    EXPECT_EQ (bounds, juce::Rectangle<int> (100, 100, 1665, 1035));
    bounds = { 0, 0, 1700, 1050 };
    constrainer.checkBounds (bounds, previous, limits, true, true, false, false);
    EXPECT_EQ (bounds.getBottomRight(), previous.getBottomRight()) << "dragging the top left keeps the far corner";
}

TEST (Editor, ViewsShowTheirPanelAtItsBounds)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    EXPECT_EQ (editor.getWidth(), 1332);
    EXPECT_EQ (editor.getHeight(), 828);
    EXPECT_EQ (editor.getCanvas().getBounds(), juce::Rectangle<int> (0, 0, 1332, 828));
    EXPECT_EQ (editor.getHeader().getBounds(), juce::Rectangle<int> (24, 24, 1284, 72));
    EXPECT_EQ (editor.getFooter().getBounds(), juce::Rectangle<int> (24, 748, 1284, 56));

    struct Row { int view; juce::Rectangle<int> bounds; bool canvas, footer, badges; };
    const Row rows[] = {
        { 0, { 24, 104, 1284, 636 }, true, true, false },  { 1, { 24, 0, 1284, 828 }, false, false, false },
        { 2, { 888, 104, 420, 636 }, true, true, false },  { 3, { 24, 280, 1284, 460 }, true, true, true },
        { 4, { 24, 104, 1284, 636 }, true, true, true },   { 5, { 24, 114, 1284, 626 }, true, true, true },
    };
    for (const auto& row : rows)
    {
        editor.setActiveView (row.view);
        EXPECT_EQ (editor.getActiveView(), row.view);
        EXPECT_EQ (editor.getViewPanel (row.view).getBounds(), row.bounds) << row.view;
        EXPECT_TRUE (editor.getViewPanel (row.view).isVisible()) << row.view;
        for (int other = 1; other <= 5; ++other)
            EXPECT_EQ (editor.getViewPanel (other).isVisible(), other == row.view) << row.view << " and " << other;
        EXPECT_EQ (editor.getCanvasView()->isVisible(), row.canvas) << row.view;
        EXPECT_EQ (editor.getFooter().isVisible(), row.footer) << row.view;
        EXPECT_EQ (editor.getCanvasView()->getModulationBadges(), row.badges) << row.view;
        EXPECT_TRUE (editor.getHeader().isVisible());
    }

    // Canvas panels stand on the grid.
    using V = views::SingleCanvasView;
    EXPECT_EQ (editor.getCanvasView()->getPanel (V::filter)->getBounds(), juce::Rectangle<int> (0, 324, 528, 312));
    EXPECT_EQ (editor.getCanvasView()->getPanel (V::lfo)->getBounds(), juce::Rectangle<int> (1080, 324, 204, 312));
}

TEST (Editor, KeysAndFooterToggles)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    EXPECT_FALSE (editor.keyPressed (juce::KeyPress (juce::KeyPress::escapeKey))) << "Escape in view 0 goes to the host";
    editor.setActiveView (3);
    EXPECT_TRUE (editor.keyPressed (juce::KeyPress (juce::KeyPress::escapeKey)));
    EXPECT_EQ (editor.getActiveView(), 0);

    // Zoom keys in turn, and the scale and size after each; at either end nothing changes.
    const std::tuple<int, float, int, int> zooms[] = { { '=', 1.25f, 1665, 1035 }, { '+', 1.5f, 1998, 1242 }, { '=', 1.5f, 1998, 1242 },
                                                       { '0', 1.0f, 1332, 828 }, { '-', 0.75f, 999, 621 }, { '_', 0.75f, 999, 621 } };
    for (auto [key, scale, width, height] : zooms)
    {
        EXPECT_TRUE (editor.keyPressed (ctrl (key))) << (char) key;
        EXPECT_FLOAT_EQ (editor.getDisplayScale(), scale) << (char) key << " to " << scale;
        EXPECT_EQ (juce::Point<int> (editor.getWidth(), editor.getHeight()), juce::Point<int> (width, height)) << (char) key;
    }
    EXPECT_FALSE (editor.keyPressed (juce::KeyPress ('=')));

    const bool grid = editor.isDebugGridOn();
    EXPECT_TRUE (editor.keyPressed (ctrl ('G', true)));
    EXPECT_NE (editor.isDebugGridOn(), grid);
    EXPECT_FALSE (editor.keyPressed (ctrl ('G')));

    // A press on the active toggle closes its panel; another switches directly.
    auto& footer = editor.getFooter();
    auto clickButton = [&] (const char* title) {
        for (auto* child : footer.getChildren())
            if (auto* b = dynamic_cast<juce::Button*> (child); b != nullptr && b->getButtonText() == title)
                b->triggerClick();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (20);
    };
    clickButton ("MATRIX");
    EXPECT_EQ (editor.getActiveView(), 3);
    clickButton ("FX");
    EXPECT_EQ (editor.getActiveView(), 5);
    clickButton ("FX");
    EXPECT_EQ (editor.getActiveView(), 0);
}

TEST (Editor, SettingsAreWrittenAtOnceAndReadBack)
{
    TempSettings temp;
    temp.write ({});
    {
        MorvaneAudioProcessor p;
        Editor editor (p, temp.file);
        editor.setDisplayScale (1.3f);
        EXPECT_FLOAT_EQ ((float) temp.read()->getDoubleValue ("displayScale"), 1.25f);
        editor.setShowTooltips (false);
        EXPECT_FALSE (temp.read()->getBoolValue ("showTooltips", true));
        editor.chooseTheme ("halogenMint");
        EXPECT_EQ (temp.read()->getValue ("themeName"), "halogenMint");
        EXPECT_EQ (token (Token::bgGround), juce::Colour (0xff001619));
    }
    applyThemeEntry (darkTheme());
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    EXPECT_FLOAT_EQ (editor.getDisplayScale(), 1.25f);
    EXPECT_EQ (editor.getWidth(), 1665);
    EXPECT_FALSE (editor.getShowTooltips());
    EXPECT_EQ (editor.getThemeName(), "halogenMint");
    EXPECT_EQ (token (Token::bgGround), juce::Colour (0xff001619));
}

TEST (Editor, ThemeRestoreFallbacksAndImports)
{
    TempSettings temp;
    struct Case { const char* name; const char* json; const char* expectedName; juce::uint32 ground; };
    const Case cases[] = {
        { "nonsense", "", "dark", 0xff0b0b0a },
        { "untitled", "", "velvetReactor", 0xff130018 },
        { "custom", R"({ "bg": { "ground": "#102030" } })", "custom", 0xff102030 },
        { "custom", "{ broken", "dark", 0xff0b0b0a },
        { "custom", "", "dark", 0xff0b0b0a },
    };
    for (const auto& c : cases)
    {
        temp.file.deleteFile();
        juce::StringPairArray values;
        values.set ("themeName", c.name);
        if (*c.json != 0)
            values.set ("themeJson", c.json);
        temp.write (values);
        MorvaneAudioProcessor p;
        Editor editor (p, temp.file);
        EXPECT_EQ (editor.getThemeName(), c.expectedName) << c.name << " " << c.json;
        EXPECT_EQ (token (Token::bgGround).getARGB(), c.ground) << c.name << " " << c.json;
    }

    // An import is kept as "custom"; choosing a built-in theme afterwards keeps the imported text.
    temp.file.deleteFile();
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    const auto themeFile = temp.dir.getChildFile ("mine.json");
    themeFile.replaceWithText ("{}");
    ASSERT_TRUE (editor.importThemeFile (themeFile));
    EXPECT_EQ (temp.read()->getValue ("themeName"), "custom");
    EXPECT_EQ (token (Token::accentPrimary), juce::Colour (0xffc8f500));
    themeFile.replaceWithText ("[]");
    EXPECT_FALSE (editor.importThemeFile (themeFile));
    EXPECT_FALSE (editor.importThemeFile (temp.dir.getChildFile ("absent.json")));
    editor.chooseTheme ("oxbloodTape");
    EXPECT_EQ (temp.read()->getValue ("themeName"), "oxbloodTape");
    EXPECT_EQ (temp.read()->getValue ("themeJson"), "{}");
}

TEST (Editor, PresetStepsAndTheHeader)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    const int start = editor.getCurrentPresetIndex();
    EXPECT_GT (start, 0);
    auto& strip = editor.getHeader().strip;
    EXPECT_EQ (strip.getNameText(), p.getPresetName());
    editor.loadFactoryPreset (start + 1);
    EXPECT_EQ (editor.getCurrentPresetIndex(), start + 1);
    EXPECT_EQ (strip.getNameText(), p.getPresetName());
    EXPECT_EQ (strip.counterText(), juce::String::formatted ("%02d / 68", start + 1));

    test::setParameter (p, "drive", 9.0f);
    editor.refreshReadouts();
    EXPECT_TRUE (strip.getNameText().endsWith (" *"));
    EXPECT_TRUE (editor.getFooter().isDirtyShown());
    editor.loadFactoryPreset (editor.getCurrentPresetIndex());
    EXPECT_FALSE (strip.getNameText().endsWith (" *"));

    // A rename changes the name only; the source and the dirty flag stay.
    const auto source = p.getPresetSource();
    ASSERT_TRUE (strip.onRename != nullptr);
    strip.onRename ("Night Bus");
    EXPECT_EQ (p.getPresetName(), "Night Bus");
    EXPECT_EQ (p.getPresetSource(), source);
    EXPECT_EQ (strip.getNameText(), "Night Bus");
}

TEST (Editor, WorkflowMenuAndPatchTools)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    auto menu = editor.buildWorkflowMenu();
    EXPECT_FALSE (menuEntryEnabled (menu, "Undo")) << "nothing to undo right after a load";
    EXPECT_TRUE (menuEntryEnabled (menu, "Recall A"));
    EXPECT_TRUE (menuEntryEnabled (menu, "50%")) << "both slots hold a tree from the start";
    EXPECT_TRUE (menuEntryEnabled (menu, "Full patch"));

    auto& tree = p.getParameterTree();
    auto cutoff = [&] { return tree.getRawParameterValue ("filterCutoff")->load(); };
    auto driveOn = [&] { return tree.getRawParameterValue ("driveOn")->load(); };
    test::setParameter (p, "filterCutoff", 200.0f);
    test::setParameter (p, "driveOn", 0.0f);
    editor.captureSlot (0);
    test::setParameter (p, "filterCutoff", 2000.0f);
    test::setParameter (p, "driveOn", 1.0f);
    editor.captureSlot (1);
    editor.morphSlots (0.25f);
    EXPECT_EQ (driveOn(), 0.0f) << "a switch is blended as a number and snaps, as the others do";
    editor.morphSlots (0.5f);
    EXPECT_NEAR (cutoff(), 1100.0f, 0.5f) << "linear in the parameter's own units";
    editor.recallSlot (0);
    EXPECT_NEAR (cutoff(), 200.0f, 0.05f);
    EXPECT_FALSE (menuEntryEnabled (editor.buildWorkflowMenu(), "Undo")) << "a recall clears the history";
    editor.randomisePatch ("drive");
    EXPECT_EQ (driveOn(), 0.0f) << "randomise leaves the switches";
    EXPECT_TRUE (p.isPresetDirty());
    EXPECT_TRUE (menuEntryEnabled (editor.buildWorkflowMenu(), "Undo")) << "a randomise is one step to undo";

    const auto mod1 = tree.getRawParameterValue ("mod1Amount")->load();
    const auto source2 = tree.getRawParameterValue ("mod2Source")->load();
    editor.randomisePatch ("movement");
    EXPECT_EQ (tree.getRawParameterValue ("mod1Amount")->load(), mod1);
    EXPECT_EQ (tree.getRawParameterValue ("mod2Source")->load(), source2);
    EXPECT_NEAR (cutoff(), 200.0f, 0.05f) << "outside the scope";

    editor.applyMacro (0, 0.5f, widgets::StatusFooter::MacroGesture::begin);
    editor.applyMacro (0, 0.5f, widgets::StatusFooter::MacroGesture::end);
    EXPECT_NEAR (tree.getRawParameterValue ("drive")->load(), 10.0f, 0.01f);
    EXPECT_NEAR (tree.getRawParameterValue ("feedbackAmount")->load(), 0.14f, 0.001f);
}

TEST (Editor, EachEditIsOneUndoStep)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    auto values = [&p]
    {
        std::vector<float> v;
        for (auto* parameter : p.getParameters())
            v.push_back (parameter->getValue());
        return v;
    };
    auto expectValues = [&] (const std::vector<float>& expected, const char* what)
    {
        const auto now = values();
        for (size_t i = 0; i < now.size(); ++i)
            EXPECT_NEAR (now[i], expected[i], 1e-5f) << what << ": " << p.getParameters()[(int) i]->getName (40);
    };

    const auto before = values();
    test::drag (editor.getHeader().glideChip, { 48, 20 }, { { 48, 10 }, { 48, 0 }, { 48, -20 } });
    const auto afterDrag = values();
    editor.getHeader().legatoButton.triggerClick();
    test::settle();
    const auto afterClick = values();
    ASSERT_TRUE (matrix::assignSourceToDestination (p, 5, 14)); // source, destination and amount in one drop
    const auto afterDrop = values();
    ASSERT_NE (before, afterDrag);
    ASSERT_NE (afterDrag, afterClick);
    ASSERT_NE (afterClick, afterDrop);

    EXPECT_TRUE (editor.keyPressed (ctrl ('Z')));
    expectValues (afterClick, "undo of the drop");
    editor.undoEdit();
    expectValues (afterDrag, "undo of the click");
    EXPECT_TRUE (editor.keyPressed (ctrl ('Z')));
    expectValues (before, "undo of the drag");
    EXPECT_TRUE (editor.keyPressed (ctrl ('Z', true)));
    expectValues (afterDrag, "redo");
    EXPECT_TRUE (editor.keyPressed (ctrl ('Y')));
    expectValues (afterClick, "redo");
}

TEST (Editor, TypedValuesReadWhatTheDisplayShows)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    Editor editor (p, temp.file);
    const auto controls = valueControls (editor);
    ASSERT_GT (controls.size(), 30u);

    // Each control's text, at five points of its range, reads back to a value shown the same way.
    for (const auto& c : controls)
        for (double proportion : { 0.0, 0.2, 0.5, 0.8, 1.0 })
        {
            const double v = c.slider->proportionOfLengthToValue (proportion);
            const auto shown = c.slider->getTextFromValue (v);
            const auto parsed = c.parse (shown);
            ASSERT_TRUE (parsed.has_value()) << c.name << " " << shown;
            EXPECT_EQ (c.slider->getTextFromValue (*parsed), shown) << c.name << " at " << proportion;
        }

    // Names repeat across cards; the one whose text carries the unit is meant.
    auto find = [&] (const juce::String& name, const juce::String& unit) -> const ValueControl&
    {
        for (const auto& c : controls)
            if (c.name == name && c.slider->getTextFromValue (c.slider->getMaximum()).contains (unit))
                return c;
        ADD_FAILURE() << "no control " << name;
        return controls.front();
    };
    // nullopt: refused; +-1e300: the end of the range. The first "A" row starts from "5ms".
    constexpr double top = 1e300;
    const struct { const char* control; const char* unit; const char* typed; std::optional<double> expected; double tolerance; } rows[] = {
        { "A", "s", "5ms", 0.005, 1e-6 },           { "A", "s", "250 ms", 0.25, 1e-9 },
        { "A", "s", "0.5 s", 0.5, 1e-9 },           { "A", "s", "2", 0.002, 1e-9 },
        { "A", "s", "900 s", top, 0 },            { "A", "s", "fast", std::nullopt, 0 },
        { "A", "s", "3 Hz", std::nullopt, 0 },      { "CUTOFF", "Hz", "1.2 kHz", 1200.0, 1e-6 },
        { "CUTOFF", "Hz", "440", 440.0, 1e-6 },          { "CUTOFF", "Hz", "5 Hz", 20.0, 1e-3 },
        { "RESO", "%", "40%", 0.4, 1e-6 },               { "RESO", "%", "0.4", 0.004, 1e-6 },
        { "ENV", "dB", "-6 dB", -6.0, 1e-6 },            { "SEMI", "st", "+7 st", 7.0, 0 },
        { "SEMI", "st", "7.4", 7.0, 0 },                 { "SEMI", "st", "-30", -12.0, 0 },
        { "Octave", "", "+1", 3.0, 0 },                  { "Octave", "", "-2", 0.0, 0 },
        { "Glide amount", "s", "250 ms", 0.25, 1e-6 },   { "Glide amount", "s", "1.5 s", 1.5, 1e-6 },
        { "Master volume", "dB", "-inf", -60.0, 0 },     { "Master volume", "dB", "-12 dB", -12.0, 1e-6 },
        { "Master volume", "dB", "", std::nullopt, 0 },   { "Master volume", "dB", "-1e9 dB", -60.0, 0 },  { "PHASE", "\xc2\xb0", "+90" "\xc2\xb0", 90.0, 1e-6 },
    };
    for (const auto& r : rows)
    {
        const auto& c = find (r.control, juce::CharPointer_UTF8 (r.unit));
        if (juce::String (r.typed) == "5ms")
            c.slider->setValue (0.005, juce::sendNotificationSync);
        const auto parsed = c.parse (juce::CharPointer_UTF8 (r.typed));
        ASSERT_EQ (parsed.has_value(), r.expected.has_value()) << r.control << " " << r.typed;
        if (r.expected)
            EXPECT_NEAR (*parsed, *r.expected == top ? c.slider->getMaximum() : *r.expected, r.tolerance) << r.control << " " << r.typed;
    }
}

TEST (Editor, NoAllocationInProcessBlockOrHostAutomationWhileTheEditorRuns)
{
    TempSettings temp;
    MorvaneAudioProcessor p;
    p.setRateAndBufferSizeDetails (48000.0, 256);
    p.prepareToPlay (48000.0, 256);
    Editor editor (p, temp.file);
    juce::AudioBuffer<float> buffer (2, 256);
    juce::MidiBuffer midi;
    midi.ensureSize (64);
    long allocations = 0;
    for (int view = 0; view < 6; ++view)
    {
        editor.setActiveView (view);
        for (int block = 0; block < 8; ++block)
        {
            midi.clear();
            if (block % 4 == 0)
                midi.addEvent (juce::MidiMessage::noteOn (1, 36 + block, 0.9f), 3);
            {
                test::AllocationCounter counter;
                p.processBlock (buffer, midi);
                allocations += counter.allocations();
            }
            editor.refreshReadouts();
            juce::MessageManager::getInstance()->runDispatchLoopUntil (1);
        }
        EXPECT_EQ (allocations, 0) << "processBlock, view " << view;

        // A host automating every parameter from a thread of its own, with this view showing: the
        // editor's listeners only post.
        long hostAllocations = -1;
        std::thread host ([&]
        {
            test::AllocationCounter counter;
            for (float v : { 0.9f, 0.1f })
                for (auto* parameter : p.getParameters())
                    parameter->setValueNotifyingHost (v);
            hostAllocations = counter.allocations();
        });
        host.join();
        EXPECT_EQ (hostAllocations, 0) << "host automation, view " << view;
        juce::MessageManager::getInstance()->runDispatchLoopUntil (5);
    }
}

TEST (Snapshot, EachScaleHasItsSizeAndTheThemeGround)
{
    const std::pair<float, juce::Point<int>> sizes[] = { { 0.75f, { 999, 621 } }, { 1.0f, { 1332, 828 } },
                                                         { 1.25f, { 1665, 1035 } }, { 1.5f, { 1998, 1242 } } };
    for (auto [scale, size] : sizes)
    {
        snapshot::SnapshotOptions o;
        o.scale = scale;
        o.theme = "ochreEraDay";
        juce::String error;
        const auto image = snapshot::renderSnapshot (o, error);
        ASSERT_TRUE (image.has_value()) << error;
        EXPECT_EQ (image->getWidth(), size.x);
        EXPECT_EQ (image->getHeight(), size.y);
        // The margin left of the header shows the ground.
        EXPECT_EQ (image->getPixelAt (4, image->getHeight() / 2), juce::Colour (0xffe5dac0)) << scale;
    }
    applyThemeEntry (darkTheme());
}

TEST (Snapshot, CommandLineRefusesBadInputAndWritesNoFile)
{
    const auto dir = morvane::test::uniqueTempFile ("morvane-snap");
    dir.createDirectory();
    const auto out = dir.getChildFile ("a.png");
    const auto badTheme = dir.getChildFile ("bad.json");
    badTheme.replaceWithText ("[1]");
    const juce::StringArray cases[] = {
        { "--out", out.getFullPathName(), "--view", "mixer" },
        { "--out", out.getFullPathName(), "--scale", "2" },
        { "--out", out.getFullPathName(), "--theme", "neon" },
        { "--out", out.getFullPathName(), "--theme-file", badTheme.getFullPathName() },
        { "--out", out.getFullPathName(), "--theme-file", dir.getChildFile ("none.json").getFullPathName() },
        { "--out", out.getFullPathName(), "--set", "noSuchParameter=1" },
        { "--out", out.getFullPathName(), "--factory", "no such preset" },
        { "--view", "canvas" },
    };
    for (const auto& args : cases)
    {
        juce::ChildProcess process;
        juce::StringArray command { MORVANE_SNAPSHOT_PATH };
        command.addArray (args);
        ASSERT_TRUE (process.start (command, juce::ChildProcess::wantStdErr | juce::ChildProcess::wantStdOut));
        const auto output = process.readAllProcessOutput();
        process.waitForProcessToFinish (60000);
        EXPECT_EQ (process.getExitCode(), 2u) << args.joinIntoString (" ");
        EXPECT_TRUE (output.startsWith ("morvane-snapshot: ")) << output;
        EXPECT_FALSE (out.exists()) << args.joinIntoString (" ");
        out.deleteFile();
    }

    juce::ChildProcess ok;
    ASSERT_TRUE (ok.start (juce::StringArray { MORVANE_SNAPSHOT_PATH, "--out", out.getFullPathName(), "--view", "matrix",
                                               "--factory", "reese classic", "--set", "drive=6" }));
    ok.waitForProcessToFinish (60000);
    EXPECT_EQ (ok.getExitCode(), 0u);
    const auto image = juce::ImageFileFormat::loadFrom (out);
    EXPECT_EQ (image.getWidth(), 1332);
    EXPECT_EQ (image.getHeight(), 828);
    dir.deleteRecursively();
}
