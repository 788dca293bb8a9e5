#pragma once

#include "ui/ViewController.h"
#include "ui/Window.h"

#include <doctest/doctest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QTest>
#include <functional>

namespace skyflare {

/// Whether that comes true, with all the time that it may need.
template <typename Condition> bool comes(const Condition &condition)
{
    constexpr int deadlineMs = 60000;
    return QTest::qWaitFor(condition, deadlineMs);
}

/// A screen in a real window of 390 × 844, drawn without a graphics card, used by clicks and keys.
struct ShownWindow {
    Window window;
    std::function<void()> afterInput = [] {}; ///< runs after each click and each key

    /// Brings the screen up, until that item has the focus.
    void bringUp(std::shared_ptr<ViewController> root, const QString &focused)
    {
        window.setRootViewController(std::move(root));
        window.makeKeyAndVisible();
        waitForFocus(focused);
    }
    QQuickWindow &quick() { return window.quickWindow(); }
    QString focus() { return quick().activeFocusItem() ? quick().activeFocusItem()->objectName() : ""; }
    void waitForFocus(const QString &name)
    {
        CAPTURE(name.toStdString());
        REQUIRE(comes([&] { return quick().isActive() && focus() == name; }));
    }
    void resize(const QSize &size)
    {
        quick().resize(size);
        REQUIRE(comes([&] { return quick().contentItem()->size() == QSizeF(size); }));
    }

    template <typename Matches> static QQuickItem *findItem(QQuickItem &in, const Matches &matches)
    {
        for (QQuickItem *child : in.childItems()) {
            if (matches(*child))
                return child;
            if (auto *found = findItem(*child, matches))
                return found;
        }
        return nullptr;
    }
    /// The one that can be used, where several have that name; null if there is none.
    QQuickItem *item(const QString &name)
    {
        const auto isNamed = [&](const QQuickItem &each) { return each.objectName() == name; };
        const auto isUsable = [&](const QQuickItem &each) {
            return isNamed(each) && each.isVisible() && each.isEnabled();
        };
        auto *usable = findItem(*quick().contentItem(), isUsable);
        return usable != nullptr ? usable : findItem(*quick().contentItem(), isNamed);
    }
    /// Where it is in the window.
    static QRectF rectOf(const QQuickItem &item)
    {
        return item.mapRectToScene(QRectF(QPointF(), item.size()));
    }
    QRectF rect(const QString &name)
    {
        const auto *of = item(name);
        REQUIRE_MESSAGE(of != nullptr, name.toStdString());
        return rectOf(*of);
    }
    void click(QPointF at)
    {
        QTest::mouseClick(&quick(), Qt::LeftButton, {}, at.toPoint());
        afterInput();
    }
    void click(const QString &name) { click(rect(name).center()); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&quick(), key, modifiers);
        afterInput();
    }
    /// As a screen reader does.
    void act(const QString &name, const QString &action)
    {
        QAccessible::queryAccessibleInterface(item(name))->actionInterface()->doAction(action);
        afterInput();
    }
    /// What has the focus after each of the presses.
    QStringList focusAfter(std::initializer_list<Qt::Key> keys)
    {
        QStringList order;
        for (const Qt::Key key : keys) {
            press(key);
            order.append(focus());
        }
        return order;
    }
};

} // namespace skyflare
