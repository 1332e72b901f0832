#include "ui/Editor.h"

#include "audio/PluginProcessor.h"
#include "presets/PresetLibrary.h"
#include "ui/matrix/MatrixWiring.h"
#include "ui/theme/Themes.h"
#include "ui/theme/Tokens.h"
#include "ui/widgets/ActiveRoutes.h"

namespace morvane::ui
{
juce::File Editor::defaultSettingsFile()
{
    return juce::File::getSpecialLocation (juce::File::userApplicationDataDirectory)
        .getChildFile ("Morvane")
        .getChildFile ("Morvane.settings");
}

bool Editor::debugGridFromEnvironment()
{
    const auto value = juce::SystemStats::getEnvironmentVariable ("MORVANE_DEBUG_GRID", {}).trim().toLowerCase();
    return value == "1" || value == "true" || value == "yes" || value == "on";
}

Editor::Editor (MorvaneAudioProcessor& p, const juce::File& settingsFile)
    : juce::AudioProcessorEditor (p),
      processor (p),
      catalogue (presets::loadCatalogue()),
      header (p),
      fxSlideOut (p),
      randomEngine (std::random_device {}())
{
    setLookAndFeel (&lookAndFeel);
    setName ("Morvane");
    addAndMakeVisible (canvas);
    canvas.addAndMakeVisible (header);
    canvas.addAndMakeVisible (footer);

    if (settingsFile != juce::File())
    {
        juce::PropertiesFile::Options options;
        options.applicationName = "Morvane";
        options.filenameSuffix = "settings";
        options.osxLibrarySubFolder = "Application Support";
        options.storageFormat = juce::PropertiesFile::storeAsXML;
        options.millisecondsBeforeSaving = 0;
        settings = std::make_unique<juce::PropertiesFile> (settingsFile, options);
        displayScale = snapScale ((float) settings->getDoubleValue ("displayScale", 1.0));
        showTooltips = settings->getBoolValue ("showTooltips", true);
        themeName = settings->getValue ("themeName", "dark");
    }

    canvasView = std::make_unique<views::SingleCanvasView> (processor);
    // The browser keeps its favourites in the same settings object, so neither side loses the other's keys.
    browseView = std::make_unique<views::BrowseView> (processor, catalogue, settings.get());
    canvas.addAndMakeVisible (*canvasView);
    for (auto* c : { (juce::Component*) browseView.get(), (juce::Component*) &matrixSlideOut, (juce::Component*) &playOverlay,
                     (juce::Component*) &fxSlideOut, (juce::Component*) &settingsPanel })
        canvas.addChildComponent (c);
    playOverlay.onClose = [this] { setActiveView (canvasViewCode); };
    matrixSlideOut.onClose = [this] { setActiveView (canvasViewCode); };
    settingsPanel.onClose = [this] { setActiveView (canvasViewCode); };
    fxSlideOut.onClose = [this] { setActiveView (canvasViewCode); };
    browseView->onClose = [this] { setActiveView (canvasViewCode); };

    restoreTheme();
    setShowTooltips (showTooltips);
    debugGrid = debugGridFromEnvironment();

    setResizable (true, true);
    setConstrainer (&constrainer);
    const auto size = scaledCanvasSize (displayScale);
    setSize (size.x, size.y);
    layoutCanvas();

    header.onPreviousPreset = [this] { loadFactoryPreset (currentPresetIndex - 1); };
    header.onNextPreset = [this] { loadFactoryPreset (currentPresetIndex + 1); };
    header.onBrowse = [this] { setActiveView (browserView); };
    header.onWorkflow = [this] { showWorkflowMenu(); };
    header.onSettings = [this] { setActiveView (settingsView); };
    header.strip.onRename = [this] (const juce::String& name) { processor.setPresetName (name); refreshPresetDisplay(); };
    header.strip.onSave = [this] { saveCurrentPreset (false); };
    header.strip.onSaveAs = [this] { saveCurrentPreset (true); };
    header.strip.onLoad = [this] { loadPresetFromFile(); };
    header.strip.onReveal = [this] { revealUserPresetFolder(); };
    footer.onMatrix = [this] { toggleView (matrixView); };
    footer.onPlay = [this] { toggleView (playView); };
    footer.onFx = [this] { toggleView (fxView); };
    footer.onMacro = [this] (int index, float value, widgets::StatusFooter::MacroGesture gesture) { applyMacro (index, value, gesture); };
    browseView->onPresetChosen = [this] (juce::String xml) { presetChosenInBrowser (xml); };
    settingsPanel.onDisplayScale = [this] (float s) { setDisplayScale (s); settingsPanel.setScale (displayScale); };
    settingsPanel.onTooltips = [this] (bool b) { setShowTooltips (b); };
    settingsPanel.onThemeChosen = [this] (const juce::String& id) { chooseTheme (id); };
    settingsPanel.onImportTheme = [this] { chooseThemeJson(); };
    settingsPanel.onThemeFileDropped = [this] (const juce::File& f) { importThemeFile (f); };
    settingsPanel.onRevealThemes = [this] { revealThemesFolder(); };
    settingsPanel.onRevealUserPresets = [this] { revealUserPresetFolder(); };

    auto& wiring = matrix::wiringOf (processor);
    wiring.revealInMatrix = [this] (int destination)
    {
        setActiveView (matrixView);
        matrixSlideOut.markDestination (destination);
    };
    wiring.routingHighlight = [this] (int) { if (activeView != matrixView) repaint(); };

    currentPresetIndex = presets::positionOfSource (catalogue, processor.getPresetSource());

    compareA = processor.getParameterTree().copyState();
    compareB = compareA.createCopy();
    lastDirty = processor.isPresetDirty();

    refreshPresetDisplay();
    settingsPanel.setTooltips (showTooltips);
    settingsPanel.setThemeName (themeName);

    setActiveView (canvasViewCode);
    // The editor takes the keys itself when nothing inside it has them, so that its shortcuts
    // (undo, scale) work after a menu or a click on the ground.
    setWantsKeyboardFocus (true);
    startTimerHz (20);
}

Editor::~Editor()
{
    stopTimer();
    setLookAndFeel (nullptr);
    matrix::forgetWiring (processor);
}

juce::Rectangle<int> Editor::viewBounds (int view) const
{
    switch (view)
    {
        case browserView: return { 24, 0, 1284, 828 };
        case settingsView: return { 888, 104, 420, 636 };
        case matrixView: return { 24, 280, 1284, 460 };
        case playView: return { 24, 104, 1284, 636 };
        case fxView: return { 24, 114, 1284, 626 };
        default: return { 24, 104, 1284, 636 };
    }
}

juce::Component& Editor::getViewPanel (int view)
{
    switch (view)
    {
        case browserView: return *browseView;
        case settingsView: return settingsPanel;
        case matrixView: return matrixSlideOut;
        case playView: return playOverlay;
        case fxView: return fxSlideOut;
        default: return *canvasView;
    }
}

void Editor::layoutCanvas()
{
    canvas.setBounds (0, 0, canvasWidth, canvasHeight);
    canvas.setTransform (juce::AffineTransform::scale (displayScale));
    header.setBounds (24, 24, 1284, 72);
    footer.setBounds (24, 748, 1284, 56);
    for (int view = 0; view <= fxView; ++view)
        getViewPanel (view).setBounds (viewBounds (view));
}

void Editor::paint (juce::Graphics& g) { g.fillAll (token (Token::bgGround)); }

void Editor::paintOverChildren (juce::Graphics& g)
{
    if (! debugGrid)
        return;
    juce::Graphics::ScopedSaveState saved (g);
    g.addTransform (juce::AffineTransform::scale (displayScale));

    const juce::Rectangle<float> area (24.0f, 104.0f, 1284.0f, 636.0f);
    g.setColour (overlay::gridYellow.withAlpha (0.12f));
    g.fillRect (area);
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 12; ++column)
        {
            const float x = 24.0f + 108.0f * (float) column, y = 104.0f + 108.0f * (float) row;
            g.setColour (overlay::gridPink.withAlpha (0.36f));
            for (float dx : { 0.0f, 52.0f })
                for (float dy : { 0.0f, 52.0f })
                    g.drawRect (x + dx, y + dy, 44.0f, 44.0f, 1.0f);
            g.setColour (overlay::gridCyan.withAlpha (0.54f));
            g.drawRect (x, y, 96.0f, 96.0f, 2.0f);
            if (row == 0)
            {
                g.setColour (startupTextPrimary().withAlpha (0.72f));
                g.setFont (juce::Font (10.0f));
                g.drawText (juce::String (column + 1), juce::Rectangle<float> (x, y, 96.0f, 22.0f), juce::Justification::centred);
            }
        }
    g.setColour (overlay::gridCyan.withAlpha (0.7f));
    g.drawRect (area, 2.0f);
}

bool Editor::keyPressed (const juce::KeyPress& key)
{
    if (key == juce::KeyPress::escapeKey && activeView != canvasViewCode)
    {
        setActiveView (canvasViewCode);
        return true;
    }
    const auto mods = key.getModifiers();
    if (! mods.isCtrlDown())
        return false;
    const auto code = key.getKeyCode();
    const auto ch = key.getTextCharacter();
    auto is = [&] (juce::juce_wchar c) { return code == (int) c || ch == c; };
    if (is ('+') || is ('='))
    {
        setDisplayScale (nextScaleStep (displayScale, +1));
        return true;
    }
    if (is ('-') || is ('_'))
    {
        setDisplayScale (nextScaleStep (displayScale, -1));
        return true;
    }
    if (is ('0'))
    {
        setDisplayScale (1.0f);
        return true;
    }
    if (is ('z') || is ('Z') || is ('y') || is ('Y'))
    {
        const bool redo = code == 'Y' || code == 'y' || ch == 'y' || ch == 'Y' || mods.isShiftDown();
        redo ? redoEdit() : undoEdit();
        return true;
    }
    if (mods.isShiftDown() && (is ('G') || is ('g')))
    {
        debugGrid = ! debugGrid;
        repaint();
        return true;
    }
    return false;
}

void Editor::resized()
{
    const auto fit = ((float) getWidth() / (float) canvasWidth + (float) getHeight() / (float) canvasHeight) * 0.5f;
    const auto step = snapScale (fit);
    if (! juce::approximatelyEqual (step, displayScale))
    {
        displayScale = step;
        if (settings != nullptr)
        {
            settings->setValue ("displayScale", (double) displayScale);
            settings->saveIfNeeded();
        }
        settingsPanel.setScale (displayScale);
    }
    const auto wanted = scaledCanvasSize (displayScale);
    if (getWidth() != wanted.x || getHeight() != wanted.y)
    {
        juce::Component::SafePointer<Editor> safe (this);
        juce::MessageManager::callAsync ([safe] { if (safe != nullptr) safe->setDisplayScale (safe->displayScale); });
    }
    layoutCanvas();
}

void Editor::setDisplayScale (float scale)
{
    displayScale = snapScale (scale);
    if (settings != nullptr)
    {
        settings->setValue ("displayScale", (double) displayScale);
        settings->saveIfNeeded();
    }
    const auto size = scaledCanvasSize (displayScale);
    setSize (size.x, size.y);
    layoutCanvas();
    settingsPanel.setScale (displayScale);
}

void Editor::setShowTooltips (bool show)
{
    showTooltips = show;
    tooltipWindow.reset();
    if (show)
        tooltipWindow = std::make_unique<juce::TooltipWindow> (this, 500);
    if (settings != nullptr)
    {
        settings->setValue ("showTooltips", show);
        settings->saveIfNeeded();
    }
    settingsPanel.setTooltips (show);
}

void Editor::toggleView (int view) { setActiveView (activeView == view ? canvasViewCode : view); }

void Editor::setActiveView (int v)
{
    if (canvasView != nullptr)
    {
        canvasView->setVisible (v != browserView);
        canvasView->setModulationBadges (v == matrixView || v == playView || v == fxView);
    }
    browseView->setVisible (v == browserView);
    settingsPanel.setVisible (v == settingsView);
    if (v != matrixView)
        matrixSlideOut.markDestination (0);
    matrixSlideOut.setVisible (v == matrixView);
    playOverlay.setVisible (v == playView);
    fxSlideOut.setVisible (v == fxView);

    if (v == settingsView)
    {
        settingsPanel.toFront (false);
        settingsPanel.setScale (displayScale);
        settingsPanel.setTooltips (showTooltips);
        settingsPanel.setThemeName (themeName);
    }
    else if (v >= matrixView && v <= fxView)
    {
        getViewPanel (v).toFront (false);
    }

    footer.setVisible (v != browserView);
    footer.setMatrixOpen (v == matrixView);
    footer.setPlayOpen (v == playView);
    footer.setFxOpen (v == fxView);

    if (v != canvasViewCode && getViewPanel (v).isShowing())
        getViewPanel (v).grabKeyboardFocus();

    activeView = v;
    settingsPanel.setBounds (viewBounds (settingsView));
    repaint();
}

void Editor::timerCallback()
{
    if (auto* peer = getPeer(); peer != nullptr && peer->isFocused() && isShowing()
                                && juce::Component::getCurrentlyFocusedComponent() == nullptr)
        grabKeyboardFocus();

    header.refreshTransport();
    header.setOutputLevel (processor.getPeakDb());
    matrix::refreshKnobs (processor);

    footer.setSampleRate (processor.getSampleRate());
    footer.setCpuPercent (processor.getCpuPercent());
    auto& tree = processor.getParameterTree();
    const auto* legato = tree.getRawParameterValue ("legato");
    const auto* glide = tree.getRawParameterValue ("glideTime");
    footer.setVoiceText (juce::String (legato != nullptr && legato->load() > 0.5f ? "LEG" : "RETRIG") + " / GLIDE "
                         + widgets::formatGlideTime (glide != nullptr ? glide->load() : 0.0f));
    footer.setDirty (processor.isPresetDirty());

    if (processor.isPresetDirty() != lastDirty)
    {
        lastDirty = processor.isPresetDirty();
        refreshPresetDisplay();
    }
}
}
