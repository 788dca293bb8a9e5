#pragma once

#include "platform/desktop/URLOpener.h"
#include "ui/CustomPopupView.h"

#include <functional>
#include <string>
#include <string_view>

namespace skyflare {

// What the popups of the detail screen say. Main; the opener must outlive them.

/// The app may not add to the photo library.
CustomPopupView::Contents libraryRefusedPopup(URLOpener &opener);
CustomPopupView::Contents saveErrorPopup(URLOpener &opener, std::string_view supportAddress);
CustomPopupView::Contents deletePhotoPopup(std::function<void()> deletePhoto);

/// The draft of a mail about a photo that could not be saved, as a URL (RFC 6068). Without an address it is a
/// draft to nobody yet.
std::string saveErrorMail(std::string_view supportAddress);

} // namespace skyflare
