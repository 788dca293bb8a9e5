#include "ui/ColorCatalogue.h"
#include "ui/Theme.h"

#include <doctest/doctest.h>

#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <cmath>

using namespace skyflare;

namespace {

/// WCAG 2.1, relative luminance and contrast ratio.
double luminance(const QColor &color)
{
    const auto linear = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor over(const QColor &glass, const QColor &ground)
{
    const double alpha = glass.alphaF();
    const auto mix = [alpha](double top, double below) { return top * alpha + below * (1 - alpha); };
    return QColor::fromRgbF(float(mix(glass.redF(), ground.redF())),
                            float(mix(glass.greenF(), ground.greenF())),
                            float(mix(glass.blueF(), ground.blueF())));
}

} // namespace

TEST_CASE("what is written can be read, in the dark and in the light")
{
    for (const Appearance appearance : {Appearance::Dark, Appearance::Light}) {
        CAPTURE(int(appearance));
        const auto color = [appearance](const char *name) { return namedColor(name, appearance).value(); };
        CHECK(contrast(color("Secondary"), color("AccentColor")) >= 7);
        CHECK(contrast(color("Secondary"), color("Ground")) >= 7);
        CHECK(contrast(color("Text"), color("Ground")) >= 7);
        CHECK(contrast(color("SecondaryText"), color("Ground")) >= 4.5);
        CHECK(contrast(color("Warning"), color("Ground")) >= 4.5);
        // On glass with a burst behind it, and with the night behind it.
        const QColor behind[] = {QColor(0, 0, 0), QColor(120, 100, 80)};
        for (const QColor &light : behind) {
            CHECK(contrast(color("Text"), over(color("Glass"), light)) >= 7);
            CHECK(contrast(color("SecondaryText"), over(color("Glass"), light)) >= 4.5);
            CHECK(contrast(color("Secondary"), over(color("Glass"), light)) >= 4.5);
        }
    }
    CHECK_FALSE(namedColor("Tertiary", Appearance::Dark));
}

TEST_CASE("dark or light follows the desktop")
{
    CHECK(appearanceFor(ColorScheme::Dark, Qt::white) == Appearance::Dark);
    CHECK(appearanceFor(ColorScheme::Light, Qt::black) == Appearance::Light);
    CHECK(appearanceFor(ColorScheme::NoPreference, Qt::black) == Appearance::Dark);
    CHECK(appearanceFor(ColorScheme::NoPreference, QColor(0xF6, 0xF5, 0xF4)) == Appearance::Light);
    CHECK(appearanceFor(ColorScheme::NoPreference, QColor(0xEF, 0xEF, 0xEF)) == Appearance::Dark); // Qt's own

    // While it runs.
    Theme theme;
    int changes = 0;
    QObject::connect(&theme, &Theme::changed, &theme, [&] { ++changes; });
    const QPalette before = QGuiApplication::palette();
    QGuiApplication::setPalette(QPalette(QColor(0xF0, 0xF4, 0xF8)));
    QCoreApplication::processEvents();
    CHECK_FALSE(theme.isDark());
    theme.setColorScheme(ColorScheme::Dark);
    CHECK(theme.isDark());
    CHECK(changes == 2);
    QGuiApplication::setPalette(before);
}

TEST_CASE("every symbol that a screen asks for is there")
{
    for (const char *name :
         {"heart.slash.fill", "bolt.heart.fill", "arrow.trianglehead.2.clockwise.rotate.90.circle.fill",
          "trash", "checkmark.circle", "photo.badge.checkmark", "livephoto", "globe", "play", "stop",
          "gallery", "gear", "info", "close", "warning", "chevron.down", "chevron.left", "chevron.right"}) {
        CAPTURE(name);
        CHECK(QFile::exists(QString(":/Skyflare/Ui/symbols/%1.svg").arg(name)));
    }
}
