#pragma once

#include "analytics/model/APMUserAttribute.h"

#include <string>
#include <vector>

namespace skyflare {

/// The program and the machine that it runs on. Empty: not known.
///
/// Threads: any; a value.
struct APMAppData {
    std::string appId = {};         ///< as the deployment names it
    std::string appInstanceId = {}; ///< made anew when the user resets the engine
    std::string appVersion = {};
    std::string platform = {};
    std::string osVersion = {};
    std::string deviceModel = {};
    std::string language = {};

    bool operator==(const APMAppData &) const = default;
};

/// What is true when an event is recorded, and what many events share.
///
/// Threads: any; a value.
struct APMMetadata {
    std::vector<APMUserAttribute> userAttributes;
    APMAppData app = {};

    bool operator==(const APMMetadata &) const = default;
};

} // namespace skyflare
