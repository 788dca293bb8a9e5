#include "screens/main/MainOutlets.h"

#include "capture/Levels.h"
#include "platform/base/Localization.h"
#include "screens/main/LevelTitles.h"

namespace skyflare {

void MainOutlets::setUpOutlets()
{
    setUpTexts();
    setUpOptions();
    cameraBorderView_.setAlpha(0);
    actionImage_.setAlpha(0);
    actionImage_.setSymbol("livephoto");
    simulatedCameraLabel_.setHidden(true);
}

void MainOutlets::setUpTexts()
{
    statusText_.setText(localized("Ready to capture fireworks"));
    mainButton_.setText(localized("Start"));
    mainButton_.setSymbol("play");
    sensivityTitle_.setText(localized("Sensivity"));
    frequencyTitle_.setText(localized("Capture Frequency"));
    lightPowerTitle_.setText(localized("Light Power"));
    lastDifferenceTitle_.setText(localized("Last Rise"));
    simulatedCameraLabel_.setText(localized("Simulated camera"));

    infoButton_.setSymbol("info");
    infoButton_.setAccessibleName(localized("How it works"));
    settingsButton_.setSymbol("gear");
    settingsButton_.setAccessibleName(localized("Settings"));
    lastPhotoButton_.setSymbol("gallery");
    lastPhotoButton_.setAccessibleName(localized("All Photos"));

    step0_text1()->setText(localized("Welcome to Skyflare!"));
    step0_text2()->setText(localized("step0_text2"));
    step1_text1()->setText(localized("Sensivity"));
    step1_text2()->setText(localized("step1_text2"));
    step2_text1()->setText(localized("Capture Frequency"));
    step2_text2()->setText(localized("step2_text2"));
    step3_text1()->setText(localized("Main Button"));
    step3_text2()->setText(localized("step3_text2"));
}

void MainOutlets::setUpOptions()
{
    for (const SensitivityRow &row : sensitivityRows)
        sensitivitySelectionsContainer_.addOption(titleOf(row));
    for (const FrequencyRow &row : frequencyRows)
        frequencySelectionsContainer_.addOption(titleOf(row));
    sensitivitySelectionsContainer_.setHidden(true);
    frequencySelectionsContainer_.setHidden(true);
}

} // namespace skyflare
