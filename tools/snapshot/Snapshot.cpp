#include "BinaryData.h"
#include "snapshot/Snapshot.h"

#include "audio/PluginProcessor.h"
#include "audio/SafeXml.h"
#include "presets/PresetLibrary.h"
#include "render/RenderSession.h"
#include "snapshot/WidgetGallery.h"
#include "ui/Editor.h"
#include "ui/theme/Themes.h"
#include "ui/widgets/CardFaces.h"

#include <iostream>

namespace morvane::snapshot
{
namespace
{
bool applySettings (MorvaneAudioProcessor& processor, const std::vector<Setting>& sets, juce::String& error)
{
    auto& tree = processor.getParameterTree();
    for (const auto& s : sets)
    {
        auto* parameter = tree.getParameter (s.id);
        if (parameter == nullptr)
        {
            error = "unknown parameter id '" + s.id + "'";
            return false;
        }
        parameter->beginChangeGesture();
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (s.value));
        parameter->endChangeGesture();
    }
    return true;
}

bool checkThemeFile (const juce::File& file, juce::String& error)
{
    if (! file.existsAsFile())
    {
        error = "cannot read theme file '" + file.getFullPathName() + "'";
        return false;
    }
    const auto text = readWellFormedTextFile (file);
    if (! text)
    {
        error = "invalid theme file '" + file.getFullPathName() + "': not well-formed UTF-8 text.";
        return false;
    }
    if (const auto json = juce::JSON::parse (*text); ! json.isObject() || json.isArray())
    {
        error = "invalid theme file '" + file.getFullPathName() + "': Theme JSON must be an object.";
        return false;
    }
    return true;
}

juce::Image paint (juce::Component& component)
{
    juce::Image image (juce::Image::ARGB, component.getWidth(), component.getHeight(), true);
    juce::Graphics g (image);
    component.paintEntireComponent (g, true);
    return image;
}
}

namespace
{
void showSecondFaces (juce::Component& root)
{
    if (auto* toggle = dynamic_cast<ui::widgets::FaceToggle*> (&root))
        toggle->showSecondFace (true);
    for (auto* child : root.getChildren())
        showSecondFaces (*child);
}
}

std::optional<juce::Image> renderSnapshot (const SnapshotOptions& o, juce::String& error)
{
    if (o.themeFile && ! checkThemeFile (*o.themeFile, error))
        return std::nullopt;

    if (o.iconSize > 0)
    {
        // Icon themes want their sizes drawn from the one large picture, smoothly.
        int size = 0;
        const auto* data = BinaryData::getNamedResource ("icon_1024_png", size);
        const auto icon = data != nullptr ? juce::ImageFileFormat::loadFrom (data, (size_t) size) : juce::Image();
        if (! icon.isValid())
        {
            error = "the embedded icon cannot be read";
            return std::nullopt;
        }
        return icon.rescaled (o.iconSize, o.iconSize, juce::Graphics::highResamplingQuality);
    }

    if (o.gallery)
    {
        // The library alone, in the chosen palette and scale.
        if (o.theme.isNotEmpty())
            ui::applyThemeById (o.theme);
        else if (o.themeFile)
            ui::applyThemeJson (juce::JSON::parse (readWellFormedTextFile (*o.themeFile).value_or (juce::String())));
        else
            ui::applyThemeEntry (ui::darkTheme());
        ui::publishWidgetTheme();
        auto gallery = createWidgetGallery();
        juce::Component holder;
        holder.setSize (juce::roundToInt ((float) gallery->getWidth() * o.scale), juce::roundToInt ((float) gallery->getHeight() * o.scale));
        holder.addAndMakeVisible (*gallery);
        gallery->setTransform (juce::AffineTransform::scale (o.scale));
        return paint (holder);
    }

    MorvaneAudioProcessor processor;
    if (o.preset && ! presets::loadPresetFile (processor, *o.preset))
    {
        error = "cannot read preset '" + o.preset->getFullPathName() + "': no such file, or not an XML document";
        return std::nullopt;
    }
    // The factory lookup says itself what it could not find, with the closest names.
    if (o.factory.isNotEmpty() && ! render::applyFactoryPreset (processor, o.factory))
        return std::nullopt;
    if (! applySettings (processor, o.sets, error))
        return std::nullopt;

    // No settings file: the tool starts from the defaults and writes nowhere but its output.
    ui::applyThemeEntry (ui::darkTheme());
    ui::Editor editor (processor, juce::File());
    if (o.theme.isNotEmpty())
        editor.chooseTheme (o.theme);
    else if (o.themeFile)
        editor.importThemeFile (*o.themeFile);
    editor.setDisplayScale (o.scale);
    editor.setActiveView (o.view);
    if (o.secondFaces)
        showSecondFaces (editor);
    editor.refreshReadouts();
    return paint (editor);
}

int runSnapshot (const SnapshotOptions& o)
{
    juce::String error;
    const auto image = renderSnapshot (o, error);
    if (! image)
    {
        if (error.isNotEmpty())
            std::cerr << "morvane-snapshot: " << error << std::endl;
        return 2;
    }
    o.out.deleteFile();
    bool written = false;
    {
        juce::FileOutputStream stream (o.out);
        juce::PNGImageFormat png;
        written = stream.openedOk() && png.writeImageToStream (*image, stream);
    }
    if (! written)
    {
        o.out.deleteFile();
        std::cerr << "morvane-snapshot: cannot write '" << o.out.getFullPathName() << "'" << std::endl;
        return 1;
    }
    return 0;
}
}
