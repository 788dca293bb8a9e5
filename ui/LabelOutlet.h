#pragma once

#include "ui/ViewOutlet.h"

#include <string>
#include <string_view>

namespace skyflare {

/// A label as its controller sees it.
///
/// Threads: main. Owned by its controller.
class LabelOutlet : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(QString text READ shownText NOTIFY textChanged)

public:
    [[nodiscard]] std::string text() const { return text_.toStdString(); }
    void setText(std::string_view utf8);
    [[nodiscard]] QString shownText() const { return text_; }

signals:
    void textChanged();

private:
    QString text_;
};

} // namespace skyflare
