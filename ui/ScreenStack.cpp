#include "ui/ScreenStack.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

namespace skyflare {

void ScreenStack::setRootViewController(std::shared_ptr<ViewController> root)
{
    root_ = std::move(root);
    root_->loadViewIfNeeded();
    update();
}

std::shared_ptr<ViewController> ScreenStack::topViewController() const
{
    const int row = topRow();
    return row < 0 ? nullptr : screens_[static_cast<std::size_t>(row)].controller;
}

/// What ought to be on the screen now, bottom to top. Each of them is followed.
std::vector<std::shared_ptr<ViewController>> ScreenStack::chain()
{
    std::vector<std::shared_ptr<ViewController>> chain;
    for (auto next = root_; next; next = chain.back()->presentedViewController()) {
        follow(next.get());
        chain.push_back(next->shownViewController());
        follow(chain.back().get());
    }
    return chain;
}

void ScreenStack::follow(ViewController *controller)
{
    connect(controller, &ViewController::hierarchyChanged, this, &ScreenStack::hierarchyChanged,
            Qt::UniqueConnection);
}

/// A view may come or go while it is told of its row, if that takes it no time: a model must not change while
/// it tells.
void ScreenStack::whenTold(std::function<void()> change)
{
    if (isTelling_)
        QMetaObject::invokeMethod(this, std::move(change), Qt::QueuedConnection);
    else
        change();
}

void ScreenStack::hierarchyChanged()
{
    whenTold([this] { update(); });
}

void ScreenStack::update()
{
    const auto wanted = chain();
    for (Screen &screen : screens_) {
        if (std::ranges::find(wanted, screen.controller) == wanted.end())
            screen.phase = Phase::Leaving;
    }
    for (const auto &controller : wanted) {
        const auto known = find(controller.get());
        if (known == screens_.end()) {
            add(controller);
        } else if (known->phase == Phase::Leaving) {
            known->phase = Phase::Entering; // kept by its owner and called back on its way out
        }
    }
    tellRows();
}

void ScreenStack::add(const std::shared_ptr<ViewController> &controller)
{
    auto *entering = controller.get();
    connect(entering, &ViewController::appeared, this,
            [this, entering] { whenTold([this, entering] { didEnter(entering); }); });
    connect(entering, &ViewController::disappeared, this,
            [this, entering] { whenTold([this, entering] { didLeave(entering); }); });
    const QScopedValueRollback telling(isTelling_, true);
    beginInsertRows({}, rowCount(), rowCount());
    screens_.push_back({controller, Phase::Entering});
    endInsertRows();
}

void ScreenStack::didEnter(const ViewController *controller)
{
    const auto screen = find(controller);
    if (screen == screens_.end() || screen->phase != Phase::Entering)
        return;
    screen->phase = Phase::Shown;
    tellRows();
    tellAppearance();
}

void ScreenStack::didLeave(const ViewController *controller)
{
    const auto screen = find(controller);
    if (screen == screens_.end() || screen->phase != Phase::Leaving)
        return;
    const auto held = screen->controller; // until its view is gone
    disconnect(held.get(), nullptr, this, nullptr);
    const int row = static_cast<int>(screen - screens_.begin());
    {
        const QScopedValueRollback telling(isTelling_, true);
        beginRemoveRows({}, row, row);
        screens_.erase(screen);
        endRemoveRows();
    }
    tellRows();
    tellAppearance();
}

/// The uppermost screen has appeared when it has come and nothing over it is still on its way out.
void ScreenStack::tellAppearance()
{
    if (screens_.empty() || screens_.back().phase != Phase::Shown)
        return;
    const auto top = screens_.back().controller;
    if (std::exchange(appeared_, top->instanceID()) != top->instanceID())
        emit screenDidAppear(*top);
}

void ScreenStack::escapePressed()
{
    if (const auto top = topViewController())
        top->escapePressed();
}

std::vector<ScreenStack::Screen>::iterator ScreenStack::find(const ViewController *controller)
{
    return std::ranges::find_if(
        screens_, [controller](const Screen &screen) { return screen.controller.get() == controller; });
}

int ScreenStack::topRow() const
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (screens_[static_cast<std::size_t>(row)].phase != Phase::Leaving)
            return row;
    }
    return -1;
}

void ScreenStack::tellRows()
{
    const QScopedValueRollback telling(isTelling_, true);
    if (!screens_.empty())
        emit dataChanged(index(0), index(rowCount() - 1));
}

int ScreenStack::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(screens_.size());
}

QVariant ScreenStack::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Screen &screen = screens_[static_cast<std::size_t>(index.row())];
    const auto isShown = [](const Screen &above) { return above.phase == Phase::Shown; };
    switch (role) {
    case ControllerRole:
        return QVariant::fromValue(screen.controller.get());
    case IsTopRole:
        return index.row() == topRow();
    case IsLeavingRole:
        return screen.phase == Phase::Leaving;
    case IsCoveredRole:
        return std::any_of(screens_.begin() + index.row() + 1, screens_.end(), isShown);
    case IsAnimatedRole:
        return screen.controller->isTransitionAnimated();
    default:
        return {};
    }
}

QHash<int, QByteArray> ScreenStack::roleNames() const
{
    return {{ControllerRole, "controller"},
            {IsTopRole, "isTop"},
            {IsLeavingRole, "isLeaving"},
            {IsCoveredRole, "isCovered"},
            {IsAnimatedRole, "isAnimated"}};
}

} // namespace skyflare
