#include "tests/screenshots/GalleryStates.h"

#include "platform/camera/sky/SimulatedSky.h"
#include "platform/image/FrameConversion.h"
#include "tests/main/MainFixture.h"

namespace skyflare {

namespace {

using Languages = std::vector<std::string>;
using Screen = std::shared_ptr<ViewController>;

const Languages english = {"en"};
const Languages three = {"en", "tr", "ja"};

struct Row {
    std::string name;
    Languages languages;
    std::function<Screen(MainFixture &)> make;
    std::vector<int> keys = {};
};

/// Photos of one evening, each in the middle of another burst.
std::vector<Image> evening(int width, std::size_t count)
{
    constexpr int framesAfterFirstLight = 12;
    SimulatedSky sky({.width = width, .height = width / 4 * 3, .seed = 7});
    std::vector<Image> taken;
    for (const std::int64_t burst : sky.burstFrames(60)) {
        if (taken.size() == count)
            break;
        const auto pixels = convertToRgb(sky.frame(burst + framesAfterFirstLight)).value();
        taken.push_back(Image::fromData(encodePng(pixels).value()).value());
    }
    return taken;
}

const std::vector<Image> &smallPhotos()
{
    static const std::vector<Image> photos = evening(400, 9);
    return photos;
}

const Image &largePhoto()
{
    static const Image photo = evening(1600, 1).front();
    return photo;
}

/// The one whose window is open, or was last.
std::unique_ptr<MainFixture> &current()
{
    static std::unique_ptr<MainFixture> fixture;
    return fixture;
}

Screen gallery(MainFixture &main, std::size_t photos)
{
    for (std::size_t i = 0; i < photos; ++i) {
        main.photoStore.saveImage(smallPhotos()[i % smallPhotos().size()]);
        main.time.advance(7s);
    }
    const auto screen =
        main.galleryStoryboard.instantiateViewController<PhotoListViewController>("PhotoListViewSB");
    screen->loadViewIfNeeded();
    return screen;
}

std::shared_ptr<PhotoDetailViewController> detail(MainFixture &main, const Image &photo,
                                                  const std::string &uuid = "A")
{
    auto screen =
        main.detailStoryboard.instantiateViewController<PhotoDetailViewController>("PhotoDetailViewSB");
    screen->setPhoto(PhotoModel{uuid, photo, 1'700'000'000});
    screen->loadViewIfNeeded();
    return screen;
}

Screen saved(MainFixture &main, AuthorizationStatus status, LibraryChange change)
{
    auto screen = detail(main, largePhoto());
    main.library.change = std::move(change);
    screen->saveButtonTapped();
    main.library.asked.back()(status);
    main.time.runUntilIdle();
    return screen;
}

/// Whole by its header and its end, and of no use in between.
Image damaged()
{
    Bytes png = *largePhoto().pngData().value();
    std::fill(png.begin() + 2000, png.end() - 2000, std::uint8_t{0x55});
    return Image::fromData(std::move(png)).value();
}

std::vector<Row> gridRows()
{
    return {
        {"empty", {"en", "tr"}, [](MainFixture &main) { return gallery(main, 0); }},
        {"one", english, [](MainFixture &main) { return gallery(main, 1); }},
        {"full", three, [](MainFixture &main) { return gallery(main, 24); }},
        {"focus",
         english,
         [](MainFixture &main) { return gallery(main, 20); },
         {Qt::Key_Right, Qt::Key_Down}},
        {"focus-delete-all", english, [](MainFixture &main) { return gallery(main, 20); }, {Qt::Key_Backtab}},
        {"delete-all", three, [](MainFixture &main) {
             const auto screen = gallery(main, 20);
             static_cast<PhotoListViewController &>(*screen).deleteAllTapped();
             return screen;
         }}};
}

std::vector<Row> detailRows()
{
    const auto plain = [](MainFixture &main) -> Screen { return detail(main, largePhoto()); };
    const auto deleting = [](MainFixture &main) -> Screen {
        const auto screen = detail(main, largePhoto());
        screen->deleteButtonTapped();
        return screen;
    };
    const auto isDamaged = [](MainFixture &main) -> Screen {
        main.photoStore.saveImage(damaged());
        return detail(main, damaged(), main.photoStore.fetchImages(1).at(0).uuid);
    };
    const auto isGone = [](MainFixture &main) -> Screen { return detail(main, damaged()); };
    return {{"photo", three, plain},
            {"photo-focus", english, plain, {Qt::Key_Tab}},
            {"photo-zoomed", english, plain, {Qt::Key_Plus, Qt::Key_Plus, Qt::Key_Plus}},
            {"photo-delete", {"en", "tr"}, deleting},
            {"photo-saved", three,
             [](MainFixture &main) {
                 return saved(main, AuthorizationStatus::Authorized, {true, {}});
             }},
            {"photo-permission",
             {"en", "tr"},
             [](MainFixture &main) { return saved(main, AuthorizationStatus::Denied, {}); }},
            {"photo-error",
             {"en", "tr"},
             [](MainFixture &main) {
                 return saved(main, AuthorizationStatus::Authorized, {false, Error{"disk", 28, "full"}});
             }},
            {"photo-damaged", three, isDamaged},
            {"photo-gone", {"en", "tr"}, isGone}};
}

} // namespace

std::vector<ScreenState> galleryStates()
{
    std::vector<ScreenState> states;
    for (const auto &rows : {gridRows(), detailRows()}) {
        for (const Row &row : rows) {
            for (const std::string &language : row.languages)
                states.push_back({"gallery-" + row.name + (language == "en" ? "" : "-" + language),
                                  [row] {
                                      current() = nullptr;
                                      current() = std::make_unique<MainFixture>();
                                      return row.make(*current());
                                  },
                                  language, row.keys});
        }
    }
    return states;
}

} // namespace skyflare
