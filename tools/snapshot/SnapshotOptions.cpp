#include "snapshot/Snapshot.h"

#include "ui/EditorScale.h"
#include "ui/theme/Themes.h"

namespace morvane::snapshot
{
namespace
{
constexpr const char* viewNames[] = { "canvas", "browser", "settings", "matrix", "play", "fx" };
}

int viewCodeForName (const juce::String& name)
{
    for (int i = 0; i < (int) std::size (viewNames); ++i)
        if (name == viewNames[i])
            return i;
    return -1;
}

juce::String usageText()
{
    return "usage: morvane-snapshot --out FILE.png [--view canvas|browser|settings|matrix|play|fx] [--more]\n"
           "                        [--scale 0.75|1|1.25|1.5] [--theme ID | --theme-file FILE.json]\n"
           "                        [--factory NAME | --preset FILE] [--set ID=VALUE]...\n"
           "       morvane-snapshot --gallery --out FILE.png [--theme ID] [--scale S]\n"
           "       morvane-snapshot --icon PIXELS --out FILE.png   (the program's icon, 16 to 1024)\n"
           "       morvane-snapshot --version\n";
}

ParseResult parseSnapshotOptions (const juce::StringArray& args)
{
    ParseResult result;
    auto& o = result.options;
    for (int i = 0; i < args.size(); ++i)
    {
        const auto& arg = args[i];
        auto value = [&] (juce::String& into) {
            if (i + 1 >= args.size())
            {
                result.error = arg + " needs a value";
                return false;
            }
            into = args[++i];
            return true;
        };
        juce::String v;
        if (arg == "--help" || arg == "-h")
            o.help = true;
        else if (arg == "--version")
            o.version = true;
        else if (arg == "--gallery")
            o.gallery = true;
        else if (arg == "--icon")
        {
            if (! value (v)) return result;
            o.iconSize = v.containsOnly ("0123456789") && v.length() <= 4 ? v.getIntValue() : 0;
            if (o.iconSize < 16 || o.iconSize > 1024)
            {
                result.error = "--icon takes a size in pixels from 16 to 1024, not '" + v + "'";
                return result;
            }
        }
        else if (arg == "--more")
            o.secondFaces = true;
        else if (arg == "--out")
        {
            if (! value (v)) return result;
            o.out = juce::File::getCurrentWorkingDirectory().getChildFile (v);
        }
        else if (arg == "--view")
        {
            if (! value (v)) return result;
            o.view = viewCodeForName (v);
            if (o.view < 0)
            {
                result.error = "unknown view '" + v + "': use canvas, browser, settings, matrix, play or fx";
                return result;
            }
        }
        else if (arg == "--scale")
        {
            if (! value (v)) return result;
            const auto s = v.getFloatValue();
            bool known = v.containsOnly ("0123456789.");
            if (known)
            {
                known = false;
                for (auto step : ui::scaleSteps)
                    known = known || juce::approximatelyEqual (s, step);
            }
            if (! known)
            {
                result.error = "unknown scale '" + v + "': use 0.75, 1, 1.25 or 1.5";
                return result;
            }
            o.scale = ui::snapScale (s);
        }
        else if (arg == "--theme")
        {
            if (! value (v)) return result;
            if (ui::findTheme (v) == nullptr)
            {
                juce::StringArray ids;
                for (const auto& entry : ui::builtInThemes())
                    ids.add (entry.id);
                result.error = "unknown theme '" + v + "': use one of " + ids.joinIntoString (", ");
                return result;
            }
            o.theme = v;
        }
        else if (arg == "--theme-file")
        {
            if (! value (v)) return result;
            o.themeFile = juce::File::getCurrentWorkingDirectory().getChildFile (v);
        }
        else if (arg == "--factory")
        {
            if (! value (o.factory)) return result;
        }
        else if (arg == "--preset")
        {
            if (! value (v)) return result;
            o.preset = juce::File::getCurrentWorkingDirectory().getChildFile (v);
        }
        else if (arg == "--set")
        {
            if (! value (v)) return result;
            const auto eq = v.indexOfChar ('=');
            const auto number = v.substring (eq + 1).trim();
            if (eq <= 0 || number.isEmpty() || ! number.containsOnly ("0123456789.-+eE"))
            {
                result.error = "malformed --set '" + v + "': expected ID=VALUE with a number";
                return result;
            }
            o.sets.push_back ({ v.substring (0, eq).trim(), number.getFloatValue() });
        }
        else
        {
            result.error = "unknown option '" + arg + "'";
            return result;
        }
    }

    if (o.help || o.version)
        return result;
    if (o.out == juce::File())
        result.error = "--out FILE.png is required";
    else if (o.theme.isNotEmpty() && o.themeFile)
        result.error = "use either --theme or --theme-file, not both";
    else if (o.factory.isNotEmpty() && o.preset)
        result.error = "use either --preset or --factory, not both";
    return result;
}
}
