#pragma once

#include "platform/base/Console.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/UserDefaults.h"

#include <cstdint>
#include <string_view>

namespace skyflare {

/// Posted by every setter of App but that of savedPhoto; observers re-read the fields that they show.
inline constexpr std::string_view settingsChanged = "SettingsChanged";

/// The standard user defaults' file, in the folder of this user's settings.
inline constexpr std::string_view standardUserDefaultsFile = "standard.plist";

/// The app's settings: read once from the user defaults, from then on the working copy. Every assignment
/// is written through, announced with "SettingsChanged" and printed, in this order.
///
/// Until the main screen has stored "yes" under "alreadyLaunched", every start of the process puts the
/// defaults back.
///
/// Threads: `shared()` on any; the rest on main only.
/// Borrows its Services, which must outlive it.
class App {
public:
    struct Services {
        UserDefaults &standardUserDefaults;
        NotificationCenter &notificationCenter;
        Console &console;
    };

    /// Reads the settings; on a first launch resets them. The process has one: shared().
    explicit App(const Services &services);
    App(const App &) = delete;
    App &operator=(const App &) = delete;

    /// What shared() will be made with. A program's main calls it once, before anything else.
    static void setSharedServices(const Services &services);

    /// The one instance of the process, made on first use.
    static App &shared();

    [[nodiscard]] bool firstLaunch() const { return firstLaunch_; }
    [[nodiscard]] bool manualFocus() const { return manualFocus_; }
    [[nodiscard]] bool autoSave() const { return autoSave_; }
    [[nodiscard]] std::int64_t savedPhoto() const { return savedPhoto_; }
    [[nodiscard]] float sensivity() const { return sensivity_; }  ///< rise of brightness, 0 to 1
    [[nodiscard]] double frequency() const { return frequency_; } ///< seconds between two photos

    // Deliberate: writes nothing and posts nothing; the main screen stores "alreadyLaunched" itself.
    void setFirstLaunch(bool firstLaunch) { firstLaunch_ = firstLaunch; }
    void setManualFocus(bool manualFocus);
    void setAutoSave(bool autoSave);
    void setSavedPhoto(std::int64_t savedPhoto);
    void setSensivity(float sensivity);
    void setFrequency(double frequency);

private:
    Services services_;
    bool firstLaunch_;
    bool manualFocus_;
    bool autoSave_;
    std::int64_t savedPhoto_;
    float sensivity_;
    double frequency_;

    void resetOnFirstLaunch();
};

} // namespace skyflare
