#include "tests/main/ShownMain.h"

using namespace skyflare;

namespace {

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

} // namespace

TEST_CASE_FIXTURE(ShownMain, "the main screen is used by keys alone")
{
    app.setFirstLaunch(true);
    bringUpMain("onboarding");
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    CHECK_FALSE(screen->onboardingView()->step(2).isHidden());
    press(Qt::Key_Space);
    press(Qt::Key_Space);
    CHECK(screen->onboardingView()->isHidden());
    CHECK(focus() == "mainButton");
    CHECK(focusAfter({Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Backtab}) ==
          QStringList{"infoButton", "settingsButton", "sensivityButton", "frequencyButton", "mainButton",
                      "frequencyButton"});

    press(Qt::Key_Return);
    REQUIRE_FALSE(screen->frequencySelectionsContainer()->isHidden());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Space); // chooses, where a list is open
    CHECK(screen->frequencyLabel()->text() == "3 photos");
    CHECK(screen->captureManager().captureInterval() == 0.333);
    CHECK(app.frequency() == 0.333);
    CHECK(focus() == "frequencyButton");
    CHECK_FALSE(screen->isRunning());

    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    CHECK(screen->frequencySelectionsContainer()->isHidden());
    press(Qt::Key_Space); // starts, wherever the focus is
    CHECK(screen->isRunning());
    CHECK(focus() == "mainButton");
    press(Qt::Key_Return);
    CHECK_FALSE(screen->isRunning());
}

TEST_CASE_FIXTURE(ShownMain, "the main screen is used by taps alone")
{
    bringUpMain();
    click("frequencyButton");
    click("sensivityButton"); // one list at a time
    CHECK(screen->frequencySelectionsContainer()->isHidden());
    const QRectF list = rect("sensivityOptions");
    haptics.impacts.clear();
    click(QPointF(list.center().x(), list.bottom() - 6 - 2.5 * 44)); // the third from below
    CHECK(haptics.impacts == std::vector{ImpactFeedbackStyle::Medium});
    CHECK(screen->sensivityLabel()->text() == "High");
    CHECK(screen->captureManager().brightnessThreshold() == 0.05000000074505806);
    CHECK(screen->lightCurve()->rise() == 0.05000000074505806);
    CHECK(app.sensivity() == 0.05f);
    app.setSensivity(0.15f); // stored by hand: no level has it
    CHECK(screen->sensivityLabel()->text() == "High");
    CHECK(focus() == "mainButton");

    click("mainButton");
    REQUIRE(screen->isRunning());
    click("lightCurve");
    CHECK(screen->focusView() == nullptr); // that is no place in the sky
    click(QPointF(200, 300));
    REQUIRE(screen->focusView() != nullptr);
    CHECK(screen->focusView()->center() == QPointF(200, 300));
}

TEST_CASE_FIXTURE(ShownMain,
                  "in every window each control has a name, is in it, large enough, and in nobody's way")
{
    bringUpMain();
    screen->didCapturePhoto(Image::fromData(onePixelPng()).value(), 1284, 0.4F);
    QAccessible::setActive(true);
    for (const QSize size :
         {QSize(360, 640), QSize(390, 844), QSize(844, 390), QSize(640, 360), QSize(1280, 800)}) {
        CAPTURE(size.width());
        resize(size);
        std::vector<QAccessibleInterface *> controls;
        addControls(QAccessible::queryAccessibleInterface(&quick()), controls);
        CHECK(controls.size() == 6);
        const QRect inside(quick().mapToGlobal(QPoint()), size);
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const QRect place = controls[i]->rect();
            CAPTURE(controls[i]->text(QAccessible::Name).toStdString());
            CHECK_FALSE(controls[i]->text(QAccessible::Name).isEmpty());
            CHECK(controls[i]->actionInterface()->actionNames().count("Press") == 1);
            CHECK(inside.contains(place));
            CHECK(std::min(place.width(), place.height()) >= 44);
            for (std::size_t j = 0; j < i; ++j)
                CHECK_FALSE(place.intersects(controls[j]->rect()));
        }
    }
    act("mainButton", "Press");
    CHECK(screen->isRunning());
    act("frequencyButton", "Press");
    CHECK_FALSE(screen->frequencySelectionsContainer()->isHidden());
}
