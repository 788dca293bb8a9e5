#include "bench/ItemSearch.h"

namespace skyflare::bench {

void visitItems(QQuickItem &item, const std::function<void(QQuickItem &)> &visit)
{
    visit(item);
    for (QQuickItem *const child : item.childItems())
        visitItems(*child, visit);
}

QQuickItem *itemNamed(QQuickItem &item, const QString &name)
{
    QQuickItem *found = nullptr;
    visitItems(item, [&](QQuickItem &candidate) {
        if (found == nullptr && candidate.objectName() == name)
            found = &candidate;
    });
    return found;
}

bool isSeen(const QQuickItem &item)
{
    if (!item.isVisible())
        return false;
    for (const QQuickItem *at = &item; at != nullptr; at = at->parentItem()) {
        if (at->opacity() <= 0)
            return false;
    }
    return true;
}

} // namespace skyflare::bench
