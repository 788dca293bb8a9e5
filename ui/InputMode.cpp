#include "ui/InputMode.h"

#include <QCoreApplication>
#include <QEvent>

namespace skyflare {

InputMode::InputMode()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool InputMode::eventFilter(QObject *watched, QEvent *event)
{
    bool isKeyboard = isKeyboard_;
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
        isKeyboard = true;
        break;
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
        isKeyboard = false;
        break;
    default:
        break;
    }
    if (isKeyboard_ != isKeyboard) {
        isKeyboard_ = isKeyboard;
        emit changed();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace skyflare
