#include "EditorTestSupport.h"
#include "TestHelpers.h"

#include "ui/Editor.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/widgets/CardFaces.h"
#include "ui/widgets/RoutingRow.h"
#include "widgets/Widgets.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

using namespace morvane;
using namespace morvane::ui;
using morvane::test::TempSettings;

namespace
{
// One control of the editor as a musician meets it, and the gesture that takes it through its range:
// a long drag each way, every item of a list or cell of a group from the last to the first, a
// switch on and off, a slot's source chosen, a tempo typed.
struct Control
{
    enum Kind { slider, toggle, cells, list, bar, slotSource, tempo } kind;
    juce::Component* component;
    std::vector<juce::Button*> group;
};

void collectControls (juce::Component& c, std::vector<Control>& out)
{
    if (! c.isVisible() || c.getWidth() <= 0 || c.getHeight() <= 0 || dynamic_cast<widgets::FaceToggle*> (&c) != nullptr)
        return;
    if (dynamic_cast<juce::Slider*> (&c) != nullptr)
        return out.push_back ({ Control::slider, &c, {} });
    if (dynamic_cast<juce::ComboBox*> (&c) != nullptr)
        return out.push_back ({ Control::list, &c, {} });
    if (dynamic_cast<ostrel::widgets::BipolarBar*> (&c) != nullptr)
        return out.push_back ({ Control::bar, &c, {} });
    if (dynamic_cast<header::TransportBpmDisplay*> (&c) != nullptr)
        return out.push_back ({ Control::tempo, &c, {} });
    if (dynamic_cast<widgets::SourceChip*> (&c) != nullptr && dynamic_cast<widgets::RoutingRow*> (c.getParentComponent()) != nullptr)
        return out.push_back ({ Control::slotSource, c.getParentComponent(), {} });
    if (auto* button = dynamic_cast<juce::Button*> (&c))
    {
        if (button->getRadioGroupId() == 0)
        {
            if (button->getClickingTogglesState())
                out.push_back ({ Control::toggle, &c, {} });
            return;
        }
        auto* parent = c.getParentComponent();
        for (const auto& known : out)
            if (known.kind == Control::cells && known.group.front()->getParentComponent() == parent
                && known.group.front()->getRadioGroupId() == button->getRadioGroupId())
                return;
        Control group { Control::cells, &c, {} };
        for (auto* sibling : parent->getChildren())
            if (auto* cell = dynamic_cast<juce::Button*> (sibling); cell != nullptr && cell->isVisible()
                                                                     && cell->getRadioGroupId() == button->getRadioGroupId())
                group.group.push_back (cell);
        return out.push_back (group);
    }
    for (auto* child : c.getChildren())
        collectControls (*child, out);
}

// Seen: the press point of the control is the control itself, not something that covers it.
bool reachable (juce::Component& canvas, juce::Component& c)
{
    const auto at = canvas.getLocalPoint (&c, juce::Point<int> (c.getWidth() / 2, std::min (c.getHeight(), c.getWidth()) / 2));
    for (auto* hit = canvas.getComponentAt (at); hit != nullptr; hit = hit->getParentComponent())
        if (hit == &c)
            return true;
    return false;
}

// Turns the cards as a click on each visible MORE would.
void showFaces (juce::Component& c, bool second)
{
    if (! c.isVisible())
        return;
    if (auto* toggle = dynamic_cast<widgets::FaceToggle*> (&c))
        if (toggle->showsSecondFace() != second)
            toggle->showSecondFace (second);
    for (auto* child : c.getChildren())
        showFaces (*child, second);
}

void dragBy (juce::Component& c, juce::Point<int> from, juce::Point<int> step)
{
    c.mouseDown (test::mouseAt (c, from));
    auto at = from;
    for (int i = 0; i < 40; ++i)
        c.mouseDrag (test::mouseAt (c, at += step));
    c.mouseUp (test::mouseAt (c, at));
}

// The positions the control goes through, each followed by the call `after`.
void drive (const Control& control, const std::function<void()>& after)
{
    auto& c = *control.component;
    const juce::Point<int> press (c.getWidth() / 2, std::min (c.getHeight(), c.getWidth()) / 2);
    switch (control.kind)
    {
        case Control::slider:
            for (int direction : { -1, 1 })
            {
                dragBy (c, press, { 0, 200 * direction });
                after();
            }
            break;
        case Control::bar:
            for (int direction : { 1, -1 })
            {
                dragBy (c, press, { 200 * direction, 0 });
                after();
            }
            break;
        case Control::toggle:
            for (bool on : { true, false })
            {
                auto& button = static_cast<juce::Button&> (c);
                if (button.getToggleState() != on)
                    button.triggerClick();
                test::settle (1);
                after();
            }
            break;
        case Control::cells:
            for (auto cell = control.group.rbegin(); cell != control.group.rend(); ++cell)
            {
                (*cell)->triggerClick();
                test::settle (1);
                after();
            }
            break;
        case Control::list:
        {
            auto& box = static_cast<juce::ComboBox&> (c);
            for (int i = box.getNumItems() - 1; i >= 0; --i)
            {
                box.setSelectedItemIndex (i, juce::sendNotificationSync);
                after();
            }
            break;
        }
        case Control::slotSource:
            for (int index : { 12, 0 })
            {
                static_cast<widgets::RoutingRow&> (c).chooseSource (index);
                after();
            }
            break;
        case Control::tempo:
            for (auto* typed : { "999", "1" })
            {
                auto& display = static_cast<header::TransportBpmDisplay&> (c);
                display.beginEdit();
                display.getEditor()->setText (typed);
                display.endEdit (true);
                after();
            }
            break;
    }
}
}

// Every parameter that shapes the sound has a control in some view, on some face of its card, that
// the mouse can reach and that takes it to both ends of its range while nothing else moves.
TEST (Editor, EveryParameterHasAVisibleControlThatReachesBothEndsAlone)
{
    TempSettings settings;
    MorvaneAudioProcessor p;
    ui::Editor editor (p, settings.file);
    auto& state = p.getParameterTree();
    const auto& parameters = p.getParameters();
    const auto values = [&parameters]
    {
        std::vector<float> v;
        for (auto* q : parameters)
            v.push_back (q->getValue());
        return v;
    };
    // The sub's wave list folds its mode and wave into one, and moves both.
    const std::map<juce::String, juce::String> companion { { "subMode", "subWave" }, { "subWave", "subMode" } };
    std::set<juce::String> reached;

    // The second state shows what hides in the first: hertz detune, and the amounts of slots that have a source.
    std::vector<std::pair<juce::String, float>> states[2] = { {}, { { "detuneMode", 1.0f } } };
    for (int slot = 2; slot <= 8; ++slot)
        states[1].push_back ({ "mod" + juce::String (slot) + "Source", 1.0f });
    for (const auto& setting : states)
    {
        for (const auto& [id, v] : setting)
            test::setReal (state, id.toRawUTF8(), v);
        test::settle (30);
        const auto initial = values();
        std::set<juce::Component*> driven;
        for (int view : { 0, 3, 4, 5 })
            for (bool second : { false, true })
            {
                editor.setActiveView (view);
                showFaces (editor.getCanvas(), second);
                test::settle (5);
                std::vector<Control> controls;
                collectControls (editor.getCanvas(), controls);
                for (const auto& control : controls)
                {
                    if (driven.count (control.component) != 0 || ! reachable (editor.getCanvas(), *control.component))
                        continue;
                    driven.insert (control.component);
                    std::vector<float> low (parameters.size(), 2.0f), high (parameters.size(), -1.0f);
                    drive (control, [&]
                    {
                        const auto now = values();
                        for (size_t i = 0; i < now.size(); ++i)
                            low[i] = std::min (low[i], now[i]), high[i] = std::max (high[i], now[i]);
                    });
                    std::vector<juce::String> moved;
                    for (size_t i = 0; i < initial.size(); ++i)
                        if (low[i] != initial[i] || high[i] != initial[i])
                            moved.push_back (static_cast<juce::RangedAudioParameter*> (parameters[(int) i])->getParameterID());
                    for (size_t i = 0; i < initial.size(); ++i)
                    {
                        const auto id = static_cast<juce::RangedAudioParameter*> (parameters[(int) i])->getParameterID();
                        const bool alone = std::all_of (moved.begin(), moved.end(), [&] (const juce::String& m)
                                                        { return m == id || (companion.count (id) != 0 && companion.at (id) == m); });
                        if (low[i] == 0.0f && high[i] == 1.0f && alone)
                            reached.insert (id);
                    }
                    // Back to where it stood, so that each control starts from the same patch and view.
                    for (size_t i = 0; i < initial.size(); ++i)
                        if (parameters[(int) i]->getValue() != initial[i])
                            parameters[(int) i]->setValueNotifyingHost (initial[i]);
                    if (editor.getActiveView() != view)
                        editor.setActiveView (view);
                    test::settle (1);
                }
            }
    }
    for (auto* q : parameters)
    {
        const auto id = static_cast<juce::RangedAudioParameter*> (q)->getParameterID();
        if (id != "stereoMode")
            EXPECT_EQ (reached.count (id), 1u) << id << " has no visible control that takes it to both ends alone";
    }
}
