#include "tests/screenshots/MainStates.h"

#include "platform/base/Localization.h"
#include "platform/image/FrameConversion.h"
#include "tests/main/MainFixture.h"

#include <cmath>

namespace skyflare {

namespace {

using Languages = std::vector<std::string>;

const Languages english = {"en"};
const Languages three = {"en", "tr", "ja"};

enum class Launch { First, Later };

/// One way to use the main screen, and what it is called.
struct Row {
    std::string name;
    Languages languages;
    std::function<void(MainFixture &)> use;
    Launch launch = Launch::Later;
    std::string remoteConfig = {};
    std::vector<int> keys = {};
};

/// The one whose window is open, or was last.
std::unique_ptr<MainFixture> &current()
{
    static std::unique_ptr<MainFixture> fixture;
    return fixture;
}

std::shared_ptr<ViewController> used(const Row &row)
{
    current().reset();
    current() = std::make_unique<MainFixture>();
    MainFixture &main = *current();
    main.app.setFirstLaunch(row.launch == Launch::First);
    main.app.setManualFocus(true);
    if (!row.remoteConfig.empty()) {
        main.network.answers.push_back(HttpResponse{
            .status = 200, .headers = {}, .body = Bytes(row.remoteConfig.begin(), row.remoteConfig.end())});
        main.remoteConfig->configure("https://config.example/skyflare.json");
    }
    main.screen->setViewUrl(QUrl("qrc:/Skyflare/Main/MainView.qml"));
    main.load();
    row.use(main);
    return main.screen;
}

void storePhotos(MainFixture &main, const Image &photo, int times)
{
    PhotoDataManager photos({main.store, main.notifications, main.time, main.console});
    for (int i = 0; i < times; ++i)
        photos.saveImage(photo);
    main.time.runUntilIdle();
}

/// Starts, and lets five seconds pass with light as it is with two bursts.
void run(MainFixture &main)
{
    main.screen->mainButtonTapped();
    for (int i = 0; i <= 150; ++i) {
        const double sinceBurst = std::fmod(i / 30.0 + 0.9, 2.3);
        main.screen->updateLightPower(0.06 + 0.004 * std::sin(i * 1.7) + 0.22 * std::exp(-3 * sinceBurst));
        main.time.advance(33ms);
    }
}

Row onboarding(int step)
{
    return {"onboarding-" + std::to_string(step), three,
            [step](MainFixture &main) {
                for (int taps = 0; taps < step; ++taps)
                    main.screen->onboardingScreenTapped();
            },
            Launch::First};
}

Row focused(std::string name, std::vector<int> keys, const Image &photo)
{
    return {"focus-" + std::move(name),
            english,
            [photo](MainFixture &main) { storePhotos(main, photo, 1); },
            Launch::Later,
            {},
            std::move(keys)};
}

std::vector<Row> idleRows(const Image &photo)
{
    const auto nothing = [](MainFixture & /*main*/) {};
    const auto withPhotos = [photo](MainFixture &main) {
        storePhotos(main, photo, 12);
        main.screen->setCameraKind(CameraKind::Simulated);
    };
    const auto choosing = [photo](MainFixture &main) {
        storePhotos(main, photo, 1);
        main.screen->frequencyButtonTapped();
    };
    const auto denied = [](MainFixture &main) {
        main.authorization.status = CameraAuthorizationStatus::Denied;
        main.screen->mainButtonTapped();
    };
    const auto unusable = [](MainFixture &main) {
        main.camera.opensDevice = false;
        main.screen->mainButtonTapped();
    };
    return {onboarding(0),
            onboarding(1),
            onboarding(2),
            onboarding(3),
            {"idle-no-photo", three, nothing},
            {"idle", three, withPhotos},
            {"frequency-open", three, choosing},
            {"permission-denied", three, denied},
            {"camera-unusable", three, unusable},
            {"update", three, nothing, Launch::Later, R"({"forceUpdateVersion": 999})"}};
}

/// Where Tab leads to, from the main button.
std::vector<Row> focusRows(const Image &photo)
{
    return {focused("main-button", {Qt::Key_Tab, Qt::Key_Backtab}, photo),
            focused("photo", {Qt::Key_Tab}, photo), focused("info", {Qt::Key_Tab, Qt::Key_Tab}, photo),
            focused("selector", {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab}, photo),
            focused("option",
                    {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Down},
                    photo)};
}

std::vector<Row> runningRows(const Image &photo)
{
    const auto captured = [photo](MainFixture &main) {
        run(main);
        main.screen->setCameraKind(CameraKind::Simulated);
        main.screen->updateStatus(localized("Fireworks detected!"), 1, false);
        main.screen->didCapturePhoto(photo, 13, 0.42F);
    };
    const auto capturedMany = [photo](MainFixture &main) {
        run(main);
        main.screen->didCapturePhoto(photo, 1284, 0.42F);
    };
    const auto focusing = [photo](MainFixture &main) {
        run(main);
        main.screen->didCapturePhoto(photo, 13, 0.42F);
        main.screen->focusPointTapped({200, 190});
    };
    const auto choosing = [photo](MainFixture &main) {
        storePhotos(main, photo, 1);
        run(main);
        main.screen->sensivityButtonTapped();
    };
    const auto lost = [](MainFixture &main) {
        run(main);
        main.screen->sessionDidChange({SessionEvent::Kind::Lost, "Back camera", "The camera is gone.", {}});
    };
    const auto littleRoom = [](MainFixture &main) {
        main.disk.bytes = 10'000'000;
        run(main);
    };
    const auto noRoom = [](MainFixture &main) {
        main.disk.bytes = 0;
        run(main);
    };
    return {{"running", english, run},
            {"captured", three, captured},
            {"many-photos", english, capturedMany},
            {"focusing", english, focusing},
            {"sensivity-open", three, choosing},
            {"camera-lost", three, lost},
            {"storage-low", three, littleRoom},
            {"storage-full", three, noRoom}};
}

} // namespace

void showOnMainScreen(const VideoFrame &frame)
{
    const auto session = current() ? current()->screen->captureManager().captureSession() : nullptr;
    if (const auto preview = session ? session->preview() : nullptr)
        preview->show(frame);
}

std::vector<ScreenState> mainStates(const PictureCamera &camera)
{
    const auto pixels = reduced(convertToRgb(camera.frame()).value(), 480, 270);
    const Image photo = Image::fromData(encodePng(pixels).value()).value();

    std::vector<ScreenState> states;
    for (const auto &rows : {idleRows(photo), focusRows(photo), runningRows(photo)}) {
        for (const Row &row : rows) {
            for (const std::string &language : row.languages)
                states.push_back({"main-" + row.name + (language == "en" ? "" : "-" + language),
                                  [row] { return used(row); }, language, row.keys});
        }
    }
    return states;
}

} // namespace skyflare
