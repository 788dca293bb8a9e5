#include "store/PersistentContainerProvider.h"

#include "platform/base/Text.h"

namespace skyflare {

std::string unresolvedError(const Error &error)
{
    std::string userInfo;
    for (const auto &[key, value] : error.userInfo)
        userInfo += (userInfo.empty() ? "" : ", ") + quoted(key) + ": " + quoted(value);
    return "Unresolved error " + error.description() + ", [" + userInfo + "]";
}

} // namespace skyflare
