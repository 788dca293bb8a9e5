#include "tests/ui/Sampler.h"
#include "ui/MainNavigationController.h"
#include "ui/ScreenStack.h"
#include "ui/SharedObject.h"

#include <doctest/doctest.h>

using namespace skyflare;

namespace {

/// A root with the sampler on it, and what a window would be told to show. No window.
struct Screens {
    std::shared_ptr<Sampler> sampler =
        Sampler::storyboard().instantiateViewController<Sampler>("SamplerView");
    std::shared_ptr<MainNavigationController> root =
        makeShared<MainNavigationController>([this] { return sampler; });
    ScreenStack stack;
    std::vector<std::string> appeared;

    Screens()
    {
        QObject::connect(&stack, &ScreenStack::screenDidAppear,
                         [this](const ViewController &screen) { appeared.push_back(screen.className()); });
        stack.setRootViewController(root);
    }

    /// The rows as letters: E(ntered) or L(eaving), and what is top or covered.
    [[nodiscard]] std::string rows() const
    {
        std::string text;
        for (int row = 0; row < stack.rowCount(); ++row) {
            const auto is = [&](ScreenStack::Role role) {
                return stack.data(stack.index(row), role).toBool();
            };
            text += is(ScreenStack::IsLeavingRole) ? "leaving" : "here";
            text += is(ScreenStack::IsTopRole) ? " top" : "";
            text += is(ScreenStack::IsCoveredRole) ? " covered" : "";
            text += "; ";
        }
        return text;
    }
};

} // namespace

TEST_CASE("a presented screen covers the one below, and goes when it is dismissed")
{
    Screens screens;
    screens.stack.setRootViewController(screens.root); // once more
    CHECK(screens.sampler->viewDidLoads == 1);
    CHECK(screens.rows() == "here top; ");
    auto presented = makeShared<PlainScreen>();
    screens.sampler->present(presented, Animated::Yes);
    CHECK(screens.rows() == "here; here top; ");
    presented->viewDidAppear();
    CHECK(screens.rows() == "here covered; here top; ");

    SUBCASE("a second one at the same time is ignored")
    {
        screens.sampler->present(makeShared<PlainScreen>(), Animated::Yes);
        CHECK(screens.sampler->presentedViewController() == presented);
    }
    SUBCASE("it dismisses itself, is seen until it is out, and can be presented again meanwhile")
    {
        presented->dismiss(Animated::Yes);
        CHECK(screens.sampler->presentedViewController() == nullptr);
        CHECK(screens.rows() == "here top; leaving; ");
        screens.sampler->present(presented, Animated::Yes);
        CHECK(screens.rows() == "here; here top; ");
        presented->viewDidDisappear(); // late news of the way out
        CHECK(screens.rows() == "here; here top; ");
    }
    SUBCASE("what it presents itself goes with it")
    {
        presented->present(makeShared<PlainScreen>(), Animated::No);
        CHECK(screens.rows() == "here covered; here; here top; ");
        screens.sampler->dismiss(Animated::No);
        CHECK(screens.rows() == "here top; leaving; leaving; ");
    }
    SUBCASE("Esc closes it, and then nothing more")
    {
        screens.stack.escapePressed();
        presented->viewDidDisappear();
        screens.stack.escapePressed();
        CHECK(screens.rows() == "here top; ");
    }
}

TEST_CASE("a screen appears when it has come, and again when what was over it has gone")
{
    Screens screens;
    using Names = std::vector<std::string>;
    CHECK(screens.appeared.empty()); // on its way
    screens.sampler->viewDidAppear();
    screens.sampler->viewDidAppear();
    CHECK(screens.appeared == Names{"Sampler"});
    screens.appeared.clear();

    auto first = makeShared<PlainScreen>();
    SUBCASE("one that goes before it has come is nothing")
    {
        screens.sampler->present(first, Animated::Yes);
        first->dismiss(Animated::Yes);
        first->viewDidDisappear();
        CHECK(screens.appeared.empty());
    }
    SUBCASE("of two that go at once nothing in between is seen")
    {
        const auto second = makeShared<PlainScreen>();
        screens.sampler->present(first, Animated::Yes);
        first->viewDidAppear();
        first->present(second, Animated::Yes);
        second->viewDidAppear();
        screens.appeared.clear();
        screens.sampler->dismiss(Animated::No);
        first->viewDidDisappear();
        CHECK(screens.appeared.empty());
        second->viewDidDisappear();
        CHECK(screens.appeared == Names{"Sampler"});
    }
}

TEST_CASE("a screen that closes itself by its own button lives until that is done")
{
    Screens screens;
    struct ClosesItself final : ViewController {
        bool *isGone;
        explicit ClosesItself(bool *gone) : isGone(gone) {}
        ~ClosesItself() override { *isGone = true; }
        void dismissButtonTapped()
        {
            dismiss(Animated::No);
            CHECK_FALSE(*isGone);
        }
    };
    bool isGone = false;
    auto *screen = [&] {
        auto made = makeShared<ClosesItself>(&isGone);
        screens.sampler->present(made, Animated::No);
        return made.get();
    }();
    screen->viewDidAppear();
    QObject::connect(&screens.stack, &ScreenStack::dataChanged, &screens.stack,
                     [&] { screen->viewDidDisappear(); });
    screen->dismissButtonTapped();
    CHECK(screens.rows() == "here top; leaving; "); // the views are still being told
    QCoreApplication::sendPostedEvents();
    CHECK(screens.rows() == "here top; ");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    CHECK(isGone);
}

TEST_CASE("phone and pad differ at a shortest side of 600")
{
    PlainScreen screen;
    const auto shapeOf = [&screen](double width, double height) {
        screen.setBounds({0, 0, width, height});
        return std::string(screen.isPad() ? "pad" : "phone") + (screen.isLandscape() ? " on its side" : "");
    };
    CHECK(shapeOf(390, 844) == "phone");
    CHECK(shapeOf(844, 390) == "phone on its side");
    CHECK(shapeOf(599, 1280) == "phone");
    CHECK(shapeOf(600, 1280) == "pad");
    CHECK(shapeOf(1280, 800) == "pad");
}
