#pragma once

#include "ui/ViewController.h"

#include <QAbstractListModel>
#include <functional>
#include <vector>

namespace skyflare {

/// The screens of one window from bottom to top, as a list for QML: what the root shows, what that presents,
/// and so on; and those that are still on their way out.
///
/// Threads: main. Shares the controllers as long as they are seen.
class ScreenStack : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its window")

public:
    enum Role { ControllerRole = Qt::UserRole, IsTopRole, IsLeavingRole, IsCoveredRole, IsAnimatedRole };

    /// Loads the root's view, and follows what is shown from then on.
    void setRootViewController(std::shared_ptr<ViewController> root);
    [[nodiscard]] std::shared_ptr<ViewController> topViewController() const;

    Q_INVOKABLE void escapePressed();

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    /// A screen is before the user that was not: it has come, or what was over it has gone. Once for each
    /// time; neither containers nor popups are screens.
    void screenDidAppear(const skyflare::ViewController &screen);

private:
    enum class Phase { Entering, Shown, Leaving };
    struct Screen {
        std::shared_ptr<ViewController> controller;
        Phase phase = Phase::Entering;
    };

    void whenTold(std::function<void()> change);
    void hierarchyChanged();
    void update();
    [[nodiscard]] std::vector<std::shared_ptr<ViewController>> chain();
    void follow(ViewController *controller);
    void add(const std::shared_ptr<ViewController> &controller);
    void didEnter(const ViewController *controller);
    void didLeave(const ViewController *controller);
    [[nodiscard]] std::vector<Screen>::iterator find(const ViewController *controller);
    [[nodiscard]] int topRow() const;
    void tellRows();
    void tellAppearance();

    std::shared_ptr<ViewController> root_;
    std::vector<Screen> screens_;
    bool isTelling_ = false;     ///< the views of rows that have changed
    std::uint64_t appeared_ = 0; ///< the instance id of the screen that has done so last
};

} // namespace skyflare
