#pragma once

#include <QObject>
#include <QQmlEngine>

namespace skyflare {

/// Whether the user last used the keyboard or pointed: the focus is shown to those who move it by keys.
///
/// Threads: main. One for each QML engine.
class InputMode final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isKeyboard READ isKeyboard NOTIFY changed)

public:
    InputMode();

    [[nodiscard]] bool isKeyboard() const { return isKeyboard_; }
    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void changed();

private:
    bool isKeyboard_ = false;
};

} // namespace skyflare
