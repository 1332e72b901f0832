#include "ui/theme/Themes.h"
#include "ui/theme/Tokens.h"
#include "widgets/WidgetTheme.h"

#include <gtest/gtest.h>

using namespace morvane::ui;

namespace
{
// The theme table as written down for designers: groups bg / border / text / accent / semantic /
// source / control, colours in token order.
struct Written
{
    const char* id;
    const char* name;
    const char* colours;
};

const Written written[] = {
    { "dark", "Dark", "0b0b0a 131617 1c2122 070808 / 556266 d7ff37 / f2f4e8 c5cdd3 97a4ad 586264 / c8f500 edff77 d7ff37 1a2700 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 1c2122 263032 7a898e c8f500 f2f4e8 c8f500" },
    { "velvetReactor", "Velvet Reactor", "130018 1f0028 2a0035 0a0010 / 7e5e88 d7ff37 / eee4f2 c8b8d0 988ca5 605068 / bf6bff e3c5ff d89aff 281245 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 2a0035 3d004d 988ca5 bf6bff eee4f2 bf6bff" },
    { "limeAfterimage", "Lime Afterimage", "101800 1a2700 253600 080c00 / 6e7c2e d7ff37 / eef2e2 c8d0ae 98a57e 5e6840 / c8f500 edff77 d7ff37 2a3d00 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 253600 344800 98a57e c8f500 eef2e2 c8f500" },
    { "dataOrchid", "Data Orchid", "0e0030 18004a 250070 070018 / 6e5ab0 d7ff37 / e8e4f2 bdb5d8 8c85ab 554f70 / 9b6fff cfb5ff b98cff 1e0f4a 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 250070 320099 8c85ab 9b6fff e8e4f2 9b6fff" },
    { "bunkerBloom", "Bunker Bloom", "161616 202020 2d2d2d 0d0d0d / 6e6e6e d7ff37 / eeeeee c5c5c5 979797 5e5e5e / ff6ac1 ffb5de ff8fcd 401029 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 2d2d2d 3d3d3d 979797 ff6ac1 eeeeee ff6ac1" },
    { "terracottaPulse", "Terracotta Pulse", "1a0807 2a1110 3d1b19 0f0504 / 8a4a40 d7ff37 / f2e8e6 d3bbb6 a28b83 685550 / ff8a5c ffc5a8 ffa77a 44170d 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 3d1b19 4f2520 a28b83 ff8a5c f2e8e6 ff8a5c" },
    { "halogenMint", "Halogen Mint", "001619 002429 00343c 000e10 / 3f8895 d7ff37 / e6f2f0 b0cecc 7e9f9d 4f6e6c / 5ee7c2 b0ffeb 92f4d2 082e26 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 00343c 00444e 7e9f9d 5ee7c2 e6f2f0 5ee7c2" },
    { "saffronStatic", "Saffron Static", "1a1100 261900 382500 0d0800 / 7a551e d7ff37 / f2ede0 d3c7a5 a59070 6b5840 / ffc857 ffe19e ffd685 3a2700 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 382500 4a3300 a59070 ffc857 f2ede0 ffc857" },
    { "cobaltCathedral", "Cobalt Cathedral", "070c1f 101933 1a2a52 03060f / 4a6395 d7ff37 / e6edf4 b5c0d8 8294b0 505c70 / 4f8fff b5d0ff 97bbff 0a1f44 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 1a2a52 243669 8294b0 4f8fff e6edf4 4f8fff" },
    { "oxbloodTape", "Oxblood Tape", "180408 26060c 380a12 0d0205 / 9b3d4d d7ff37 / f2e8e8 d8b5b5 a88282 6b5050 / e54a5c ffa8b0 ff7a8a 2d050a 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 380a12 4f0e18 a88282 e54a5c f2e8e8 e54a5c" },
    { "forestCassette", "Forest Cassette", "081a08 122a12 1f3d1b 040d04 / 4d7e45 d7ff37 / e8f2e6 bed5b5 88a582 506850 / a8ff60 d5ffa0 c0ff80 1a3505 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 1f3d1b 2a4f22 88a582 a8ff60 e8f2e6 a8ff60" },
    { "saveIcon", "Save Icon", "0a1428 132238 1f3354 05091a / 6e89b0 d7ff37 / e8f1fb b8c7de 8497b5 4f5c76 / 4fb5ff a7d8ff ffd24a 062046 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 1f3354 2a446e 8fa3c0 4fb5ff e8f1fb ff7a1a" },
    { "ochreEra", "Ochre Era", "1a1815 252320 3d3a30 100e0b / 9c9072 d7ff37 / f5efdd d2c8ae 9f947a 645a48 / ffaa3a ffd58a ff6534 3d2a0a 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 3d3a30 4f4b3f b0a485 ffaa3a f5efdd ffaa3a" },
    { "vaporPlinth", "Vapor Plinth", "12082a 1e1042 2d1b5c 080018 / 7c68c8 d7ff37 / f6e8ff c8b5e2 9685b5 60547a / ff7baa ffb8d4 7de3ff 3d0828 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 2d1b5c 3f2980 9e85d6 ff7baa f6e8ff ff7baa" },
    { "dcwWindow", "DCW Window", "10161a 192026 252d34 070a0d / 6f8088 d7ff37 / e8f0f2 b5c2c8 8898a0 556068 / 4de57a a0f4b8 e63125 0a2d1a 55b9ff ff7a1a ff3c77 / ffb23e ff5e6c / f2f4e8 a8b2be 39d4ff ff6ac1 c8f500 7ab8ff b98cff / 252d34 303a43 8898a0 4de57a e8f0f2 4de57a" },
    { "ochreEraDay", "Ochre Era Day", "e5dac0 efe5c9 ddd2b5 faf6ea / 8a7a55 5f8000 / 1f1b14 4d442a 7d6f4f b5a789 / a65a00 4d2200 c42e1f ffe9b5 1e5c99 c24a00 b0156d / 8c6a00 b5151e / 2a1f0e 6b5f47 006b8c 9b1a6b 6b7300 1b4f8a 5f2b9c / ddd2b5 ecddb0 8a7a55 a65a00 1f1b14 a65a00" },
    { "saveIconSticker", "Save Icon Sticker", "eceef2 f5f6f9 dde2ea fcfdff / 8898b0 0058c9 / 0e1828 2d405a 5c6e88 95a2b5 / 0073b5 003d6e e6a500 b8dcf5 1b5c9a b85100 a4156d / b07000 c71b25 / 1a2438 5c6b85 006a92 b12873 4f7000 143f7a 4c1f92 / dde2ea eaeff5 8898b0 0073b5 0e1828 0073b5" },
    { "vaporDaydream", "Vapor Daydream", "fce9e0 fef1ed f5d6cc fffcfb / b07898 c8156f / 2b1340 5a2d7f 8055a8 b89dcc / d62a8a 5c0f3a 1fa0cc ffd8e8 1a85b0 c24a1a b0156d / b57000 b81525 / 1f1338 6f5588 006d8e b0156d 6e7800 1b4fa0 5a1b9f / f5d6cc ffe5dc b07898 d62a8a 2b1340 d62a8a" },
};

std::vector<juce::uint32> parseColours (const juce::String& text)
{
    std::vector<juce::uint32> out;
    auto words = juce::StringArray::fromTokens (text, " /", "");
    words.removeEmptyStrings();
    for (const auto& word : words)
        out.push_back (0xff000000u | (juce::uint32) word.getHexValue32());
    return out;
}

// Every test leaves the dark theme applied and published for the rest of the suite.
struct Themes : ::testing::Test
{
    void TearDown() override { applyThemeEntry (darkTheme()); publishWidgetTheme(); }
};
}

TEST_F (Themes, EveryBuiltInThemeMatchesTheTableInOrder)
{
    ASSERT_EQ (std::size (written), builtInThemes().size());
    for (size_t t = 0; t < std::size (written); ++t)
    {
        const auto& entry = builtInThemes()[t];
        EXPECT_STREQ (written[t].id, entry.id);
        EXPECT_STREQ (written[t].name, entry.displayName);
        const auto colours = parseColours (written[t].colours);
        ASSERT_EQ (colours.size(), (size_t) tokenCount) << entry.id;
        ASSERT_TRUE (applyThemeById (entry.id));
        for (int i = 0; i < tokenCount; ++i)
            EXPECT_EQ (token (i).getARGB(), colours[(size_t) i]) << entry.id << " " << tokenDottedName (i);
    }
}

TEST_F (Themes, IdsAreExactUntitledIsVelvetReactorAndUnknownChangesNothing)
{
    ASSERT_TRUE (applyThemeById ("untitled"));
    EXPECT_EQ (token (Token::bgGround), juce::Colour (0xff130018));
    EXPECT_FALSE (applyThemeById ("Dark"));
    EXPECT_FALSE (applyThemeById (""));
    EXPECT_EQ (token (Token::bgGround), juce::Colour (0xff130018));
}

TEST_F (Themes, JsonImportEdgeCases)
{
    juce::String error;
    applyThemeById ("halogenMint");
    EXPECT_FALSE (applyThemeJson (juce::JSON::parse ("[1, 2]"), &error));
    EXPECT_EQ (error, "Theme JSON must be an object.");
    EXPECT_FALSE (applyThemeJson (juce::JSON::parse ("{ broken"), nullptr));
    EXPECT_EQ (token (Token::bgGround), juce::Colour (0xff001619)) << "a refused file leaves the tokens";

    ASSERT_TRUE (applyThemeJson (juce::JSON::parse ("{}")));
    for (int i = 0; i < tokenCount; ++i)
        EXPECT_EQ (token (i).getARGB(), 0xff000000u | darkTheme().colours[(size_t) i]);

    struct Case { const char* json; Token token; juce::uint32 expected; };
    const Case cases[] = {
        { R"({ "bg": { "ground": "#12345" } })", Token::bgGround, 0xff0b0b0a },   // 5 digits: no value
        { R"({ "bg": { "ground": "80ff0000" } })", Token::bgGround, 0x80ff0000 }, // alpha first
        { R"({ "bg": { "ground": "  #A1B2C3 " } })", Token::bgGround, 0xffa1b2c3 },
        { R"({ "bg": "ff0000" })", Token::bgGround, 0xff0b0b0a },                // a group must be an object
        { R"({ "source": { "lfo1": "#010203" } })", Token::sourceLfo, 0xff010203 },
        { R"({ "control": { "value": 123456 } })", Token::controlValue, 0xff123456 },
        { R"({ "text": { "primary": "#1234567" } })", Token::textPrimary, 0xfff2f4e8 },
    };
    for (const auto& c : cases)
    {
        ASSERT_TRUE (applyThemeJson (juce::JSON::parse (c.json))) << c.json;
        EXPECT_EQ (token (c.token).getARGB(), c.expected) << c.json;
    }
}

TEST_F (Themes, TemplateIsACompleteFileOfDark)
{
    const auto text = customThemeTemplate();
    const auto lines = juce::StringArray::fromLines (text.trimEnd());
    ASSERT_EQ (lines.size(), 10);
    EXPECT_EQ (lines[0], "{");
    EXPECT_EQ (lines[1], "  \"name\": \"Custom\",");
    EXPECT_EQ (lines[3], "  \"border\": { \"hair\": \"#556266\", \"focus\": \"#d7ff37\" },");
    EXPECT_TRUE (lines[8].startsWith ("  \"control\": { \"fill\": \"#1c2122\", "));
    EXPECT_FALSE (lines[8].endsWith (","));
    EXPECT_EQ (lines[9], "}");
    applyThemeById ("vaporDaydream");
    ASSERT_TRUE (applyThemeJson (juce::JSON::parse (text)));
    for (int i = 0; i < tokenCount; ++i)
        EXPECT_EQ (token (i).getARGB(), 0xff000000u | darkTheme().colours[(size_t) i]) << tokenDottedName (i);
}

TEST_F (Themes, TokenLookupsByName)
{
    applyThemeEntry (darkTheme());
    EXPECT_EQ (tokenByName ("accent.modRing", juce::Colours::red), juce::Colour (0xff55b9ff));
    EXPECT_EQ (tokenByName ("transparent", juce::Colours::red), juce::Colours::transparentBlack);
    EXPECT_EQ (tokenByName ("source.lfo1", juce::Colours::red), juce::Colours::red) << "source tokens have no name";
    EXPECT_EQ (tokenByName ("bg.nothing", juce::Colours::red), juce::Colours::red);
    // accent.hero equals border.focus in dark; border comes before accent.
    EXPECT_EQ (tokenName (juce::Colour (0xffd7ff37)), "border.focus");
    // text comes first of all: text.primary and control.text are the same colour.
    EXPECT_EQ (tokenName (juce::Colour (0xfff2f4e8)), "text.primary");
    EXPECT_EQ (tokenName (juce::Colour (0xff010203)), "");

    juce::Label label;
    setThemeProperty (label, themeProperty::label, juce::Colour (0xff97a4ad));
    EXPECT_EQ (label.getProperties()[themeProperty::label].toString(), "text.tertiary");
    setThemeProperty (label, themeProperty::label, juce::Colour (0xff010203));
    EXPECT_EQ (label.getProperties()[themeProperty::label].toString(), "text.tertiary") << "no token: unchanged";
}

TEST_F (Themes, PublishedWidgetPaletteFollowsTheTokens)
{
    applyThemeById ("ochreEraDay");
    publishWidgetTheme();
    const auto& theme = ostrel::widgets::WidgetTheme::current();
    const std::pair<int, Token> mapping[] = { { 0, Token::bgGround }, { 2, Token::bgPanel }, { 3, Token::bgSurface2 },
                                              { 7, Token::textTertiary }, { 11, Token::accentModRing },
                                              { 13, Token::accentModRing }, { 17, Token::semanticError } };
    for (auto [index, source] : mapping)
        EXPECT_EQ (theme.colour (index), token (source)) << index;
    EXPECT_EQ (theme.id, "ostrel.dark");
    EXPECT_FALSE (theme.dark);
    EXPECT_EQ (theme.colour (99), ostrel::widgets::WidgetTheme::defaultColour (99));
}

TEST_F (Themes, RecolourWalksLabelsAndEditors)
{
    applyThemeById ("saveIconSticker");
    juce::Component root, inner;
    juce::Label upper ({}, "LFO"), mixed ({}, "Lfo"), tagged ({}, "x"), hidden ({}, "  RATE ");
    juce::TextEditor editor;
    tagged.getProperties().set (themeProperty::label, "accent.live");
    editor.getProperties().set (themeProperty::editorBg, "bg.panel");
    editor.getProperties().set (themeProperty::editorFocus, "border.focus");
    root.addAndMakeVisible (upper);
    root.addAndMakeVisible (inner);
    inner.addAndMakeVisible (mixed);
    inner.addAndMakeVisible (tagged);
    inner.addChildComponent (hidden);
    inner.addAndMakeVisible (editor);
    const auto outlineBefore = editor.findColour (juce::TextEditor::outlineColourId);

    recolourComponents (root);
    EXPECT_EQ (upper.findColour (juce::Label::textColourId), token (Token::textSecondary));
    EXPECT_EQ (mixed.findColour (juce::Label::textColourId), token (Token::textTertiary));
    EXPECT_EQ (hidden.findColour (juce::Label::textColourId), token (Token::textSecondary));
    EXPECT_EQ (tagged.findColour (juce::Label::textColourId), token (Token::accentLive));
    EXPECT_EQ (editor.findColour (juce::TextEditor::backgroundColourId), token (Token::bgPanel));
    EXPECT_EQ (editor.findColour (juce::TextEditor::focusedOutlineColourId), token (Token::borderFocus));
    EXPECT_EQ (editor.findColour (juce::CaretComponent::caretColourId), token (Token::borderFocus));
    EXPECT_EQ (editor.findColour (juce::TextEditor::outlineColourId), outlineBefore);
}
