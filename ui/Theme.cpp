#include "ui/Theme.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace skyflare {

namespace {

constexpr QRgb plainPaletteWindow = 0xFFEFEFEF; // Qt's, where no desktop gave it another
constexpr int lightness = 128;                  // of 255

} // namespace

Appearance appearanceFor(ColorScheme scheme, const QColor &paletteWindow)
{
    if (scheme != ColorScheme::NoPreference)
        return scheme == ColorScheme::Light ? Appearance::Light : Appearance::Dark;
    const bool isChosenLight =
        paletteWindow.lightness() >= lightness && paletteWindow.rgb() != plainPaletteWindow;
    return isChosenLight ? Appearance::Light : Appearance::Dark;
}

Theme::Theme()
{
    QCoreApplication::instance()->installEventFilter(this);
    update();
}

void Theme::setColorScheme(ColorScheme scheme)
{
    scheme_ = scheme;
    update();
}

void Theme::setCatalogue(Catalogue catalogue)
{
    catalogue_ = catalogue;
    emit changed();
}

bool Theme::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QCoreApplication::instance())
        update();
    return QObject::eventFilter(watched, event);
}

QColor Theme::named(std::string_view name) const
{
    return catalogue_(name, appearance_).value_or(QColor());
}

void Theme::update()
{
    const auto appearance = appearanceFor(scheme_, QGuiApplication::palette().color(QPalette::Window));
    if (appearance_ == appearance)
        return;
    appearance_ = appearance;
    emit changed();
}

} // namespace skyflare
