#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <memory>
#include <vector>

namespace skyflare {

class CustomPopupView;

/// The popups over one screen, the newest last; a list for QML with the roles "popup" and "isTop".
///
/// Threads: main. Owns its popups.
class PopupList : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { PopupRole = Qt::UserRole, IsTopRole };

    void append(std::shared_ptr<CustomPopupView> popup);
    void remove(const CustomPopupView *popup);
    [[nodiscard]] int count() const { return static_cast<int>(popups_.size()); }
    [[nodiscard]] const std::vector<std::shared_ptr<CustomPopupView>> &popups() const { return popups_; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void countChanged();

private:
    void tellRows();

    std::vector<std::shared_ptr<CustomPopupView>> popups_;
};

} // namespace skyflare
