#pragma once

#include "platform/base/RandomSource.h"
#include "platform/base/Result.h"
#include "platform/base/UserDefaults.h"

#include <mutex>
#include <string>

namespace skyflare {

/// The installation's identifier: 32 hexadecimal digits that say nothing about machine or user. Made when it
/// is first asked for, kept until the settings are deleted.
///
/// Threads: any. Borrows its services.
class FIRInstallations {
public:
    /// @param defaults  a settings file of its own, such as "installation.plist"
    FIRInstallations(UserDefaults &defaults, RandomSource &random) : defaults_(defaults), random_(random) {}

    /// An error where there are no random numbers; then nothing is kept.
    Result<std::string> installationID();

private:
    std::mutex mutex_;
    UserDefaults &defaults_;
    RandomSource &random_;
};

} // namespace skyflare
