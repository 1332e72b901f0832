#include "render/RenderOptions.h"

#include <cmath>

namespace morvane::render
{
namespace
{
    constexpr double minRate = 8000.0, maxRate = 384000.0;
    constexpr int minBlock = 1, maxBlock = 65536;

    // A whole string that is a finite decimal number.
    std::optional<double> parseNumber (const juce::String& text)
    {
        const auto t = text.trim();
        if (t.isEmpty())
            return std::nullopt;

        const auto utf8 = t.toStdString();
        char* end = nullptr;
        const double v = std::strtod (utf8.c_str(), &end);
        if (end == utf8.c_str() || *end != '\0' || ! std::isfinite (v))
            return std::nullopt;
        return v;
    }

    std::optional<int> parseInteger (const juce::String& text)
    {
        const auto v = parseNumber (text);
        if (! v || *v != std::floor (*v) || std::abs (*v) > 1.0e9)
            return std::nullopt;
        return (int) *v;
    }

    juce::String parseNote (const juce::String& text, NoteSpec& note)
    {
        const auto fields = juce::StringArray::fromTokens (text, ":", "");
        if (fields.size() != 4)
            return "malformed --note '" + text + "': expected NOTE:VELOCITY:START:LENGTH";

        const auto n = parseInteger (fields[0]);
        if (! n || *n < 0 || *n > 127)
            return "malformed --note '" + text + "': NOTE must be a whole number from 0 to 127";

        const auto v = parseNumber (fields[1]);
        if (! v || *v < 0.0 || *v > 1.0)
            return "malformed --note '" + text + "': VELOCITY must be a number from 0 to 1";

        const auto s = parseNumber (fields[2]);
        if (! s || *s < 0.0)
            return "malformed --note '" + text + "': START must be a number of seconds, 0 or more";

        const auto l = parseNumber (fields[3]);
        if (! l || *l <= 0.0)
            return "malformed --note '" + text + "': LENGTH must be a number of seconds above 0";

        note = { *n, (float) *v, *s, *l };
        return {};
    }
}

juce::String usageText()
{
    return "usage: morvane-render --out FILE.wav [--preset FILE.xml | --factory NAME] [--set ID=VALUE]...\n"
           "                      [--state-in FILE] [--state-out FILE]\n"
           "                      [--note NOTE:VELOCITY:START:LENGTH]... [--midi FILE.mid]\n"
           "                      [--tail SECONDS] [--seconds SECONDS] [--max-seconds SECONDS]\n"
           "                      [--rate HZ] [--block SAMPLES] [--channels 1|2] [--format f32|s24|s16] [--bench]\n"
           "                      [--phrase FILE [--bpm BPM] [--swing PERCENT]]\n"
           "\n"
           "Renders the instrument headlessly through its own processor, as a host would, writing the\n"
           "WAV as it goes; long renders show their progress on stderr when it is a terminal.\n"
           "  --set ID=VALUE   a parameter in its own units (dB, Hz, seconds, a choice's index, 0/1)\n"
           "  --note           MIDI note 0-127, velocity 0-1, start and length in seconds\n"
           "  --preset FILE    a user preset file; the saved state names it as the instrument would\n"
           "  --midi           a standard MIDI file; all tracks merged, tempo map honoured\n"
           "  --seconds        length of the render; default: last event plus --tail (1 s)\n"
           "  --max-seconds    refuse a render longer than this (default 600)\n"
           "  --rate, --block  sample rate (default 48000) and block size (default 512)\n"
           "  --channels       output bus width (default 2)\n"
           "  --format         f32 (default), or s24 / s16 integers with triangular (TPDF) dither\n"
           "  --phrase FILE    play a step phrase through the instrument's own sequencer: one step a\n"
           "                   line, 'C2', 'C2 acc', 'C2 tie', 'tie', 'rest' (at most 16, looped);\n"
           "                   a state from --state-in plays its saved phrase when no notes are given\n"
           "  --bpm            the phrase's tempo, 40 to 240 (default 120)\n"
           "  --swing          delay of every second sixteenth, 50 (straight) to 75 percent\n"
           "  --bench          print the real-time factor of the processing loop\n"
           "  --factory NAME   a factory preset by display name or xml file name\n"
           "  --state-in FILE  restore a saved plug-in state before rendering\n"
           "  --state-out FILE write the plug-in state after rendering\n"
           "\n"
           "       morvane-render --list-factory | --list-parameters\n"
           "       morvane-render --audition DIR [--rate HZ] [--block SAMPLES]\n"
           "  --list-factory   one line per factory preset: category, name, xml, flagship mark\n"
           "  --list-parameters one line per parameter in host order: index, id, name\n"
           "  --version        the program's version\n"
           "  --audition DIR   render every factory preset on one bass phrase into DIR/<xml stem>.wav\n"
           "                   and print peak, RMS, spectral centroid and loudness of each\n";
}

ParseResult parseRenderOptions (const juce::StringArray& args)
{
    ParseResult result;
    auto& o = result.options;
    bool haveOut = false;

    for (int i = 0; i < args.size(); ++i)
    {
        const auto& arg = args[i];

        auto value = [&] (juce::String& into) -> bool
        {
            if (i + 1 >= args.size())
            {
                result.error = "option " + arg + " needs a value";
                return false;
            }
            into = args[++i];
            return true;
        };

        auto number = [&] (double lo, double hi, double& into) -> bool
        {
            juce::String text;
            if (! value (text))
                return false;
            const auto v = parseNumber (text);
            if (! v || *v < lo || *v > hi)
            {
                result.error = "option " + arg + " takes a number from " + juce::String (lo) + " to "
                               + juce::String (hi) + ", not '" + text + "'";
                return false;
            }
            into = *v;
            return true;
        };

        juce::String text;
        double v = 0.0;

        if (arg == "--help" || arg == "-h")
        {
            o.help = true;
            return result;
        }
        if (arg == "--version")
        {
            o.version = true;
            return result;
        }
        if (arg == "--out")
        {
            if (! value (text)) return result;
            if (text.isEmpty()) { result.error = "option --out needs a file name"; return result; }
            o.out = juce::File::getCurrentWorkingDirectory().getChildFile (text);
            haveOut = true;
        }
        else if (arg == "--preset")
        {
            if (! value (text)) return result;
            o.preset = juce::File::getCurrentWorkingDirectory().getChildFile (text);
        }
        else if (arg == "--midi")
        {
            if (! value (text)) return result;
            o.midi = juce::File::getCurrentWorkingDirectory().getChildFile (text);
        }
        else if (arg == "--set")
        {
            if (! value (text)) return result;
            const int eq = text.indexOfChar ('=');
            if (eq <= 0)
            {
                result.error = "malformed --set '" + text + "': expected ID=VALUE";
                return result;
            }
            const auto parsed = parseNumber (text.substring (eq + 1));
            if (! parsed)
            {
                result.error = "malformed --set '" + text + "': '" + text.substring (eq + 1) + "' is not a number";
                return result;
            }
            o.sets.push_back ({ text.substring (0, eq).trim(), (float) *parsed });
        }
        else if (arg == "--note")
        {
            if (! value (text)) return result;
            NoteSpec note;
            if (auto error = parseNote (text, note); error.isNotEmpty())
            {
                result.error = error;
                return result;
            }
            o.notes.push_back (note);
        }
        else if (arg == "--tail")
        {
            if (! number (0.0, 3600.0, o.tail)) return result;
        }
        else if (arg == "--seconds")
        {
            if (! number (0.0, longestRenderSeconds, v)) return result;
            o.seconds = v;
        }
        else if (arg == "--max-seconds")
        {
            if (! number (0.0, longestRenderSeconds, o.maxSeconds)) return result;
            if (o.maxSeconds <= 0.0) { result.error = "option --max-seconds takes a number of seconds above 0"; return result; }
        }
        else if (arg == "--rate")
        {
            if (! number (minRate, maxRate, o.rate)) return result;
        }
        else if (arg == "--block")
        {
            if (! number (minBlock, maxBlock, v)) return result;
            if (v != std::floor (v)) { result.error = "option --block takes a whole number of samples"; return result; }
            o.block = (int) v;
        }
        else if (arg == "--channels")
        {
            if (! value (text)) return result;
            if (text != "1" && text != "2")
            {
                result.error = "option --channels takes 1 or 2, not '" + text + "'";
                return result;
            }
            o.channels = text.getIntValue();
        }
        else if (arg == "--phrase")
        {
            if (! value (text)) return result;
            if (text.isEmpty()) { result.error = "option --phrase needs a file"; return result; }
            o.phrase = juce::File::getCurrentWorkingDirectory().getChildFile (text);
        }
        else if (arg == "--bpm")
        {
            if (! number (40.0, 240.0, o.bpm)) return result;
        }
        else if (arg == "--swing")
        {
            if (! number (50.0, 75.0, v)) return result;
            o.swing = v;
        }
        else if (arg == "--format")
        {
            if (! value (text)) return result;
            if (text == "f32") o.format = RenderOptions::Format::f32;
            else if (text == "s24") o.format = RenderOptions::Format::s24;
            else if (text == "s16") o.format = RenderOptions::Format::s16;
            else { result.error = "option --format takes f32, s24 or s16, not '" + text + "'"; return result; }
        }
        else if (arg == "--bench")
        {
            o.bench = true;
        }
        else if (arg == "--factory")
        {
            if (! value (o.factory)) return result;
            if (o.factory.isEmpty()) { result.error = "option --factory needs a preset name"; return result; }
        }
        else if (arg == "--list-factory")
        {
            o.listFactory = true;
        }
        else if (arg == "--list-parameters")
        {
            o.listParameters = true;
        }
        else if (arg == "--state-in" || arg == "--state-out" || arg == "--audition")
        {
            juce::String text;
            if (! value (text)) return result;
            if (text.isEmpty()) { result.error = "option " + arg + " needs a path"; return result; }
            const auto file = juce::File::getCurrentWorkingDirectory().getChildFile (text);
            (arg == "--state-in" ? o.stateIn : arg == "--state-out" ? o.stateOut : o.audition) = file;
        }
        else
        {
            result.error = "unknown option '" + arg + "' (see --help)";
            return result;
        }
    }

    if (o.preset && o.factory.isNotEmpty())
        result.error = "use either --preset or --factory, not both";
    else if (! haveOut && ! o.listFactory && ! o.listParameters && ! o.audition)
        result.error = "missing --out FILE.wav (see --help)";
    return result;
}
}
