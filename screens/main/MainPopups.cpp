#include "screens/main/MainPopups.h"

#include "platform/base/Localization.h"

#include <string_view>
#include <utility>

namespace skyflare {

namespace {

CustomPopupView::Contents cameraPopup(std::string_view title, std::string_view description, URLOpener &opener)
{
    return {.icon = "heart.slash.fill",
            .title = localized(title),
            .description = localized(description),
            .buttonTitle = localized("Go to Settings"),
            .tapAction = [&opener] { opener.openURL(std::string(openSettingsURLString)); }};
}

} // namespace

CustomPopupView::Contents cameraRefusedPopup(URLOpener &opener)
{
    return cameraPopup("We need your permission", "This app can not work without camera permission.", opener);
}

CustomPopupView::Contents cameraForbiddenPopup(URLOpener &opener)
{
    return cameraPopup("Camera permission is not granted",
                       "Please go to settings and enable camera permission.", opener);
}

CustomPopupView::Contents libraryForbiddenPopup()
{
    return {.icon = "bolt.heart.fill",
            .title = localized("We need your permission"),
            .description =
                localized("We don't have access to your photo gallery. Please allow us to save it for you.")};
}

CustomPopupView::Contents updatePopup(URLOpener &opener, std::string storePage)
{
    return {.icon = "arrow.trianglehead.2.clockwise.rotate.90.circle.fill",
            .title = localized("Update Available"),
            .description = localized("Please update to the latest version"),
            .buttonTitle = localized("Update"),
            .tapAction = [&opener, page = std::move(storePage)] { opener.openURL(page); }};
}

} // namespace skyflare
