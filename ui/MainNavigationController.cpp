#include "ui/MainNavigationController.h"

namespace skyflare {

MainNavigationController::MainNavigationController(Factory makeFirstScreen)
    : makeFirstScreen_(std::move(makeFirstScreen))
{
}

void MainNavigationController::viewDidLoad()
{
    ViewController::viewDidLoad();
    auto first = makeFirstScreen_();
    if (!first)
        qFatal("MainNavigationController: there is no first screen");
    first->setModalPresentationStyle(ModalPresentationStyle::FullScreen);
    pushViewController(std::move(first), Animated::Yes);
}

void MainNavigationController::pushViewController(std::shared_ptr<ViewController> controller,
                                                  Animated animated)
{
    controller->setNavigationController(
        std::static_pointer_cast<MainNavigationController>(shared_from_this()));
    controller->setTransition(animated);
    screens_.push_back(std::move(controller));
    screens_.back()->loadViewIfNeeded();
    emit hierarchyChanged();
}

std::shared_ptr<ViewController> MainNavigationController::topViewController() const
{
    return screens_.empty() ? nullptr : screens_.back();
}

std::shared_ptr<ViewController> MainNavigationController::shownViewController()
{
    const auto top = topViewController();
    return top ? top : shared_from_this();
}

} // namespace skyflare
