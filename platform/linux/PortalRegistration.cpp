#include "platform/linux/PortalRegistration.h"

#include "platform/linux/Portal.h"
#include "platform/linux/Sandbox.h"

#include <gio/gio.h>

namespace skyflare {

std::optional<BusGreeting> portalRegistration(const std::string &applicationId)
{
    if (isSandboxed())
        return {};
    return BusGreeting{
        .call = {.service = portal::service,
                 .path = portal::path,
                 .interface = "org.freedesktop.host.portal.Registry",
                 .method = "Register",
                 .arguments = takeVariant(g_variant_new("(sa{sv})", applicationId.c_str(), nullptr)),
                 .longestWait = std::chrono::seconds(3)},
        .refused = "The desktop's portals do not know the app: "};
}

} // namespace skyflare
