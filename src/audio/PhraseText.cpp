#include "audio/PhraseText.h"

namespace morvane
{
namespace
{
    const char* const pitchNames[] = { "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B" };
}

juce::String noteName (int note)
{
    note = juce::jlimit (0, 127, note);
    return juce::String (pitchNames[note % 12]) + juce::String (note / 12 - 1);
}

int parseNoteName (const juce::String& raw)
{
    const auto text = raw.trim();
    if (text.isEmpty())
        return -1;
    if (text.containsOnly ("0123456789"))
    {
        const int n = text.getIntValue();
        return text.length() <= 3 && n <= 127 ? n : -1;
    }

    static const int letterPitch[] = { 9, 11, 0, 2, 4, 5, 7 }; // A to G
    const auto letter = juce::CharacterFunctions::toUpperCase (text[0]);
    if (letter < 'A' || letter > 'G')
        return -1;
    int pitch = letterPitch[letter - 'A'];
    int i = 1;
    if (text[i] == '#') { ++pitch; ++i; }
    else if (text[i] == 'b') { --pitch; ++i; }
    const auto octaveText = text.substring (i);
    int octave = 0;
    if (octaveText == "-1")
        octave = -1;
    else if (octaveText.length() == 1 && juce::CharacterFunctions::isDigit (octaveText[0]))
        octave = octaveText[0] - '0';
    else
        return -1;
    const int note = (octave + 1) * 12 + pitch;
    return note >= 0 && note <= 127 ? note : -1;
}

juce::String phraseToText (const PhrasePattern& pattern)
{
    juce::StringArray lines;
    const int count = juce::jlimit (1, PhrasePattern::maxSteps, pattern.stepCount);
    for (int i = 0; i < count; ++i)
    {
        const auto& step = pattern.steps[(size_t) i];
        if (step.note < 0)
        {
            lines.add ("rest");
            continue;
        }
        auto line = noteName (step.note);
        if (step.accent)
            line << " acc";
        if (step.tied)
            line << " tie";
        lines.add (line);
    }
    return lines.joinIntoString ("\n");
}

juce::String phraseFromText (const juce::String& text, PhrasePattern& pattern)
{
    PhrasePattern read = pattern;
    read.steps = {};
    int count = 0, lineNumber = 0;
    for (auto line : juce::StringArray::fromLines (text))
    {
        ++lineNumber;
        // A comment starts at a '#' that begins a word, so that sharps like "D#3" stay notes.
        line = line.trim();
        for (int c = 0; c < line.length(); ++c)
            if (line[c] == '#' && (c == 0 || juce::CharacterFunctions::isWhitespace (line[c - 1])))
            {
                line = line.substring (0, c).trim();
                break;
            }
        if (line.isEmpty())
            continue;
        const auto where = "line " + juce::String (lineNumber) + ": ";
        if (count == PhrasePattern::maxSteps)
            return where + "a phrase has at most " + juce::String (PhrasePattern::maxSteps) + " steps";

        juce::StringArray words;
        words.addTokens (line, " \t", {});
        words.removeEmptyStrings();
        PhraseNote step;
        const auto first = words[0].toLowerCase();
        if (first == "rest" || first == "-")
        {
            if (words.size() > 1)
                return where + "a rest takes nothing after it, not '" + words[1] + "'";
        }
        else if (first == "tie")
        {
            if (words.size() > 1)
                return where + "'tie' alone holds the note before; write 'C2 tie' to tie a named note";
            const auto before = count > 0 ? read.steps[(size_t) count - 1] : PhraseNote {};
            if (before.note >= 0)
                step = { before.note, true, false };
        }
        else
        {
            const int note = parseNoteName (words[0]);
            if (note < 0)
                return where + "'" + words[0] + "' is not a note (C-1 to G9, 0 to 127), rest or tie";
            step.note = (std::int8_t) note;
            for (int w = 1; w < words.size(); ++w)
            {
                const auto flag = words[w].toLowerCase();
                if (flag == "acc" || flag == "accent")
                    step.accent = true;
                else if (flag == "tie")
                    step.tied = true;
                else
                    return where + "unknown word '" + words[w] + "' (acc, tie)";
            }
        }
        read.steps[(size_t) count++] = step;
    }
    if (count == 0)
        return "the phrase has no steps";
    read.stepCount = count;
    pattern = read;
    return {};
}
}
