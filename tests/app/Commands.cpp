#include "tests/app/Commands.h"

#include "tests/app/Screen.h"

#include <QKeySequence>
#include <QQuickItem>
#include <QRegularExpression>
#include <QTest>
#include <utility>

namespace skyflare {

namespace {

const std::optional<QString> done = QString();
const std::optional<QString> notYet;

/// As soon as that item is seen.
template <typename Try> Attempt onItem(const QString &name, Try attempt)
{
    return [name, attempt]() mutable {
        QQuickItem *const item = Screen::find(name);
        return item != nullptr ? attempt(*item) : notYet;
    };
}

Attempt see(const QString &name)
{
    return onItem(name, [](const QQuickItem & /*any*/) { return done; });
}

Attempt miss(const QString &name)
{
    return [name] { return Screen::isShown() && Screen::find(name) == nullptr ? done : notYet; };
}

Attempt readUntil(const QString &condition)
{
    const QString equals = QStringLiteral(" = ");
    const QRegularExpression wanted(QRegularExpression::anchoredPattern(condition.section(equals, 1)));
    return onItem(condition.section(equals, 0, 0), [wanted](QQuickItem &item) {
        const QString now = Screen::text(item);
        return wanted.match(now).hasMatch() ? std::optional(now) : notYet;
    });
}

/// In its middle, as soon as it is enabled and no longer on its way.
Attempt click(const QString &name)
{
    return onItem(name, [before = QRectF()](const QQuickItem &item) mutable {
        const QRectF place = Screen::place(item);
        if (!item.isEnabled() || std::exchange(before, place) != place || place.isEmpty())
            return notYet;
        QTest::mouseClick(Screen::window(), Qt::LeftButton, {}, place.center().toPoint());
        return done;
    });
}

Attempt change(const QString &name)
{
    return onItem(name, [before = QImage()](const QQuickItem &item) mutable {
        const QImage now = Screen::picture(Screen::place(item));
        const QImage last = std::exchange(before, now);
        return last.size() == now.size() && last != now ? done : notYet;
    });
}

/// As soon as there is a window.
template <typename Try> Attempt inWindow(Try attempt)
{
    return [attempt] {
        QQuickWindow *const window = Screen::window();
        return window != nullptr ? attempt(*window) : notYet;
    };
}

Attempt press(const QString &keys)
{
    return inWindow([keys](QQuickWindow &window) {
        if (!window.isActive())
            return notYet;
        QTest::keySequence(&window, QKeySequence(keys, QKeySequence::PortableText));
        return done;
    });
}

Attempt focus(const QString &name)
{
    return onItem(name, [](const QQuickItem &item) { return item.hasActiveFocus() ? done : notYet; });
}

Attempt close(const QString & /*nothing*/)
{
    return inWindow([](QQuickWindow &window) { return window.close() ? done : notYet; });
}

Attempt graphics(const QString & /*nothing*/)
{
    return inWindow([](QQuickWindow &window) {
        const auto api = window.rendererInterface()->graphicsApi();
        const char *const name = api == QSGRendererInterface::OpenGL ? "OpenGL" : "another";
        return window.isSceneGraphInitialized() ? std::optional<QString>(name) : notYet;
    });
}

struct Command {
    const char *name;
    Attempt (*attempt)(const QString &argument);
};

constexpr Command commands[] = {
    {"see", see},     {"miss", miss},     {"until", readUntil}, {"click", click},       {"press", press},
    {"focus", focus}, {"change", change}, {"close", close},     {"graphics", graphics},
};

} // namespace

Attempt attemptFor(const QString &line)
{
    for (const Command &command : commands) {
        if (line.section(' ', 0, 0) == command.name)
            return command.attempt(line.section(' ', 1));
    }
    return nullptr;
}

} // namespace skyflare
