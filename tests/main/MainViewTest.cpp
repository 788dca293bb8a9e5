#include "tests/main/MainFixture.h"
#include "ui/Window.h"

#include <doctest/doctest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QTest>

using namespace skyflare;

namespace {

constexpr int deadlineMs = 60000;

QQuickItem *itemNamed(QQuickItem *in, const QString &name)
{
    for (QQuickItem *child : in->childItems()) {
        if (child->objectName() == name)
            return child;
        if (auto *found = itemNamed(child, name))
            return found;
    }
    return nullptr;
}

void addControls(QAccessibleInterface *in, std::vector<QAccessibleInterface *> &controls)
{
    if (in->state().invisible)
        return;
    const auto role = in->role();
    if (role == QAccessible::Button || role == QAccessible::ButtonDropDown ||
        role == QAccessible::RadioButton)
        controls.push_back(in);
    for (int i = 0; i < in->childCount(); ++i)
        addControls(in->child(i), controls);
}

enum class Launch { First, Later };

/// The real view of the main screen on fakes, used by clicks and keys.
struct View {
    MainFixture main;
    Window window;

    explicit View(Launch launch = Launch::Later)
    {
        main.app.setFirstLaunch(launch == Launch::First);
        main.app.setManualFocus(true);
        main.screen->setViewUrl(QUrl("qrc:/Skyflare/Main/MainView.qml"));
        main.load();
        window.setRootViewController(main.screen);
        window.makeKeyAndVisible();
        REQUIRE(QTest::qWaitFor([this] { return quick().isActive() && !focus().isEmpty(); }, deadlineMs));
    }
    QQuickWindow &quick() { return window.quickWindow(); }
    QString focus() { return quick().activeFocusItem() ? quick().activeFocusItem()->objectName() : ""; }
    void press(Qt::Key key)
    {
        QTest::keyClick(&quick(), key);
        main.time.runUntilIdle();
    }
    void click(QPointF at)
    {
        QTest::mouseClick(&quick(), Qt::LeftButton, {}, at.toPoint());
        main.time.runUntilIdle();
    }
    QRectF rect(const char *name)
    {
        auto *item = itemNamed(quick().contentItem(), name);
        REQUIRE(item != nullptr);
        return item->mapRectToScene(QRectF(QPointF(), item->size()));
    }
    void click(const char *name) { click(rect(name).center()); }
    bool isOpen(SelectionContainer *list) { return !list->isHidden(); }
};

} // namespace

TEST_CASE("the main screen is used by keys alone")
{
    View view(Launch::First);
    const auto &screen = view.main.screen;
    CHECK(view.focus() == "onboarding");
    view.press(Qt::Key_Space);
    view.press(Qt::Key_Return);
    CHECK_FALSE(screen->onboardingView()->step(2).isHidden());
    view.press(Qt::Key_Space);
    view.press(Qt::Key_Space);
    CHECK(screen->onboardingView()->isHidden());
    CHECK(view.focus() == "mainButton");

    QStringList order;
    for (int i = 0; i < 5; ++i) {
        view.press(Qt::Key_Tab);
        order.append(view.focus());
    }
    CHECK(order ==
          QStringList{"infoButton", "settingsButton", "sensivityButton", "frequencyButton", "mainButton"});

    view.press(Qt::Key_Backtab);
    view.press(Qt::Key_Return);
    REQUIRE(view.isOpen(screen->frequencySelectionsContainer()));
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Down);
    view.press(Qt::Key_Space); // chooses, where a list is open
    CHECK(screen->frequencyLabel()->text() == "3 photos");
    CHECK(view.focus() == "frequencyButton");
    CHECK_FALSE(screen->isRunning());

    view.press(Qt::Key_Return);
    view.press(Qt::Key_Escape);
    CHECK_FALSE(view.isOpen(screen->frequencySelectionsContainer()));
    view.press(Qt::Key_Space); // starts, wherever the focus is
    CHECK(screen->isRunning());
    CHECK(view.focus() == "mainButton");
    view.press(Qt::Key_Return);
    CHECK_FALSE(screen->isRunning());
}

TEST_CASE("the main screen is used by taps alone")
{
    View view;
    const auto &screen = view.main.screen;
    view.click("sensivityButton");
    view.click("frequencyButton");
    CHECK_FALSE(view.isOpen(screen->sensitivitySelectionsContainer()));
    view.click("sensivityButton");
    const QRectF list = view.rect("sensivityOptions");
    view.click(QPointF(list.center().x(), list.bottom() - 6 - 2.5 * 44)); // the third from below
    CHECK(screen->sensivityLabel()->text() == "High");
    CHECK(view.focus() == "mainButton");

    view.click("mainButton");
    REQUIRE(screen->isRunning());
    view.click(view.rect("lightCurve").center());
    CHECK(screen->focusView() == nullptr); // that is no place in the sky
    view.click(QPointF(200, 300));
    REQUIRE(screen->focusView() != nullptr);
    CHECK(screen->focusView()->center() == QPointF(200, 300));
    view.click("mainButton");
    CHECK_FALSE(screen->isRunning());
}

TEST_CASE("in every window each control has a name, is in it, large enough, and in nobody's way")
{
    View view;
    view.main.screen->didCapturePhoto(Image::fromData(MainFixture::onePixelPng()).value(), 1284, 0.4F);
    QAccessible::setActive(true);
    for (const QSize size :
         {QSize(360, 640), QSize(390, 844), QSize(844, 390), QSize(640, 360), QSize(1280, 800)}) {
        CAPTURE(size.width());
        view.quick().resize(size);
        REQUIRE(
            QTest::qWaitFor([&] { return view.main.screen->bounds().size() == QSizeF(size); }, deadlineMs));
        std::vector<QAccessibleInterface *> controls;
        addControls(QAccessible::queryAccessibleInterface(&view.quick()), controls);
        CHECK(controls.size() == 6);
        const QRect inside(view.quick().mapToGlobal(QPoint()), size);
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const QRect rect = controls[i]->rect();
            CAPTURE(controls[i]->text(QAccessible::Name).toStdString());
            CHECK_FALSE(controls[i]->text(QAccessible::Name).isEmpty());
            CHECK(inside.contains(rect));
            CHECK(std::min(rect.width(), rect.height()) >= 44);
            for (std::size_t j = 0; j < i; ++j)
                CHECK_FALSE(rect.intersects(controls[j]->rect()));
        }
    }
}
