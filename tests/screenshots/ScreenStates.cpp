#include "tests/screenshots/ScreenStates.h"

#include "platform/desktop/MissingHaptics.h"
#include "platform/image/FrameConversion.h"
#include "tests/screenshots/Camera.h"
#include "tests/screenshots/GalleryStates.h"
#include "tests/screenshots/MainStates.h"
#include "tests/screenshots/SettingsStates.h"
#include "tests/ui/Sampler.h"
#include "ui/CustomPopupView.h"

#include <algorithm>
#include <iterator>

namespace skyflare {

namespace {

using Contents = CustomPopupView::Contents;

MissingHaptics &haptics()
{
    static MissingHaptics missing;
    return missing;
}

PictureCamera &camera()
{
    static PictureCamera night;
    return night;
}

std::shared_ptr<ViewController> sampler()
{
    auto screen = Sampler::storyboard().instantiateViewController<Sampler>("SamplerView");
    screen->loadViewIfNeeded();
    auto pixels = reduced(convertToRgb(camera().frame()).value(), 480, 270);
    screen->photo()->setImage(Image::fromData(encodePng(pixels).value()).value());
    return screen;
}

std::shared_ptr<ViewController> running()
{
    auto screen = std::static_pointer_cast<Sampler>(sampler());
    screen->showPreview(&camera().session());
    return screen;
}

ScreenState popup(std::string name, Contents contents)
{
    return {"popup-" + name, [contents] {
                auto screen = running();
                CustomPopupView::make(haptics(), contents)->show(*screen);
                return screen;
            }};
}

const std::string longText =
    "Wir haben keinen Zugriff auf deine Fotogalerie. Bitte erlaube uns, das Foto für dich zu "
    "speichern. Die Einstellung findest du unter Datenschutz, Anwendungsberechtigungen.";

} // namespace

void showLivePicture()
{
    camera().show();
    showOnMainScreen(camera().frame());
}

std::vector<ScreenState> screenStates()
{
    std::vector<ScreenState> states = {
        {"small-views", sampler},
        {"small-views-running", running},
        popup("delete-all",
              {.icon = "trash",
               .title = "Delete All",
               .description = "Are you sure you want to delete all photos? You can not undo this action.",
               .buttonTitle = "Yes, Delete All"}),
        popup("permission", {.icon = "heart.slash.fill",
                             .title = "Camera permission is not granted",
                             .description = "Please go to settings and enable camera permission.",
                             .buttonTitle = "Go to Settings"}),
        popup("long", {.icon = "bolt.heart.fill",
                       .title = "Wir brauchen deine Erlaubnis",
                       .description = longText,
                       .buttonTitle = "Zu den Anwendungsberechtigungen"}),
        popup("without-button-title",
              {.icon = "bolt.heart.fill",
               .title = "We need your permission",
               .description =
                   "We don't have access to your photo gallery. Please allow us to save it for you."}),
        popup("not-dismissable", {.icon = "arrow.trianglehead.2.clockwise.rotate.90.circle.fill",
                                  .title = "Update Available",
                                  .description = "Please update to the latest version",
                                  .dismissable = CustomPopupView::Dismissable::No,
                                  .buttonTitle = "Update"}),
    };
    std::ranges::move(mainStates(camera()), std::back_inserter(states));
    std::ranges::move(galleryStates(), std::back_inserter(states));
    std::ranges::move(settingsStates(), std::back_inserter(states));
    return states;
}

} // namespace skyflare
