#pragma once

#include <QQuickItem>
#include <functional>

namespace skyflare::bench {

/// Shows `visit` this item and all below it.
void visitItems(QQuickItem &item, const std::function<void(QQuickItem &)> &visit);

/// The first below `item` of that object name; null where there is none.
QQuickItem *itemNamed(QQuickItem &item, const QString &name);

/// Whether anything is to be seen of it: neither hidden nor wholly transparent, it or what it is in.
bool isSeen(const QQuickItem &item);

} // namespace skyflare::bench
