#pragma once

#include "platform/desktop/HapticFeedback.h"
#include "ui/ButtonOutlet.h"
#include "ui/ImageOutlet.h"
#include "ui/LabelOutlet.h"

#include <QRectF>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace skyflare {

class ViewController;

/// The modal card through which the app tells the user things. PopupCard.qml draws it.
///
/// Lives as long as it is shown, and knows nothing of the controller that it is shown on.
/// Threads: main. Owned by the popup list that it is in; borrows the haptics, which must outlive it.
class CustomPopupView final : public QObject, public std::enable_shared_from_this<CustomPopupView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by a controller")
    Q_PROPERTY(skyflare::ButtonOutlet *dismissButton READ dismissButton CONSTANT)
    Q_PROPERTY(skyflare::ImageOutlet *icon READ icon CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *titleLabel READ titleLabel CONSTANT)
    Q_PROPERTY(skyflare::LabelOutlet *descriptionLabel READ descriptionLabel CONSTANT)
    Q_PROPERTY(skyflare::ButtonOutlet *button READ button CONSTANT)
    Q_PROPERTY(QRectF frame READ frame NOTIFY frameChanged)
    Q_PROPERTY(double cardWidth READ cardWidth NOTIFY frameChanged)

public:
    enum class Dismissable { No, Yes };

    struct Contents {
        std::optional<std::string> icon = {}; ///< a symbol
        std::string title = {};
        std::string description = {};
        Dismissable dismissable = Dismissable::Yes;
        std::optional<std::string> buttonTitle = {};
        std::function<void()> tapAction = {};
    };

    static std::shared_ptr<CustomPopupView> make(HapticFeedback &haptics, Contents contents);

    // show(on:)
    /// Covers the whole screen of `on` with the popup, and is felt.
    void show(ViewController &on);

    Q_INVOKABLE void buttonTapped();
    // Deliberate: the close control hands over its sender as the flag, and any sender counts as true.
    Q_INVOKABLE void dismissPopupWithVibrate(bool vibrate);

    [[nodiscard]] ButtonOutlet *dismissButton() { return &dismissButton_; }
    [[nodiscard]] ImageOutlet *icon() { return icon_ ? &*icon_ : nullptr; }
    [[nodiscard]] LabelOutlet *titleLabel() { return &titleLabel_; }
    [[nodiscard]] LabelOutlet *descriptionLabel() { return &descriptionLabel_; }
    [[nodiscard]] ButtonOutlet *button() { return &button_; }
    [[nodiscard]] bool isDismissable() const { return dismissable_ == Dismissable::Yes; }

    /// In its screen; follows the screen's bounds.
    [[nodiscard]] QRectF frame() const { return frame_; }
    void setFrame(const QRectF &frame);
    /// Of the popup's width, 0.8 on a phone and 0.4 on a pad.
    [[nodiscard]] double cardWidth() const;

signals:
    void frameChanged();
    void removedFromSuperview();

private:
    CustomPopupView(HapticFeedback &haptics, Contents contents);
    void removeFromSuperview();

    template <typename T, typename... Arguments>
    friend std::shared_ptr<T> makeShared(Arguments &&...arguments);

    HapticFeedback &haptics_;
    const Dismissable dismissable_;
    std::function<void()> tapAction_;
    std::optional<ImageOutlet> icon_;
    LabelOutlet titleLabel_;
    LabelOutlet descriptionLabel_;
    ButtonOutlet button_;
    ButtonOutlet dismissButton_;
    QRectF frame_;
};

} // namespace skyflare
