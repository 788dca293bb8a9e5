#include "screens/main/MainPopups.h"

#include "platform/base/Localization.h"

#include <string>
#include <utility>

namespace skyflare {

namespace {

CustomPopupView::Contents cameraPopup(std::string title, std::string description, URLOpener &opener)
{
    return {.icon = "heart.slash.fill",
            .title = std::move(title),
            .description = std::move(description),
            .buttonTitle = localized("Go to Settings"),
            .tapAction = [&opener] { opener.openURL(std::string(openSettingsURLString)); }};
}

} // namespace

CustomPopupView::Contents cameraRefusedPopup(URLOpener &opener)
{
    return cameraPopup(localized("We need your permission"),
                       localized("This app can not work without camera permission."), opener);
}

CustomPopupView::Contents cameraForbiddenPopup(URLOpener &opener)
{
    return cameraPopup(localized("Camera permission is not granted"),
                       localized("Please go to settings and enable camera permission."), opener);
}

CustomPopupView::Contents libraryForbiddenPopup()
{
    return {.icon = "bolt.heart.fill",
            .title = localized("We need your permission"),
            .description =
                localized("We don't have access to your photo gallery. Please allow us to save it for you.")};
}

CustomPopupView::Contents noRoomPopup(std::function<void()> openGallery)
{
    return {.icon = "warning",
            .title = localized("No room for more photos"),
            .description = localized(
                "Delete photos that you do not need, or free space on this device. Then tap Start."),
            .buttonTitle = localized("Open Gallery"),
            .tapAction = std::move(openGallery)};
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
