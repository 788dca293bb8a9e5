#pragma once

#include "ui/LabelOutlet.h"

namespace skyflare {

/// A button as its controller sees it: a label that may be switched off, bear a symbol, and has a name for
/// screen readers.
///
/// Threads: main. Owned by its controller.
class ButtonOutlet : public skyflare::LabelOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(bool enabled READ isEnabled NOTIFY enabledChanged)
    Q_PROPERTY(QString symbol READ shownSymbol NOTIFY symbolChanged)
    Q_PROPERTY(QString accessibleName READ shownAccessibleName NOTIFY accessibleNameChanged)

public:
    ButtonOutlet();

    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool isEnabled);
    /// The name of a file in ui/symbols/, without its ending; empty for none.
    [[nodiscard]] std::string symbol() const { return symbol_.toStdString(); }
    void setSymbol(std::string_view name);
    /// What was set, or else the text.
    [[nodiscard]] std::string accessibleName() const { return shownAccessibleName().toStdString(); }
    void setAccessibleName(std::string_view utf8);

    [[nodiscard]] QString shownSymbol() const { return symbol_; }
    [[nodiscard]] QString shownAccessibleName() const
    {
        return accessibleName_.isEmpty() ? shownText() : accessibleName_;
    }

signals:
    void enabledChanged();
    void symbolChanged();
    void accessibleNameChanged();

private:
    bool isEnabled_ = true;
    QString symbol_;
    QString accessibleName_;
};

} // namespace skyflare
