#pragma once

#include <QQuickWindow>
#include <QString>

namespace skyflare {

/// What a person finds in the app's window: items by their name, and what they say.
///
/// Threads: main.
class Screen {
public:
    /// Null while there is none.
    [[nodiscard]] static QQuickWindow *window();
    [[nodiscard]] static bool isShown();

    /// The topmost item that is seen and has that object name or accessible name. "NAME*" begins so; "NAME#2"
    /// is the second of them, from the top. Null where there is none.
    [[nodiscard]] static QQuickItem *find(const QString &name);

    /// The item's accessible name; with a description, "NAME: DESCRIPTION". A switch's is "NAME (on)".
    [[nodiscard]] static QString text(QQuickItem &item);

    /// Where it is in the window.
    [[nodiscard]] static QRectF place(const QQuickItem &item);
    /// What is seen there.
    [[nodiscard]] static QImage picture(const QRectF &place);

    /// All names and texts that are seen, for a failed test to show.
    [[nodiscard]] static QString everything();
};

} // namespace skyflare
