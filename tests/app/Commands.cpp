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

Attempt see(const QString &name)
{
    return [name] { return Screen::find(name) != nullptr ? done : notYet; };
}

Attempt miss(const QString &name)
{
    return [name] { return Screen::isShown() && Screen::find(name) == nullptr ? done : notYet; };
}

Attempt read(const QString &name)
{
    return [name] {
        QQuickItem *const item = Screen::find(name);
        return item != nullptr ? Screen::text(*item) : notYet;
    };
}

Attempt readUntil(const QString &condition)
{
    const QString equals = QStringLiteral(" = ");
    const QRegularExpression wanted(QRegularExpression::anchoredPattern(condition.section(equals, 1)));
    return [text = read(condition.section(equals, 0, 0)), wanted] {
        const auto now = text();
        return now && wanted.match(*now).hasMatch() ? now : notYet;
    };
}

using MouseGesture = void (*)(QWindow *, Qt::MouseButton, Qt::KeyboardModifiers, QPoint, int);

/// In the middle of that item, as soon as it is enabled and no longer on its way.
Attempt with(MouseGesture gesture, const QString &name)
{
    return [gesture, name, before = QRectF()]() mutable {
        const QQuickItem *const item = Screen::find(name);
        if (item == nullptr || !item->isEnabled())
            return notYet;
        const QRectF place = Screen::place(*item);
        if (std::exchange(before, place) != place || place.isEmpty())
            return notYet;
        gesture(Screen::window(), Qt::LeftButton, {}, place.center().toPoint(), -1);
        return done;
    };
}

Attempt click(const QString &name)
{
    return with(&QTest::mouseClick, name);
}

Attempt doubleClick(const QString &name)
{
    return with(&QTest::mouseDClick, name);
}

Attempt press(const QString &keys)
{
    return [keys] {
        QQuickWindow *const window = Screen::window();
        if (window == nullptr || !window->isActive())
            return notYet;
        QTest::keySequence(window, QKeySequence(keys, QKeySequence::PortableText));
        return done;
    };
}

Attempt focus(const QString & /*nothing*/)
{
    return [] {
        const QQuickWindow *const window = Screen::window();
        const QQuickItem *const item = window != nullptr ? window->activeFocusItem() : nullptr;
        return item != nullptr ? item->objectName() : notYet;
    };
}

Attempt change(const QString &name)
{
    return [name, before = QImage()]() mutable {
        const QQuickItem *const item = Screen::find(name);
        if (item == nullptr)
            return notYet;
        const QImage now = Screen::picture(Screen::place(*item));
        const QImage last = std::exchange(before, now);
        return last.size() == now.size() && last != now ? done : notYet;
    };
}

Attempt paint(const QString &file)
{
    return [file] {
        const QQuickWindow *const window = Screen::window();
        const bool isPainted =
            window != nullptr && Screen::picture(QRectF(QPointF(), window->size())).save(file);
        return isPainted ? done : notYet;
    };
}

Attempt resize(const QString &size)
{
    return [wanted = QSize(size.section(' ', 0, 0).toInt(), size.section(' ', 1).toInt())] {
        QQuickWindow *const window = Screen::window();
        if (window == nullptr)
            return notYet;
        window->resize(wanted);
        return window->contentItem()->size() == QSizeF(wanted) ? done : notYet;
    };
}

Attempt close(const QString & /*nothing*/)
{
    return [] {
        QQuickWindow *const window = Screen::window();
        return window != nullptr && window->close() ? done : notYet;
    };
}

Attempt graphics(const QString & /*nothing*/)
{
    return [] {
        const QQuickWindow *const window = Screen::window();
        if (window == nullptr || !window->isSceneGraphInitialized())
            return notYet;
        const bool isOpenGL = window->rendererInterface()->graphicsApi() == QSGRendererInterface::OpenGL;
        return std::optional<QString>(isOpenGL ? "OpenGL" : "another");
    };
}

struct Command {
    const char *name;
    Attempt (*attempt)(const QString &argument);
};

constexpr Command commands[] = {
    {"see", see},           {"miss", miss},          {"read", read},     {"until", readUntil},
    {"click", click},       {"double", doubleClick}, {"press", press},   {"focus", focus},
    {"change", change},     {"paint", paint},        {"resize", resize}, {"close", close},
    {"graphics", graphics},
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
