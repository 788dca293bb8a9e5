#include "tests/fakes/FakeCamera.h"
#include "tests/ui/RecordingHaptics.h"
#include "tests/ui/Sampler.h"
#include "ui/CustomPopupView.h"
#include "ui/MainNavigationController.h"
#include "ui/SharedObject.h"
#include "ui/Window.h"

#include <doctest/doctest.h>

#include <QAccessible>
#include <QDir>
#include <QQmlComponent>
#include <QQuickItem>
#include <QTest>

using namespace skyflare;

namespace {

constexpr int deadlineMs = 60000;

template <typename Condition> bool comes(Condition condition)
{
    return QTest::qWaitFor(condition, deadlineMs);
}

/// The sampler in a real window of 390 × 844, drawn without a graphics card.
struct Shown {
    RecordingHaptics haptics;
    std::shared_ptr<Sampler> sampler =
        Sampler::storyboard().instantiateViewController<Sampler>("SamplerView");
    Window window;
    int actions = 0;

    Shown()
    {
        window.setRootViewController(makeShared<MainNavigationController>([this] { return sampler; }));
        window.makeKeyAndVisible();
        REQUIRE(comes([&] { return quick().isActive() && quick().activeFocusItem() == item("main"); }));
    }
    QQuickWindow &quick() { return window.quickWindow(); }

    QQuickItem *item(const char *name, QQuickItem *in = nullptr)
    {
        for (QQuickItem *child : (in != nullptr ? in : quick().contentItem())->childItems()) {
            if (child->objectName() == name)
                return child;
            if (auto *found = item(name, child))
                return found;
        }
        return nullptr;
    }
    CustomPopupView *show(CustomPopupView::Contents contents)
    {
        contents.tapAction = [this] { ++actions; };
        const auto popup = CustomPopupView::make(haptics, std::move(contents));
        popup->show(*sampler);
        REQUIRE(comes(
            [&] { return item("card") && item("card")->scale() == 1 && item("action")->hasActiveFocus(); }));
        return popup.get();
    }
    /// In the window.
    QRectF rect(QQuickItem *of) { return of->mapRectToScene(QRectF(QPointF(), of->size())); }
    QRectF drawn(const char *control) { return rect(item("drawn", item(control))); }
    void click(QPointF at) { QTest::mouseClick(&quick(), Qt::LeftButton, {}, at.toPoint()); }
    void press(Qt::Key key) { QTest::keyClick(&quick(), key); }
    int popups() { return sampler->popups()->count(); }
};

} // namespace

TEST_CASE("every QML file loads, and all of them together without a warning")
{
    Window window;
    QQmlEngine &engine = *qmlEngine(&window.quickWindow());
    const QStringList files = QDir(":/Skyflare/Ui/qml").entryList({"*.qml"});
    CHECK(files.size() == 17);
    for (const QString &file : files) {
        const QQmlComponent component(&engine, QUrl("qrc:/Skyflare/Ui/qml/" + file));
        INFO(component.errorString().toStdString());
        CHECK(component.isReady());
    }
    const Shown shown; // the rest is main()'s: a warning fails the program
}

TEST_CASE("the card has its measures")
{
    Shown shown;
    SUBCASE("with an icon")
    {
        shown.show({.icon = "trash", .title = "Delete All", .description = "Sure?", .buttonTitle = "Delete"});
        const QRectF card = shown.rect(shown.item("card"));
        const QRectF icon = shown.rect(shown.item("icon"));
        const QRectF title = shown.rect(shown.item("title"));
        const QRectF description = shown.rect(shown.item("description"));
        const QRectF action = shown.drawn("action");
        const QRectF close = shown.drawn("close");
        CHECK(shown.rect(shown.item("dimming")) == QRectF(0, 0, 390, 844));
        CHECK(card.width() == doctest::Approx(312));
        CHECK(card.center().x() == doctest::Approx(195));
        CHECK(std::abs(card.center().y() - 422) <= 0.5); // whole pixels
        CHECK(icon == QRectF(195 - 25, card.top() + 20, 50, 50));
        CHECK(title.top() == doctest::Approx(icon.bottom() + 20));
        CHECK(title.left() == doctest::Approx(card.left() + 20));
        CHECK(title.right() == doctest::Approx(card.right() - 20));
        CHECK(description.top() == doctest::Approx(title.bottom() + 10));
        CHECK(action.top() == doctest::Approx(description.bottom() + 20));
        CHECK(action.height() == 40);
        CHECK(action.left() == doctest::Approx(card.left() + 20));
        CHECK(action.right() == doctest::Approx(card.right() - 20));
        CHECK(card.bottom() == doctest::Approx(action.bottom() + 20));
        CHECK(close == QRectF(card.right() - 40, card.top() + 10, 30, 30));
        CHECK(shown.item("close")->size() == QSizeF(44, 44));
        CHECK(shown.item("action")->height() == 44);
    }
    SUBCASE("without an icon, on a pad, with a text longer than the window")
    {
        shown.quick().resize(1280, 800);
        REQUIRE(comes([&] { return shown.sampler->bounds().width() == 1280; }));
        shown.show({.title = "No icon", .description = std::string(9000, 'm')});
        const QRectF card = shown.rect(shown.item("card"));
        CHECK(card.width() == doctest::Approx(512));
        CHECK(shown.rect(shown.item("title")).top() == doctest::Approx(card.top() + 20));
        CHECK(card.height() == doctest::Approx(800 - 32));
        CHECK(shown.drawn("action").bottom() == doctest::Approx(card.bottom() - 20));
    }
}

TEST_CASE("a popup is answered by clicks")
{
    Shown shown;
    auto *popup = shown.show({.title = "Sure?", .buttonTitle = "Yes"});
    SUBCASE("beside the card nothing happens, neither to the popup nor below it")
    {
        shown.click({5, 5});
        shown.click(shown.rect(shown.item("main")).center());
        CHECK(shown.popups() == 1);
        CHECK(shown.sampler->mainButtonTaps == 0);
        CHECK_FALSE(shown.item("main")->isEnabled());
        popup->buttonTapped();
    }
    SUBCASE("the action")
    {
        shown.click(shown.drawn("action").center());
        CHECK(shown.actions == 1);
    }
    SUBCASE("the close control, seven pixels beside what is drawn, always vibrates")
    {
        shown.click(shown.drawn("close").topRight() + QPointF(6, -6));
        CHECK(shown.actions == 0);
        CHECK(shown.haptics.impacts.size() == 2);
    }
    CHECK(shown.popups() == 0);
    REQUIRE(comes([&] { return shown.item("main")->hasActiveFocus(); }));
}

TEST_CASE("a popup is answered by keys, and keeps the focus to itself")
{
    Shown shown;
    shown.press(Qt::Key_Tab); // the sampler's own: main, gear, main
    CHECK(shown.item("gear")->hasActiveFocus());
    SUBCASE("dismissable")
    {
        shown.show({.title = "Sure?", .buttonTitle = "Yes"});
        shown.press(Qt::Key_Tab);
        CHECK(shown.item("close")->hasActiveFocus());
        shown.press(Qt::Key_Tab);
        CHECK(shown.item("action")->hasActiveFocus());
        shown.press(Qt::Key_Backtab);
        CHECK(shown.item("close")->hasActiveFocus());
        SUBCASE("Enter on the action")
        {
            shown.press(Qt::Key_Tab);
            shown.press(Qt::Key_Return);
            CHECK(shown.actions == 1);
        }
        SUBCASE("Space on the close control")
        {
            shown.press(Qt::Key_Space);
            CHECK(shown.actions == 0);
        }
        SUBCASE("Esc")
        {
            shown.press(Qt::Key_Escape);
            CHECK(shown.actions == 0);
            CHECK(shown.haptics.impacts.size() == 2);
        }
        CHECK(shown.popups() == 0);
        REQUIRE(comes([&] { return shown.item("gear")->hasActiveFocus(); }));
    }
    SUBCASE("of two the newest alone has it, then the other")
    {
        auto *first = shown.show({.title = "First"});
        QQuickItem *below = shown.item("action");
        CustomPopupView::make(shown.haptics, {.title = "Second"})->show(*shown.sampler);
        CHECK_FALSE(below->isEnabled());
        shown.press(Qt::Key_Tab);
        shown.press(Qt::Key_Tab);
        CHECK_FALSE(below->hasActiveFocus());
        shown.press(Qt::Key_Escape);
        CHECK(shown.sampler->popups()->popups().front().get() == first);
        REQUIRE(comes([&] { return below->hasActiveFocus(); }));
    }
    SUBCASE("not dismissable: there is the action alone")
    {
        shown.show({.title = "Stay", .dismissable = CustomPopupView::Dismissable::No, .buttonTitle = "Yes"});
        CHECK_FALSE(shown.item("close")->isVisible());
        shown.press(Qt::Key_Tab);
        CHECK(shown.item("action")->hasActiveFocus());
        shown.press(Qt::Key_Escape);
        shown.press(Qt::Key_Space);
        CHECK(shown.actions == 1);
        CHECK(shown.popups() == 1);
    }
}

TEST_CASE("a missing colour leaves the card's border as it is without one")
{
    Shown shown;
    const auto border = [&] {
        return shown.item("card")->property("border").value<QObject *>()->property("color").value<QColor>();
    };
    shown.window.theme().setCatalogue([](std::string_view name, Appearance appearance) {
        return name == "Secondary" ? std::nullopt : namedColor(name, appearance);
    });
    shown.show({.title = "No gold"});
    CHECK(border() == QColor(Qt::black));
    shown.window.theme().setCatalogue(namedColor);
    CHECK(border() == QColor(0xFF, 0xC9, 0x6B));
}

TEST_CASE("small views have their sizes")
{
    Shown shown;
    auto *padded = shown.item("padded");
    for (const char *text : {"Ready", ""}) {
        shown.sampler->statusText()->setText(text);
        QQuickItem *plain = shown.item("status");
        CHECK(padded->implicitWidth() == doctest::Approx(plain->implicitWidth() + 10));
        CHECK(padded->implicitHeight() == doctest::Approx(plain->implicitHeight() + 4));
    }
    auto *photo = shown.item("cell")->property("imageView").value<QQuickItem *>();
    CHECK(photo->position() == QPointF(0, 0));
    CHECK(photo->size() == QSizeF(100, 100));
    CHECK(photo->clip());

    // A read-out does not move while its digits change.
    auto *digits = shown.item("digits");
    shown.sampler->lightPowerLabel()->setText("0.11");
    const double width = digits->implicitWidth();
    shown.sampler->lightPowerLabel()->setText("0.88");
    CHECK(digits->implicitWidth() == width);
}

TEST_CASE("a presented screen comes, takes the keyboard, and goes")
{
    Shown shown;
    const auto presented = Sampler::storyboard().instantiateViewController<Sampler>("SamplerView");
    shown.sampler->present(presented, Animated::Yes);
    auto &stack = shown.window.screens();
    const auto isCovered = [&] { return stack.data(stack.index(0), ScreenStack::IsCoveredRole).toBool(); };
    REQUIRE(comes(isCovered));
    CHECK_FALSE(shown.item("main")->isVisible());
    shown.press(Qt::Key_Space);
    CHECK(presented->mainButtonTaps == 1);
    CHECK(shown.sampler->mainButtonTaps == 0);
    shown.press(Qt::Key_Escape);
    REQUIRE(comes([&] { return stack.rowCount() == 1; }));
    CHECK(shown.item("main")->hasActiveFocus());
}

TEST_CASE("pictures are drawn: a symbol in its colour, a photo, the live picture, the curve")
{
    Shown shown;
    const auto camera = std::make_shared<FakeSession>(FakeSession::Refuses{});
    auto red = PixelBuffer::ofSize(64, 64);
    for (std::size_t i = 0; i < red.rgb.size(); i += 3)
        red.rgb[i] = 200;
    shown.sampler->photo()->setImage(Image::fromData(encodePng(red).value()).value());
    shown.sampler->showPreview(camera.get());
    const auto at = [&](const char *name, QPointF in) {
        const QPointF point = shown.item(name)->mapToScene(in);
        return QColor(shown.quick().grabWindow().pixel(point.toPoint()));
    };
    // Qt enlarges by one path or another, as the bytes lie in memory: they differ in the last bit.
    const auto isRed = [](QColor seen) {
        return std::abs(seen.red() - 200) <= 1 && seen.green() == 0 && seen.blue() == 0;
    };
    REQUIRE(comes([&] { return isRed(at("photo", {32, 32})); }));
    REQUIRE(comes([&] { return isRed(at("cell", {50, 50})); }));
    REQUIRE(comes([&] {
        if (const auto preview = camera->preview())
            preview->show(greyFrame(77));
        return at("preview", {380, 800}) == QColor(77, 77, 77);
    }));
    shown.show({.icon = "heart.slash.fill", .title = "A symbol"});
    CHECK(at("icon", {36, 18}) == QColor(0xFF, 0xC9, 0x6B)); // heart
    CHECK(at("icon", {25, 21}) == QColor(0x1B, 0x1D, 0x3A)); // the gap beside the slash
    shown.press(Qt::Key_Escape);
    shown.sampler->showPreview(nullptr);
    REQUIRE(comes([&] { return at("preview", {380, 800}) == QColor(0x05, 0x06, 0x0C); }));
}
