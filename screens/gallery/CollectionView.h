#pragma once

#include "screens/gallery/CustomCollectionViewLayout.h"
#include "ui/ImageOutlet.h"

#include <QAbstractListModel>
#include <QQmlEngine>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace skyflare {

/// What a CollectionView asks its controller, and tells it: data source and delegate in one. One section.
class CollectionViewDataSource {
public:
    struct Cell {
        std::string
            identity; ///< of what the cell shows: the same thing keeps its cell when others come and go
        Image image;
        std::string accessibleName;
    };

    CollectionViewDataSource() = default;
    CollectionViewDataSource(const CollectionViewDataSource &) = delete;
    CollectionViewDataSource &operator=(const CollectionViewDataSource &) = delete;
    virtual ~CollectionViewDataSource() = default;

    // collectionView:numberOfItemsInSection: and so on: the first piece is the sender.
    [[nodiscard]] virtual int numberOfItemsInSection(int section) const = 0;
    [[nodiscard]] virtual Cell cellForItemAtIndexPath(int item) const = 0;
    [[nodiscard]] virtual QSizeF sizeForItemAtIndexPath(int item) const = 0;
    virtual void didSelectItemAtIndexPath(int item) = 0;
};

/// A grid as its controller sees it: its cells, where each lies, and the one that has the keys. A list for
/// QML with the roles "photo", "frame" and "name".
///
/// A reload keeps the cells of what is still there, so that they neither flicker nor lose the focus.
/// Threads: main. Owned by its controller, which is its data source.
class CollectionView : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    /// The view's, in logical pixels; the view says it.
    Q_PROPERTY(double width READ width WRITE setWidth NOTIFY framesChanged)
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY framesChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { PhotoRole = Qt::UserRole, FrameRole, NameRole, IsCurrentRole };
    enum Move { Left, Right, Up, Down, Home, End };
    Q_ENUM(Move)

    void setDataSource(CollectionViewDataSource &source) { source_ = &source; }
    /// Asks the data source for everything again.
    void reloadData();

    /// To another cell, if there is one in that direction.
    Q_INVOKABLE void moveCurrent(skyflare::CollectionView::Move move);
    Q_INVOKABLE void select(int index);

    [[nodiscard]] double width() const { return width_; }
    void setWidth(double width);
    [[nodiscard]] double contentHeight() const { return layout_.contentHeight(); }
    [[nodiscard]] int count() const { return static_cast<int>(cells_.size()); }
    [[nodiscard]] int currentIndex() const; ///< -1: there is no cell

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void framesChanged();
    void countChanged();

private:
    using Cell = CollectionViewDataSource::Cell;
    struct Row {
        std::string identity;
        std::string accessibleName;
        std::shared_ptr<ImageOutlet> photo;
        bool isCurrent = false;
    };

    void removeAllBut(const std::vector<Cell> &wanted);
    void bringTo(std::size_t row, const Cell &wanted);
    void layOut();
    void setCurrentIndex(int index);

    CollectionViewDataSource *source_ = nullptr;
    std::vector<Row> cells_;
    CustomCollectionViewLayout layout_;
    double width_ = 0;
};

} // namespace skyflare
