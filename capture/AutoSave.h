#pragma once

#include "app/App.h"
#include "logging/LogManager.h"
#include "platform/base/Console.h"
#include "platform/desktop/PhotoLibrary.h"

#include <functional>

namespace skyflare {

/// Hands captured photos to the device's photo library, when the settings say so.
///
/// Threads: handOver() on main; what comes of it is printed on the library's threads.
/// Borrows its Services; library and console must outlive the library's last answer, the others this.
class AutoSave {
public:
    struct Services {
        PhotoLibrary &photoLibrary;
        Console &console;
        const App &app;
        LogManager &logManager;
    };

    explicit AutoSave(const Services &services) : services_(services) {}

    /// Does nothing while auto-save is off. Else asks for access and logs "photo_auto_saved" at once,
    /// whatever the answer will be.
    ///
    /// @param creationDate  seconds since 1970
    /// @param onPermissionMissing  called on a thread of the library's, once for every photo that may not be
    ///     added: hop to main before showing anything.
    void handOver(const Image &image, double creationDate, std::function<void()> onPermissionMissing);

private:
    Services services_;
};

} // namespace skyflare
