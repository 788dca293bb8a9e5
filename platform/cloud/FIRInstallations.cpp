#include "platform/cloud/FIRInstallations.h"

#include "platform/base/RandomIdentifier.h"

namespace skyflare {

namespace {

constexpr std::string_view installationIDKey = "installationID";

} // namespace

Result<std::string> FIRInstallations::installationID()
{
    const std::scoped_lock lock(mutex_);
    if (const auto kept = defaults_.stringForKey(installationIDKey); kept && isRandomIdentifier(*kept))
        return *kept;
    auto made = makeRandomIdentifier(random_);
    if (made)
        defaults_.setObject(*made, installationIDKey);
    return made;
}

} // namespace skyflare
