#pragma once

#include "ui/ViewOutlet.h"

namespace skyflare {

/// A switch as its controller sees it.
///
/// Threads: main. Owned by its controller.
class SwitchOutlet : public skyflare::ViewOutlet {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by its controller")
    Q_PROPERTY(bool on READ isOn NOTIFY onChanged)

public:
    [[nodiscard]] bool isOn() const { return isOn_; }
    void setOn(bool isOn);
    /// The user has moved it.
    Q_INVOKABLE void toggled();

signals:
    void onChanged();
    void valueChanged(); ///< by the user; not by setOn()

private:
    bool isOn_ = false;
};

} // namespace skyflare
