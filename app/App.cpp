#include "app/App.h"

#include "platform/base/Text.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace skyflare {

namespace {

constexpr std::string_view alreadyLaunchedKey = "alreadyLaunched";
constexpr std::string_view manualFocusKey = "manualFocus";
constexpr std::string_view autoSaveKey = "autoSave";
constexpr std::string_view savedPhotoKey = "savedPhoto";
constexpr std::string_view sensivityKey = "sensivity";
constexpr std::string_view frequencyKey = "frequency";

std::optional<App::Services> &sharedServices()
{
    static std::optional<App::Services> services;
    return services;
}

const App::Services &requireSharedServices()
{
    if (!sharedServices()) {
        std::fputs("App::shared() was used before App::setSharedServices()\n", stderr);
        std::abort();
    }
    return *sharedServices();
}

std::string consoleLine(std::string_view key, std::string_view value)
{
    return std::string(key) + ": " + std::string(value);
}

std::string_view boolText(bool value)
{
    return value ? "true" : "false";
}

} // namespace

// The fields are read in the order in which they are declared.
App::App(const Services &services)
    : services_(services),
      firstLaunch_(!services.standardUserDefaults.stringForKey(alreadyLaunchedKey).has_value()),
      manualFocus_(services.standardUserDefaults.boolForKey(manualFocusKey)),
      autoSave_(services.standardUserDefaults.boolForKey(autoSaveKey)),
      savedPhoto_(services.standardUserDefaults.integerForKey(savedPhotoKey)),
      sensivity_(services.standardUserDefaults.floatForKey(sensivityKey)),
      frequency_(services.standardUserDefaults.doubleForKey(frequencyKey))
{
    resetOnFirstLaunch();
}

void App::setSharedServices(const Services &services)
{
    sharedServices().emplace(services);
}

App &App::shared()
{
    static App app(requireSharedServices());
    return app;
}

void App::resetOnFirstLaunch()
{
    if (!firstLaunch_)
        return;
    services_.notificationCenter.postNotificationName(settingsChanged);
    setManualFocus(false);
    setAutoSave(false);
    setSavedPhoto(0);
    setSensivity(0.1F);
    setFrequency(1.0);
}

void App::setManualFocus(bool manualFocus)
{
    manualFocus_ = manualFocus;
    services_.standardUserDefaults.setBool(manualFocus, manualFocusKey);
    services_.notificationCenter.postNotificationName(settingsChanged);
    services_.console.printLine(consoleLine(manualFocusKey, boolText(manualFocus)));
}

void App::setAutoSave(bool autoSave)
{
    autoSave_ = autoSave;
    services_.standardUserDefaults.setBool(autoSave, autoSaveKey);
    services_.notificationCenter.postNotificationName(settingsChanged);
    services_.console.printLine(consoleLine(autoSaveKey, boolText(autoSave)));
}

// Deliberate: posts nothing, unlike the other setters.
void App::setSavedPhoto(std::int64_t savedPhoto)
{
    savedPhoto_ = savedPhoto;
    services_.standardUserDefaults.setInteger(savedPhoto, savedPhotoKey);
    services_.console.printLine(consoleLine(savedPhotoKey, std::to_string(savedPhoto)));
}

void App::setSensivity(float sensivity)
{
    sensivity_ = sensivity;
    services_.standardUserDefaults.setFloat(sensivity, sensivityKey);
    services_.notificationCenter.postNotificationName(settingsChanged);
    services_.console.printLine(consoleLine(sensivityKey, shortestDecimal(sensivity)));
}

void App::setFrequency(double frequency)
{
    frequency_ = frequency;
    services_.standardUserDefaults.setDouble(frequency, frequencyKey);
    services_.notificationCenter.postNotificationName(settingsChanged);
    services_.console.printLine(consoleLine(frequencyKey, shortestDecimal(frequency)));
}

} // namespace skyflare
