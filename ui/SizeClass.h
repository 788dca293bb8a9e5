#pragma once

#include <QSizeF>
#include <algorithm>

namespace skyflare {

enum class InterfaceIdiom { Phone, Pad };

/// A window whose shortest side is 600 logical pixels or more is a pad. Any thread.
inline InterfaceIdiom interfaceIdiom(QSizeF window)
{
    constexpr double shortestSideOfPad = 600;
    return std::min(window.width(), window.height()) >= shortestSideOfPad ? InterfaceIdiom::Pad
                                                                          : InterfaceIdiom::Phone;
}

} // namespace skyflare
