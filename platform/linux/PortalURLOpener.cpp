#include "platform/linux/PortalURLOpener.h"

#include <gio/gio.h>

namespace skyflare {

void PortalURLOpener::openURL(const std::string &url)
{
    if (url == openSettingsURLString) {
        services_.ownSettingsPage();
        return;
    }
    if (!isOpenableURL(url)) {
        services_.console.reportLine("This address is not opened: " + url);
        return;
    }
    const auto arguments = [&url](GVariant *options) {
        constexpr const char *noParentWindow = "";
        return g_variant_new("(ss@a{sv})", noParentWindow, url.c_str(), options);
    };
    request_ =
        PortalRequest::ask(services_.sessionBus, {"org.freedesktop.portal.OpenURI", "OpenURI", arguments},
                           [url, &console = services_.console](const Result<PortalRequest::Answer> &answer) {
                               if (!answer)
                                   console.reportLine("Nothing opens " + url + ": " + answer.error().message);
                               else if (answer->response == PortalRequest::Response::Ended)
                                   console.reportLine("Nothing opens " + url);
                           });
}

} // namespace skyflare
