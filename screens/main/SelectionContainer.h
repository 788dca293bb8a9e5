#pragma once

#include "ui/ButtonOutlet.h"

#include <QList>
#include <QQmlListProperty>
#include <memory>
#include <string_view>
#include <vector>

namespace skyflare {

/// A column of option buttons, shown while the user chooses.
///
/// Threads: main. Owned by its controller; owns its buttons.
class SelectionContainer : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    /// From top to bottom; they are there before the view is made, and stay.
    Q_PROPERTY(QQmlListProperty<skyflare::ButtonOutlet> options READ shownOptions CONSTANT)

public:
    void addOption(std::string_view title);
    [[nodiscard]] const QList<ButtonOutlet *> &options() const { return shown_; }

private:
    std::vector<std::unique_ptr<ButtonOutlet>> options_;
    QList<ButtonOutlet *> shown_; ///< those

    [[nodiscard]] QQmlListProperty<ButtonOutlet> shownOptions() { return {this, &shown_}; }
};

} // namespace skyflare
