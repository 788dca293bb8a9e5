#include "tests/ui/RecordingHaptics.h"
#include "tests/ui/Sampler.h"
#include "ui/CustomPopupView.h"

#include <doctest/doctest.h>

using namespace skyflare;
using Dismissable = CustomPopupView::Dismissable;

namespace {

/// A popup on a screen of 390 × 844, without a window.
struct Shown {
    RecordingHaptics haptics;
    std::shared_ptr<PlainScreen> screen = std::make_shared<PlainScreen>();
    int actions = 0;
    std::shared_ptr<int> held = std::make_shared<int>(); ///< by the popup's action
    CustomPopupView *popup = nullptr;

    explicit Shown(Dismissable dismissable, bool hasAction = true)
    {
        screen->setBounds({0, 0, 390, 844});
        CustomPopupView::Contents contents{.icon = "trash",
                                           .title = "Delete All",
                                           .description = "Are you sure?",
                                           .dismissable = dismissable,
                                           .buttonTitle = "Yes, Delete All"};
        if (hasAction)
            contents.tapAction = [this, kept = held] { actions += *kept + 1; };
        auto made = CustomPopupView::make(haptics, std::move(contents));
        popup = made.get();
        made->show(*screen);
    }
    [[nodiscard]] int count() const { return screen->popups()->count(); }
};

} // namespace

TEST_CASE("showing a popup covers the screen and is felt")
{
    Shown shown(Dismissable::Yes);
    CHECK(shown.count() == 1);
    CHECK(shown.popup->frame() == QRectF(0, 0, 390, 844));
    CHECK(shown.haptics.impacts == std::vector{ImpactFeedbackStyle::Medium});
    CHECK(shown.popup->titleLabel()->text() == "Delete All");
    CHECK(shown.popup->descriptionLabel()->text() == "Are you sure?");
    CHECK(shown.popup->icon()->symbol() == "trash");
    CHECK_FALSE(shown.popup->dismissButton()->isHidden());
    CHECK(shown.popup->cardWidth() == doctest::Approx(312));
    shown.screen->setBounds({0, 0, 1280, 800});
    CHECK(shown.popup->cardWidth() == doctest::Approx(512));
}

TEST_CASE("the action button runs the action, and takes a dismissable popup away")
{
    SUBCASE("dismissable: the action's closure goes with the popup")
    {
        Shown shown(Dismissable::Yes);
        shown.popup->buttonTapped();
        CHECK(shown.actions == 1);
        CHECK(shown.count() == 0);
        CHECK(shown.held.use_count() == 1);
        CHECK(shown.haptics.impacts.size() == 2);
    }
    SUBCASE("without an action it is felt and closes all the same")
    {
        Shown shown(Dismissable::Yes, false);
        shown.popup->buttonTapped();
        CHECK(shown.count() == 0);
        CHECK(shown.haptics.impacts.size() == 2);
    }
    SUBCASE("not dismissable: it stays, has no close control, and Esc does nothing")
    {
        Shown shown(Dismissable::No);
        CHECK(shown.popup->dismissButton()->isHidden());
        shown.popup->buttonTapped();
        shown.popup->buttonTapped();
        shown.popup->dismissPopupWithVibrate(true);
        shown.screen->escapePressed();
        CHECK(shown.actions == 2);
        CHECK(shown.count() == 1);
        CHECK(shown.haptics.impacts.size() == 3);
    }
    SUBCASE("an action that lets go of the whole screen")
    {
        auto screen = std::make_shared<PlainScreen>();
        RecordingHaptics haptics;
        auto made =
            CustomPopupView::make(haptics, {.title = "Gone", .tapAction = [&screen] { screen.reset(); }});
        made->show(*screen);
        auto *popup = made.get();
        made.reset();
        popup->buttonTapped();
        CHECK(screen == nullptr);
    }
}

TEST_CASE("the close control runs no action, and vibrates if its flag says so")
{
    Shown shown(Dismissable::Yes);
    SUBCASE("with")
    {
        shown.popup->dismissPopupWithVibrate(true);
        CHECK(shown.haptics.impacts.size() == 2);
    }
    SUBCASE("without")
    {
        shown.popup->dismissPopupWithVibrate(false);
        CHECK(shown.haptics.impacts.size() == 1);
    }
    SUBCASE("by Esc, the newest of several first")
    {
        CustomPopupView::make(shown.haptics, {.title = "Second"})->show(*shown.screen);
        shown.screen->escapePressed();
        CHECK(shown.count() == 1);
        CHECK(shown.screen->popups()->popups()[0]->titleLabel()->text() == "Delete All");
        shown.screen->escapePressed();
    }
    CHECK(shown.count() == 0);
    CHECK(shown.actions == 0);
}

TEST_CASE("a popup without title for its button has a name for screen readers")
{
    RecordingHaptics haptics;
    const auto popup = CustomPopupView::make(haptics, {.title = "We need your permission"});
    CHECK(popup->icon() == nullptr);
    CHECK(popup->button()->text().empty());
    CHECK(popup->button()->accessibleName() == "OK");
    CHECK(popup->dismissButton()->accessibleName() == "Close");
}
