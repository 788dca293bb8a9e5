#include "ui/PopupList.h"

#include "ui/CustomPopupView.h"

#include <algorithm>

namespace skyflare {

void PopupList::append(std::shared_ptr<CustomPopupView> popup)
{
    beginInsertRows({}, count(), count());
    popups_.push_back(std::move(popup));
    endInsertRows();
    tellRows();
}

void PopupList::remove(const CustomPopupView *popup)
{
    const auto found = std::ranges::find_if(popups_, [popup](const auto &own) { return own.get() == popup; });
    if (found == popups_.end())
        return;
    const auto held = *found; // until the views have let go of it
    const int row = static_cast<int>(found - popups_.begin());
    beginRemoveRows({}, row, row);
    popups_.erase(found);
    endRemoveRows();
    tellRows();
}

void PopupList::tellRows()
{
    emit countChanged();
    if (!popups_.empty())
        emit dataChanged(index(0), index(count() - 1), {IsTopRole});
}

int PopupList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant PopupList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    if (role == IsTopRole)
        return index.row() == count() - 1;
    return QVariant::fromValue(popups_[static_cast<std::size_t>(index.row())].get());
}

QHash<int, QByteArray> PopupList::roleNames() const
{
    return {{PopupRole, "popup"}, {IsTopRole, "isTop"}};
}

} // namespace skyflare
