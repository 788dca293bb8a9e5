#include "tests/fakes/FakeCamera.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/ui/Sampler.h"
#include "tests/ui/ShownWindow.h"
#include "ui/CustomPopupView.h"
#include "ui/MainNavigationController.h"
#include "ui/SharedObject.h"

using namespace skyflare;
using Dismissable = CustomPopupView::Dismissable;

namespace {

/// The sampler in its window.
struct Shown : ShownWindow {
    RecordingHaptics haptics;
    std::shared_ptr<Sampler> sampler =
        Sampler::storyboard().instantiateViewController<Sampler>("SamplerView");
    int actions = 0;

    Shown()
    {
        bringUp(makeShared<MainNavigationController>([this] { return sampler; }), "main");
    }
    std::shared_ptr<CustomPopupView> show(CustomPopupView::Contents contents)
    {
        contents.tapAction = [this] { ++actions; };
        auto popup = CustomPopupView::make(haptics, std::move(contents));
        popup->show(*sampler);
        waitForFocus("action");
        REQUIRE(comes([&] { return item("card")->scale() == 1; })); // it has grown
        return popup;
    }
    QRectF drawn(const char *control)
    {
        return rectOf(
            *findItem(*item(control), [](const auto &each) { return each.objectName() == "drawn"; }));
    }
    int popups() { return sampler->popups()->count(); }
};

} // namespace

TEST_CASE_FIXTURE(Shown, "the card has its measures")
{
    SUBCASE("with an icon")
    {
        show({.icon = "trash", .title = "Delete All", .description = "Sure?", .buttonTitle = "Delete"});
        const QRectF card = rect("card");
        const QRectF action = drawn("action");
        CHECK(card.width() == doctest::Approx(312));
        CHECK(card.center().x() == doctest::Approx(195));
        CHECK(std::abs(card.center().y() - 422) <= 0.5); // whole pixels
        const double gaps[] = {rect("icon").top() - card.top(), rect("title").top() - rect("icon").bottom(),
                               rect("description").top() - rect("title").bottom(),
                               action.top() - rect("description").bottom(), card.bottom() - action.bottom()};
        const double expected[] = {20, 20, 10, 20, 20};
        for (std::size_t i = 0; i < std::size(gaps); ++i)
            CHECK(gaps[i] == doctest::Approx(expected[i]));
        CHECK(action.width() == doctest::Approx(card.width() - 40));
        CHECK(drawn("close") == QRectF(card.right() - 40, card.top() + 10, 30, 30));
        CHECK(rect("close").size() == QSizeF(44, 44));
        CHECK(rect("action").height() == 44);
    }
    SUBCASE("without an icon, on a pad, with a text longer than the window")
    {
        resize({1280, 800});
        show({.title = "No icon", .description = std::string(9000, 'm')});
        const QRectF card = rect("card");
        CHECK(card.width() == doctest::Approx(512));
        CHECK(rect("title").top() == doctest::Approx(card.top() + 20));
        CHECK(card.height() == doctest::Approx(800 - 32));
        CHECK(drawn("action").bottom() == doctest::Approx(card.bottom() - 20));
    }
}

TEST_CASE_FIXTURE(Shown, "a popup is answered by clicks, and each answer is felt")
{
    const auto popup = show({.title = "Sure?", .buttonTitle = "Yes"});
    SUBCASE("beside the card nothing happens, neither to the popup nor below it")
    {
        click(QPointF(5, 5));
        click("main");
        CHECK(popups() == 1);
        CHECK(sampler->mainButtonTaps == 0);
        CHECK_FALSE(item("main")->isEnabled());
        popup->buttonTapped();
    }
    SUBCASE("the action")
    {
        click(drawn("action").center());
        CHECK(actions == 1);
    }
    SUBCASE("the close control, seven pixels beside what is drawn")
    {
        click(drawn("close").topRight() + QPointF(6, -6));
        CHECK(actions == 0);
    }
    CHECK(haptics.impacts == std::vector(2, ImpactFeedbackStyle::Medium));
    CHECK(popups() == 0);
    waitForFocus("main");
}

TEST_CASE_FIXTURE(Shown, "a popup is answered by keys, and keeps the focus to itself")
{
    press(Qt::Key_Tab); // the sampler's own: main, gear, main
    CHECK(focus() == "gear");
    SUBCASE("dismissable")
    {
        show({.title = "Sure?", .buttonTitle = "Yes"});
        CHECK(focusAfter({Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Backtab}) ==
              QStringList{"close", "action", "close"});
        press(Qt::Key_Space);
        CHECK(actions == 0);
        CHECK(haptics.impacts.size() == 2);
        CHECK(popups() == 0);
        waitForFocus("gear");
    }
    SUBCASE("of two the newest alone has it, then the other")
    {
        const auto first = show({.title = "First"});
        QQuickItem *below = item("action");
        CustomPopupView::make(haptics, {.title = "Second"})->show(*sampler);
        CHECK_FALSE(below->isEnabled());
        press(Qt::Key_Tab);
        press(Qt::Key_Tab);
        CHECK_FALSE(below->hasActiveFocus());
        press(Qt::Key_Escape);
        CHECK(sampler->popups()->popups().front() == first);
        REQUIRE(comes([&] { return below->hasActiveFocus(); }));
        press(Qt::Key_Return);
        CHECK(actions == 1);
    }
    SUBCASE("not dismissable: there is the action alone, and it stays")
    {
        show({.title = "Stay", .dismissable = Dismissable::No, .buttonTitle = "Yes"});
        CHECK_FALSE(item("close")->isVisible());
        CHECK(focusAfter({Qt::Key_Tab, Qt::Key_Escape, Qt::Key_Space, Qt::Key_Space}).back() == "action");
        CHECK(actions == 2);
        CHECK(popups() == 1);
    }
}

TEST_CASE("a popup lets go of its action when it is answered, even where that takes its screen away")
{
    RecordingHaptics haptics;
    auto screen = std::make_shared<PlainScreen>();
    const auto held = std::make_shared<int>();
    const auto popup = CustomPopupView::make(haptics, {.title = "Held", .tapAction = [held] {}});
    popup->show(*screen);
    CHECK(popup->button()->accessibleName() == "OK"); // for it has no title
    popup->buttonTapped();
    CHECK(held.use_count() == 1);

    auto last = CustomPopupView::make(haptics, {.title = "Gone", .tapAction = [&screen] { screen.reset(); }});
    last->show(*screen);
    auto *tapped = last.get();
    last.reset();
    tapped->buttonTapped();
    CHECK(screen == nullptr);
}

TEST_CASE_FIXTURE(Shown, "a missing colour leaves the card's border as it is without one")
{
    const auto border = [this] {
        return item("card")->property("border").value<QObject *>()->property("color").value<QColor>();
    };
    window.theme().setCatalogue([](std::string_view name, Appearance appearance) {
        return name == "Secondary" ? std::nullopt : namedColor(name, appearance);
    });
    show({.title = "No gold"});
    CHECK(border() == QColor(Qt::black));
    window.theme().setCatalogue(namedColor);
    CHECK(border() == QColor(0xFF, 0xC9, 0x6B));
}

TEST_CASE_FIXTURE(Shown, "a padded label has room also when it is empty; a read-out's digits do not move it")
{
    for (const char *text : {"Ready", ""}) {
        sampler->statusText()->setText(text);
        const QQuickItem *plain = item("status");
        CHECK(item("padded")->implicitWidth() == doctest::Approx(plain->implicitWidth() + 10));
        CHECK(item("padded")->implicitHeight() == doctest::Approx(plain->implicitHeight() + 4));
    }
    sampler->statusText()->setText("0.11");
    const double width = item("digits")->implicitWidth();
    sampler->statusText()->setText("0.88");
    CHECK(item("digits")->implicitWidth() == width);
}

TEST_CASE_FIXTURE(Shown, "pictures are drawn: a symbol in its colour, a photo, the live picture")
{
    const auto camera = std::make_shared<FakeSession>(FakeSession::Refuses{});
    auto red = PixelBuffer::ofSize(64, 64);
    for (std::size_t i = 0; i < red.rgb.size(); i += 3)
        red.rgb[i] = 200;
    sampler->photo()->setImage(Image::fromData(encodePng(red).value()).value());
    sampler->showPreview(camera.get());
    const auto at = [&](const char *name, QPointF in) {
        const QPointF point = rect(name).topLeft() + in;
        return QColor(quick().grabWindow().pixel(point.toPoint()));
    };
    // Qt draws by one path or another, as the bytes lie in memory: they differ in the last bit.
    const auto isNear = [](QColor seen, QColor expected) {
        return std::abs(seen.red() - expected.red()) <= 1 && std::abs(seen.green() - expected.green()) <= 1 &&
               std::abs(seen.blue() - expected.blue()) <= 1;
    };
    REQUIRE(comes([&] { return isNear(at("photo", {32, 32}), {200, 0, 0}); }));
    REQUIRE(comes([&] { return isNear(at("cell", {50, 50}), {200, 0, 0}); }));
    REQUIRE(comes([&] {
        if (const auto preview = camera->preview())
            preview->show(greyFrame(77));
        return at("preview", {380, 800}) == QColor(77, 77, 77);
    }));
    show({.icon = "heart.slash.fill", .title = "A symbol"});
    CHECK(isNear(at("icon", {36, 18}), {0xFF, 0xC9, 0x6B})); // heart
    CHECK(isNear(at("icon", {25, 21}), {0x1B, 0x1D, 0x3A})); // the gap beside the slash
    press(Qt::Key_Escape);
    sampler->showPreview(nullptr);
    REQUIRE(comes([&] { return at("preview", {380, 800}) == QColor(0x05, 0x06, 0x0C); }));
}
