#include "screens/gallery/CollectionView.h"

#include "ui/SharedObject.h"

#include <algorithm>

namespace skyflare {

void CollectionView::reloadData()
{
    const int items = source_->numberOfItemsInSection(0);
    std::vector<Cell> wanted;
    wanted.reserve(static_cast<std::size_t>(items));
    for (int item = 0; item < items; ++item)
        wanted.push_back(source_->cellForItemAtIndexPath(item));
    const int current = currentIndex();

    removeAllBut(wanted);
    for (std::size_t row = 0; row < wanted.size(); ++row)
        bringTo(row, wanted[row]);
    if (cells_.size() > wanted.size()) { // one that was there twice
        beginRemoveRows({}, static_cast<int>(wanted.size()), count() - 1);
        cells_.resize(wanted.size());
        endRemoveRows();
    }
    layOut();
    if (currentIndex() < 0)
        setCurrentIndex(current); // what has come to its place
    emit countChanged();
}

void CollectionView::removeAllBut(const std::vector<Cell> &wanted)
{
    for (int row = count() - 1; row >= 0; --row) {
        const auto &identity = cells_[static_cast<std::size_t>(row)].identity;
        if (std::ranges::find(wanted, identity, &Cell::identity) != wanted.end())
            continue;
        beginRemoveRows({}, row, row);
        cells_.erase(cells_.begin() + row);
        endRemoveRows();
    }
}

/// Makes `wanted` the cell of that row: the one that it has further down, or a new one.
void CollectionView::bringTo(std::size_t row, const Cell &wanted)
{
    const auto place = cells_.begin() + static_cast<std::ptrdiff_t>(row);
    const auto found =
        std::find_if(place, cells_.end(), [&](const Row &cell) { return cell.identity == wanted.identity; });
    if (found != cells_.end() && found == place)
        return;
    const int to = static_cast<int>(row);
    if (found == cells_.end()) {
        auto photo = makeShared<ImageOutlet>();
        photo->setImage(wanted.image);
        QQmlEngine::setObjectOwnership(photo.get(), QQmlEngine::CppOwnership);
        beginInsertRows({}, to, to);
        cells_.insert(place, {wanted.identity, wanted.accessibleName, std::move(photo), false});
        endInsertRows();
        return;
    }
    const int from = static_cast<int>(found - cells_.begin());
    beginMoveRows({}, from, from, {}, to);
    std::rotate(place, found, found + 1);
    endMoveRows();
}

void CollectionView::setWidth(double width)
{
    if (width_ == width)
        return;
    width_ = width;
    layOut();
}

void CollectionView::layOut()
{
    std::vector<QSizeF> sizes;
    sizes.reserve(cells_.size());
    for (int item = 0; item < count(); ++item)
        sizes.push_back(source_->sizeForItemAtIndexPath(item));
    layout_.prepareLayout(width_, sizes);
    emit framesChanged();
    if (count() > 0)
        emit dataChanged(index(0), index(count() - 1), {FrameRole});
}

void CollectionView::moveCurrent(Move move)
{
    const auto &frames = layout_.layoutAttributesForElements();
    if (frames.empty())
        return;
    const int columns = static_cast<int>(std::ranges::count(frames, frames.front().y(), &QRectF::y));
    const int current = currentIndex();
    const int last = count() - 1;
    const bool isInLastRow = current / columns == last / columns; // NOLINT: the first frame counts itself
    switch (move) {
    case Left:
        return setCurrentIndex(current - 1);
    case Right:
        return setCurrentIndex(current + 1);
    case Up:
        return setCurrentIndex(current < columns ? current : current - columns);
    case Down: // into a row that is not full: its last
        return setCurrentIndex(isInLastRow ? current : current + columns);
    case Home:
        return setCurrentIndex(0);
    case End:
        return setCurrentIndex(last);
    }
}

void CollectionView::select(int index)
{
    if (index < 0 || index >= count())
        return;
    setCurrentIndex(index);
    source_->didSelectItemAtIndexPath(index);
}

/// The cell that is nearest to `wanted`, if there is any.
void CollectionView::setCurrentIndex(int wanted)
{
    const int from = currentIndex();
    const int to = std::min(std::max(0, wanted), count() - 1);
    if (to < 0 || to == from)
        return;
    for (const int row : {to, from}) { // the new one first: it takes the focus from the other
        if (row < 0)
            continue;
        cells_[static_cast<std::size_t>(row)].isCurrent = row == to;
        emit dataChanged(index(row), index(row), {IsCurrentRole});
    }
}

int CollectionView::currentIndex() const
{
    const auto found = std::ranges::find(cells_, true, &Row::isCurrent);
    return found == cells_.end() ? -1 : static_cast<int>(found - cells_.begin());
}

int CollectionView::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant CollectionView::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= count())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const auto &frames = layout_.layoutAttributesForElements();
    switch (role) {
    case PhotoRole:
        return QVariant::fromValue(cells_[row].photo.get());
    case FrameRole: // a cell that has just come has none yet
        return row < frames.size() ? frames[row] : QRectF();
    case NameRole:
        return QString::fromStdString(cells_[row].accessibleName);
    case IsCurrentRole:
        return cells_[row].isCurrent;
    default:
        return {};
    }
}

QHash<int, QByteArray> CollectionView::roleNames() const
{
    return {{PhotoRole, "photo"}, {FrameRole, "frame"}, {NameRole, "name"}, {IsCurrentRole, "current"}};
}

} // namespace skyflare
