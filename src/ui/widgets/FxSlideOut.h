#pragma once

#include "ui/widgets/EffectCards.h"

#include "widgets/SectionFrame.h"

#include <functional>
#include <memory>

namespace morvane
{
class MorvaneAudioProcessor;
}

namespace morvane::ui::widgets
{
// The six effect cards over the canvas, voice effects above and master effects below.
class FxSlideOut : public ostrel::widgets::SectionFrame
{
public:
    explicit FxSlideOut (MorvaneAudioProcessor& processor);
    ~FxSlideOut() override;

    std::function<void()> onClose;

    void paint (juce::Graphics&) override;
    void resized() override;

    MultibandDriveCard& getMultibandDriveCard() noexcept { return *multibandDriveCard; }
    ModFxCard& getModFxCard() noexcept { return *modFxCard; }
    PostEqCard& getPostEqCard() noexcept { return *postEqCard; }
    DelayCard& getDelayCard() noexcept { return *delayCard; }
    ReverbCard& getReverbCard() noexcept { return *reverbCard; }
    BitCrushCard& getBitCrushCard() noexcept { return *bitCrushCard; }
    juce::TextButton& getCloseButton() noexcept { return closeButton; }

private:
    MorvaneAudioProcessor& processor;
    juce::Label titleLabel, voiceLabel, masterLabel;
    juce::TextButton closeButton;
    std::unique_ptr<MultibandDriveCard> multibandDriveCard;
    std::unique_ptr<ModFxCard> modFxCard;
    std::unique_ptr<PostEqCard> postEqCard;
    std::unique_ptr<DelayCard> delayCard;
    std::unique_ptr<ReverbCard> reverbCard;
    std::unique_ptr<BitCrushCard> bitCrushCard;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (FxSlideOut)
};
}
