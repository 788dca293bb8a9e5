#pragma once

#include "platform/camera/DeviceTable.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// One of GStreamer's providers of devices, looked at for as long as the process lives.
///
/// Threads: started on any; then a thread of its own.
class DeviceProvider {
public:
    /// The names of the installed providers that may show cameras.
    static std::vector<std::string> factoriesForVideo();

    /// Keeps what the provider shows in `devices`. Calls `firstLookDone` once, on the provider's thread,
    /// when what is there from the beginning is in the table; never while the provider hangs.
    static Result<> watch(const std::string &factory, std::shared_ptr<DeviceTable> devices,
                          std::function<void()> firstLookDone);
};

} // namespace skyflare
