#include "ui/Header.h"

#include "audio/PluginProcessor.h"
#include "ui/theme/Tokens.h"
#include "ui/theme/Typography.h"

#include "BinaryData.h"

namespace morvane::ui
{
namespace
{
const juce::Image& logo()
{
    static const juce::Image image = []
    {
        int size = 0;
        const auto* data = BinaryData::getNamedResource ("icon_1024_png", size);
        return data != nullptr ? juce::ImageFileFormat::loadFrom (data, (size_t) size) : juce::Image();
    }();
    return image;
}

juce::String octaveText (juce::AudioProcessorValueTreeState& parameters, double value)
{
    auto* choice = dynamic_cast<juce::AudioParameterChoice*> (parameters.getParameter ("octave"));
    if (choice == nullptr)
        return "0";
    const auto text = choice->choices[juce::jlimit (0, choice->choices.size() - 1, juce::roundToInt (value))];
    return text.isEmpty() ? juce::String ("0") : text;
}
}

void Header::Listener::handleAsyncUpdate()
{
    if (auto* h = header.get())
    {
        if (refreshesTransport)
            h->refreshTransport();
        else
            h->repaint();
    }
}

Header::Header (MorvaneAudioProcessor& p)
    : octaveDownChip ("-", "Octave down", "Lower oscillator pitch by one octave"),
      octaveUpChip ("+", "Octave up", "Raise oscillator pitch by one octave"),
      octaveChip ("Octave", [&tree = p.getParameterTree()] (double v) { return octaveText (tree, v); }),
      glideChip ("Glide amount", header::formatGlideChip),
      bpmDisplay (p.getParameterTree()),
      masterChip ("Master volume", header::formatMasterChip),
      processor (p),
      parameters (p.getParameterTree())
{
    setName ("Header");
    for (auto* c : std::initializer_list<juce::Component*> { &strip, &octaveDownChip, &octaveChip, &octaveUpChip, &glideChip,
                                                             &legatoButton, &voiceModeButton, &bpmDisplay, &masterChip, &workflowButton, &settingsButton })
        addAndMakeVisible (c);

    octaveChip.setTooltip ("Current octave offset.");
    bpmDisplay.editable = true;
    bpmDisplay.setTooltip ("Standalone tempo for synced modulation. Double-click to edit.");

    octaveChip.attach (parameters.getParameter ("octave"), parameters.undoManager);
    glideChip.attach (parameters.getParameter ("glideTime"), parameters.undoManager);
    masterChip.attach (parameters.getParameter ("outputGain"), parameters.undoManager);
    if (auto* legato = parameters.getParameter ("legato"))
        legatoAttachment = std::make_unique<juce::ButtonParameterAttachment> (*legato, legatoButton, parameters.undoManager);
    voiceModeButton.offText = "MIX";
    voiceModeButton.onText = "RING";
    voiceModeButton.setTitle ("Voice mode");
    voiceModeButton.setTooltip ("Voice mode: the two oscillators mixed, or ring-modulated (one multiplied by the other).");
    if (auto* mode = parameters.getParameter ("mode"))
        voiceModeAttachment = std::make_unique<juce::ButtonParameterAttachment> (*mode, voiceModeButton, parameters.undoManager);

    strip.onPrevious = [this] { if (onPreviousPreset) onPreviousPreset(); };
    strip.onNext = [this] { if (onNextPreset) onNextPreset(); };
    strip.onBrowse = [this] { if (onBrowse) onBrowse(); };
    workflowButton.onClick = [this] { if (onWorkflow) onWorkflow(); };
    settingsButton.onClick = [this] { if (onSettings) onSettings(); };
    octaveDownChip.onClick = [this] { stepOctave (-1); };
    octaveUpChip.onClick = [this] { stepOctave (+1); };

    octaveListener = std::make_unique<Listener> (*this, false);
    syncListener = std::make_unique<Listener> (*this, true);
    parameters.addParameterListener ("octave", octaveListener.get());
    parameters.addParameterListener ("lfo1Sync", syncListener.get());
    parameters.addParameterListener ("lfoSyncBpm", syncListener.get());
    refreshTransport();
}

Header::~Header()
{
    parameters.removeParameterListener ("octave", octaveListener.get());
    parameters.removeParameterListener ("lfo1Sync", syncListener.get());
    parameters.removeParameterListener ("lfoSyncBpm", syncListener.get());
}

void Header::stepOctave (int delta)
{
    auto* choice = dynamic_cast<juce::AudioParameterChoice*> (parameters.getParameter ("octave"));
    if (choice == nullptr)
        return;
    const int next = juce::jlimit (0, choice->choices.size() - 1, choice->getIndex() + delta);
    if (next == choice->getIndex())
        return;
    choice->beginChangeGesture();
    choice->setValueNotifyingHost (choice->convertTo0to1 ((float) next));
    choice->endChangeGesture();
}

void Header::refreshTransport()
{
    const auto* sync = parameters.getRawParameterValue ("lfo1Sync");
    bpmDisplay.synced = sync != nullptr && sync->load() > 0.5f;
    bpmDisplay.setTooltip (bpmDisplay.editable ? "Standalone tempo for synced modulation. Double-click to edit."
                           : bpmDisplay.synced ? "Host tempo for synced modulation."
                                               : "Current modulation tempo readout.");
    double bpm = 120.0;
    bool fromHost = false;
    if (auto* playHead = processor.getPlayHead())
        if (const auto position = playHead->getPosition())
            if (const auto tempo = position->getBpm())
            {
                bpm = juce::jlimit (40.0, 240.0, *tempo);
                fromHost = true;
            }
    if (! fromHost)
        if (const auto* raw = parameters.getRawParameterValue ("lfoSyncBpm"))
            bpm = juce::jlimit (40.0, 240.0, (double) raw->load());
    if (! juce::approximatelyEqual (bpm, bpmDisplay.bpm))
        bpmDisplay.bpm = bpm;
    bpmDisplay.repaint();
    repaint (972, 0, 96, 22); // "BPM" or "SYNC BPM"
}

void Header::setOutputLevel (float db)
{
    db = juce::jlimit (-60.0f, 6.0f, db);
    if (juce::approximatelyEqual (db, outputDb))
        return;
    outputDb = db;
    repaint (1080, 0, 96, getHeight());
}

juce::Rectangle<int> Header::meterBar() const
{
    return { 1080, 67, juce::roundToInt (96.0f * juce::jlimit (0.0f, 1.0f, (outputDb + 60.0f) / 66.0f)), 4 };
}

void Header::paint (juce::Graphics& g)
{
    g.setColour (token (Token::borderHair));
    g.fillRect (0, getHeight() - 1, getWidth(), 1);

    if (logo().isValid())
    {
        juce::Graphics::ScopedSaveState saved (g);
        juce::Path clip;
        clip.addRoundedRectangle (8.0f, 22.0f, 44.0f, 44.0f, 12.0f);
        g.reduceClipRegion (clip);
        g.drawImage (logo(), { 8.0f, 22.0f, 44.0f, 44.0f }, juce::RectanglePlacement::stretchToFit);
    }
    drawTypeText (g, 0, "MORVANE", juce::Rectangle<int> (60, 22, 136, 44), token (Token::textPrimary), juce::Justification::centredLeft);

    const auto caption = [&] (const char* text, int x) {
        drawTypeText (g, 7, text, juce::Rectangle<int> (x, 0, 96, 22), token (Token::textTertiary), juce::Justification::centredLeft);
    };
    caption ("OCT", 648);
    caption ("GLIDE", 756);
    caption ("LEGATO", 864);
    caption ("MODE", 912);
    caption (bpmDisplay.synced ? "SYNC BPM" : "BPM", 972);
    caption ("MASTER", 1080);

    g.setColour (token (Token::borderHair));
    for (int x : dividers)
        g.fillRect (x, 16, 1, getHeight() - 32);

    g.setColour (token (Token::bgSurface2));
    g.fillRoundedRectangle (1080.0f, 67.0f, 96.0f, 4.0f, 2.0f);
    g.setColour (token (outputDb > -1.0f ? Token::semanticWarn : Token::accentPrimary));
    g.fillRoundedRectangle (meterBar().toFloat(), 2.0f);
}

void Header::resized()
{
    dividers = { 210, 642, 1074 };
    strip.setBounds (216, 0, 420, getHeight());
    octaveDownChip.setBounds (648, 22, 28, 44);
    octaveChip.setBounds (676, 22, 40, 44);
    octaveUpChip.setBounds (716, 22, 28, 44);
    glideChip.setBounds (756, 22, 96, 44);
    legatoButton.setBounds (864, 22, 44, 44);
    voiceModeButton.setBounds (912, 22, 48, 44);
    bpmDisplay.setBounds (972, 22, 96, 44);
    masterChip.setBounds (1080, 22, 96, 44);
    workflowButton.setBounds (1188, 22, 44, 44);
    settingsButton.setBounds (1240, 22, 44, 44);
}
}
