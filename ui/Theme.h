#pragma once

#include "platform/desktop/AppearanceSetting.h"
#include "ui/ColorCatalogue.h"

#include <QObject>
#include <QQmlEngine>

namespace skyflare {

/// The colours of the moment, for QML; light or dark as the desktop is, while it runs.
///
/// What the desktop says decides. Where it says nothing, its palette does: dark, or light if somebody chose
/// that; Qt's own plain palette is nobody's choice, and then the app is what it is made for: dark.
/// Threads: main. One for each QML engine.
class Theme final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    Q_PROPERTY(QColor accentColor READ accentColor NOTIFY changed)
    Q_PROPERTY(QColor secondary READ secondary NOTIFY changed)
    Q_PROPERTY(QColor ground READ ground NOTIFY changed)
    Q_PROPERTY(QColor glass READ glass NOTIFY changed)
    Q_PROPERTY(QColor glassBorder READ glassBorder NOTIFY changed)
    Q_PROPERTY(QColor text READ text NOTIFY changed)
    Q_PROPERTY(QColor secondaryText READ secondaryText NOTIFY changed)
    Q_PROPERTY(QColor overPicture READ overPicture NOTIFY changed)
    Q_PROPERTY(QColor nightInk READ nightInk NOTIFY changed)
    Q_PROPERTY(QColor sky READ sky NOTIFY changed)
    Q_PROPERTY(QColor skyLow READ skyLow NOTIFY changed)
    Q_PROPERTY(QColor pressed READ pressed NOTIFY changed)
    Q_PROPERTY(QColor warning READ warning NOTIFY changed)
    Q_PROPERTY(bool hasSecondary READ hasSecondary NOTIFY changed)

public:
    /// Where the colours come from: namedColor(), or a test's own.
    using Catalogue = std::optional<QColor> (*)(std::string_view name, Appearance appearance);

    Theme();

    /// What the desktop says.
    void setColorScheme(ColorScheme scheme);
    void setCatalogue(Catalogue catalogue);
    [[nodiscard]] Appearance appearance() const { return appearance_; }

    [[nodiscard]] bool isDark() const { return appearance_ == Appearance::Dark; }
    [[nodiscard]] QColor accentColor() const { return named("AccentColor"); }
    [[nodiscard]] QColor secondary() const { return named("Secondary"); }
    [[nodiscard]] QColor ground() const { return named("Ground"); }
    [[nodiscard]] QColor glass() const { return named("Glass"); }
    [[nodiscard]] QColor glassBorder() const { return named("GlassBorder"); }
    [[nodiscard]] QColor text() const { return named("Text"); }
    [[nodiscard]] QColor secondaryText() const { return named("SecondaryText"); }
    [[nodiscard]] QColor overPicture() const { return named("OverPicture"); }
    [[nodiscard]] QColor nightInk() const { return named("NightInk"); }
    [[nodiscard]] QColor sky() const { return named("Sky"); }
    [[nodiscard]] QColor skyLow() const { return named("SkyLow"); }
    [[nodiscard]] QColor pressed() const { return named("Pressed"); }
    [[nodiscard]] QColor warning() const { return named("Warning"); }
    [[nodiscard]] bool hasSecondary() const { return catalogue_("Secondary", appearance_).has_value(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void changed();

private:
    [[nodiscard]] QColor named(std::string_view name) const;
    void update();

    Catalogue catalogue_ = namedColor;
    ColorScheme scheme_ = ColorScheme::NoPreference;
    Appearance appearance_ = Appearance::Dark;
};

/// Dark or light, by what the desktop says and by the window colour of its palette.
Appearance appearanceFor(ColorScheme scheme, const QColor &paletteWindow);

} // namespace skyflare
