#pragma once

#include "screens/settings/SettingsTableViewCell.h"

#include <QQmlListProperty>
#include <memory>
#include <vector>

namespace skyflare {

/// What a table asks for its rows, and who hears of a tap.
class SettingsTableViewDelegate {
public:
    [[nodiscard]] virtual int numberOfRowsInSection(int section) const = 0;
    [[nodiscard]] virtual std::shared_ptr<SettingsTableViewCell> cellForRowAtIndexPath(int row) = 0;
    virtual void didSelectRowAtIndexPath(int row) = 0;

protected:
    ~SettingsTableViewDelegate() = default;
};

/// The rows of the settings as the view shows them.
///
/// Threads: main. Owned by its controller, which is its delegate.
class SettingsTableView : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(QQmlListProperty<skyflare::SettingsTableViewCell> cells READ shownCells NOTIFY reloaded)

public:
    void setDelegate(SettingsTableViewDelegate &delegate) { delegate_ = &delegate; }
    /// Asks the delegate for all its rows.
    void reloadData();

    [[nodiscard]] const std::vector<std::shared_ptr<SettingsTableViewCell>> &cells() const { return cells_; }
    Q_INVOKABLE void rowTapped(int row) { delegate_->didSelectRowAtIndexPath(row); }

signals:
    void reloaded();

private:
    SettingsTableViewDelegate *delegate_ = nullptr;
    std::vector<std::shared_ptr<SettingsTableViewCell>> cells_;
    QList<SettingsTableViewCell *> shown_; ///< those

    [[nodiscard]] QQmlListProperty<SettingsTableViewCell> shownCells() { return {this, &shown_}; }
};

} // namespace skyflare
