#pragma once

#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/PrivateBus.h"
#include "tests/fakes/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

struct _AtspiAccessible;    // NOLINT(bugprone-reserved-identifier): AT-SPI's
struct _AtspiEventListener; // NOLINT(bugprone-reserved-identifier): AT-SPI's

namespace skyflare {

/// What a screen reader knows of one item.
struct AccessibleItem {
    std::shared_ptr<_AtspiAccessible> handle;
    std::string path; ///< its own, among the program's
    std::string role; ///< such as "push button"
    std::string name;
    std::string parentRole;
    bool isEnabled = false;
    bool isFocusable = false;
    bool isFocused = false;

    /// Something to be used, and not just to be read.
    [[nodiscard]] bool isControl() const;
    /// Does what it is there for. @return whether it says that this has been done
    [[nodiscard]] bool press() const;
};

/// Reads the screens of the one program that is on its accessibility bus, as a screen reader does (AT-SPI 2).
/// One a process.
///
/// Threads: the test's.
class ScreenReader {
public:
    ScreenReader();
    ~ScreenReader();

    /// What a program needs in its environment to be read.
    [[nodiscard]] std::vector<std::string> environment() const;

    /// The items that are shown, from the window on; waits for the program.
    std::vector<AccessibleItem> items();
    /// Waits until an item of that role says that its name has become another, and it is this one.
    void waitForName(const std::string &role, const std::string &name);

private:
    const TemporaryFolder folder_;
    const PrivateBus session_;
    ChildProcess launcher_;
    std::vector<std::string> namesChanged_; ///< paths, the oldest first
    _AtspiEventListener *listener_ = nullptr;
};

} // namespace skyflare
