#include "tests/app/Screen.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <algorithm>
#include <functional>

namespace skyflare {

namespace {

QString accessibleName(QQuickItem &item)
{
    auto *const accessible = QAccessible::queryAccessibleInterface(&item);
    return accessible == nullptr ? QString() : accessible->text(QAccessible::Name);
}

/// Shows `visit` what is seen in `item`, from the top down, until it says that this is enough.
bool visitSeen(QQuickItem &item, const std::function<bool(QQuickItem &)> &visit)
{
    if (!item.isVisible() || item.opacity() <= 0)
        return false;
    if (visit(item))
        return true;
    auto children = item.childItems(); // the later is above, unless its z says otherwise
    std::ranges::stable_sort(children, {}, &QQuickItem::z);
    return std::any_of(children.rbegin(), children.rend(),
                       [&visit](QQuickItem *child) { return visitSeen(*child, visit); });
}

void visitSeen(const std::function<bool(QQuickItem &)> &visit)
{
    if (Screen::isShown())
        visitSeen(*Screen::window()->contentItem(), visit);
}

} // namespace

QQuickWindow *Screen::window()
{
    for (QWindow *const window : QGuiApplication::topLevelWindows()) {
        if (auto *const quick = qobject_cast<QQuickWindow *>(window))
            return quick;
    }
    return nullptr;
}

bool Screen::isShown()
{
    return window() != nullptr && window()->isVisible();
}

QQuickItem *Screen::find(const QString &name)
{
    const QString word = name.section('#', 0, 0);
    const auto isMeant = [word, start = word.chopped(word.endsWith('*') ? 1 : 0)](const QString &its) {
        return its == word || (start != word && its.startsWith(start));
    };
    int left = std::max(1, name.section('#', 1).toInt());
    QQuickItem *found = nullptr;
    visitSeen([&](QQuickItem &item) {
        if ((isMeant(item.objectName()) || isMeant(accessibleName(item))) && --left == 0)
            found = &item;
        return found != nullptr;
    });
    return found;
}

QString Screen::text(QQuickItem &item)
{
    auto *const accessible = QAccessible::queryAccessibleInterface(&item);
    if (accessible == nullptr)
        return {};
    const QString description = accessible->text(QAccessible::Description);
    const QString state = !accessible->state().checkable ? ""
                          : accessible->state().checked  ? " (on)"
                                                         : " (off)";
    return accessible->text(QAccessible::Name) + state + (description.isEmpty() ? "" : ": " + description);
}

QRectF Screen::place(const QQuickItem &item)
{
    return item.mapRectToScene(QRectF(QPointF(), item.size()));
}

QImage Screen::picture(const QRectF &place)
{
    const QImage whole = window()->grabWindow();
    const double scale = whole.devicePixelRatio();
    return whole.copy(QRectF(place.topLeft() * scale, place.size() * scale).toRect());
}

QString Screen::everything()
{
    QStringList seen;
    visitSeen([&seen](QQuickItem &item) {
        if (!item.objectName().isEmpty() || !text(item).isEmpty())
            seen.append(item.objectName() + " \"" + text(item) + '"');
        return false;
    });
    return seen.join(", ");
}

} // namespace skyflare
