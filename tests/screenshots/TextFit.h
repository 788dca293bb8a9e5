#pragma once

#include <QQuickWindow>
#include <string>
#include <vector>

namespace skyflare {

/// What cannot be read in a window: texts that are cut off, drawn over their place, shrunk below 12 pixels,
/// out of the window, or over another text. One line for each. After a frame has been drawn.
std::vector<std::string> textsThatDoNotFit(QQuickWindow &window);

} // namespace skyflare
