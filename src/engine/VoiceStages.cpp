#include "engine/VoiceEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace morvane
{
void VoiceEngine::applyStageSettingsAtNote() noexcept
{
    const bool pd = params.index (P::subMode) == 1;
    const int subWave = params.index (P::subWave);
    for (auto& sub : subs)
        sub.setShape (pd, subWave);

    const int driveMode = params.index (P::driveMode);
    for (auto& bank : shaperBanks)
        for (auto& shaper : bank)
            shaper.setModeNow (driveMode);

    noise.setColour (params.index (P::noiseColour));

    drivePosition = previousDrivePosition = std::clamp (params.index (P::drivePosition), 0, 1);
    positionFadeCounter = 0;
    driveOn = params.on (P::driveOn);
    driveSwitchCounter = 0;
    settleDriveSwitch();
    subRouting = previousSubRouting = std::clamp (params.index (P::subRouting), 0, 1);
    routingFadeCounter = 0;
}

void VoiceEngine::updateStageSettings() noexcept
{
    const bool pd = params.index (P::subMode) == 1;
    const int subWave = params.index (P::subWave);
    for (auto& sub : subs)
        sub.setShape (pd, subWave);

    noise.setColour (params.index (P::noiseColour));

    const int driveMode = std::clamp (params.index (P::driveMode), 0, (int) DriveShaper::numModes - 1);
    if (driveMode != shaperBanks[0][left].mode)
        for (auto& bank : shaperBanks)
            for (auto& shaper : bank)
                shaper.changeMode (driveMode);

    const int position = std::clamp (params.index (P::drivePosition), 0, 1);
    if (position != drivePosition)
        changeDrivePosition (position);

    if (params.on (P::driveOn) != driveOn)
    {
        // Turned back mid-fade, the fade runs back from where its weights stand.
        driveOn = ! driveOn;
        driveSwitchCounter = positionFadeLength - driveSwitchCounter;
        driveBypassed = false;
        if (driveSwitchCounter == 0)
            settleDriveSwitch();
    }

    const int routing = std::clamp (params.index (P::subRouting), 0, 1);
    if (routing != subRouting)
    {
        previousSubRouting = subRouting;
        subRouting = routing;
        routingFadeCounter = routingFadeLength;
    }
}

void VoiceEngine::changeDrivePosition (int position) noexcept
{
    if (positionFadeCounter > 0 && position == previousDrivePosition)
    {
        // Turned back mid-fade: the second bank already holds the order being left, so the banks
        // trade places and the fade continues from where its weights stand.
        std::swap (shaperBanks[0], shaperBanks[1]);
        std::swap (filterBanks[0], filterBanks[1]);
        previousDrivePosition = drivePosition;
        drivePosition = position;
        positionFadeCounter = positionFadeLength - positionFadeCounter;
        if (positionFadeCounter == 0)
            finishDrivePositionFade();
        return;
    }

    previousDrivePosition = drivePosition;
    drivePosition = position;
    positionFadeCounter = positionFadeLength;
    // The second bank has not followed the cut-off while it stood idle.
    cutoffApplied = false;
}

void VoiceEngine::stepDriveSwitch() noexcept
{
    const float x = (1.0f - (float) driveSwitchCounter / (float) positionFadeLength) * 1.5707964f;
    const float entering = std::sin (x), leaving = std::cos (x);
    driveWet = driveOn ? entering : leaving;
    driveDry = driveOn ? leaving : entering;
}

void VoiceEngine::settleDriveSwitch() noexcept
{
    // The weights of this step stand; from the next one the stage is the plain drive or a wire.
    if (driveSwitchCounter > 0)
        return;
    driveBypassed = ! driveOn;
    if (driveOn)
        driveWet = 1.0f, driveDry = 0.0f;
}

void VoiceEngine::finishDrivePositionFade() noexcept
{
    std::swap (shaperBanks[0], shaperBanks[1]);
    std::swap (filterBanks[0], filterBanks[1]);
    for (auto& shaper : shaperBanks[1])
        shaper.clearState();
    for (auto& filter : filterBanks[1])
    {
        filter.clearSignalState();
        filter.setModelNow (filter.model);
    }
    previousDrivePosition = drivePosition;
}

float VoiceEngine::subRatio() noexcept
{
    const int octaveIndex = std::clamp (params.index (P::subOctave), 0, 4);
    const float octaves = (float) (octaveIndex - 2) + params.get (P::subSemitone) * (1.0f / 12.0f)
                          + params.get (P::subFine) * (1.0f / 1200.0f);
    return subRatioCache.get (octaves, [] (float o) { return std::exp2 (o); });
}

VoiceEngine::MultibandSettings VoiceEngine::multibandSettings (int voiceDriveMode, const ChainSums& chainSums) noexcept
{
    MultibandSettings m;
    m.enabled = params.on (P::mbdEnable);
    m.mix = std::clamp (sm (S::mbdMix).getNextValue(), 0.0f, 1.0f);
    const float amounts[] = { sm (S::mbdLow).getNextValue() + chainSums.mbdLow,
                              sm (S::mbdMid).getNextValue() + chainSums.mbdMid,
                              sm (S::mbdHigh).getNextValue() + chainSums.mbdHigh };
    m.lowHz = std::clamp (lowCross.getNextValue(), 60.0f, 600.0f);
    m.highHz = std::clamp (highCross.getNextValue(), 800.0f, 8000.0f);
    // A bypassed multiband runs no band, so its settings can wait until it is heard; the smoothers
    // above have moved on all the same.
    m.heard = m.enabled && m.mix > 0.0f;
    if (! m.heard)
        return m;

    const int modeParameters[] = { params.index (P::mbdLowMode), params.index (P::mbdMidMode), params.index (P::mbdHighMode) };
    for (size_t b = 0; b < (size_t) MultibandDrive::numBands; ++b)
    {
        m.gains[b] = bandGainCaches[b].get (std::clamp (amounts[b], 0.0f, 24.0f), [] (float d) { return std::pow (10.0f, d * 0.05f); });
        // "follow" takes the voice drive's mode; the others are soft, diode, fold.
        m.modes[b] = modeParameters[b] <= 0 ? voiceDriveMode : std::min (modeParameters[b] - 1, 2);
    }
    return m;
}

void VoiceEngine::applyMultiband (const MultibandSettings& m) noexcept
{
    multiband.enabled = m.enabled;
    multiband.mix = m.mix;
    if (! m.heard)
        return;
    for (size_t b = 0; b < (size_t) MultibandDrive::numBands; ++b)
        for (auto* side : { &multiband.bands, &multiband.rightBands })
        {
            auto& shaper = (*side)[b];
            shaper.gain = m.gains[b];
            if (m.modes[b] != shaper.mode)
                shaper.changeMode (m.modes[b]);
        }
    multiband.lowCrossover.setFrequency (m.lowHz);
    multiband.highCrossover.setFrequency (m.highHz);
}
}
