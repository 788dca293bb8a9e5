#pragma once

#include "platform/desktop/URLOpener.h"
#include "ui/CustomPopupView.h"

#include <functional>
#include <string>

namespace skyflare {

/// What the main screen's popups say. Openers are borrowed until the popup is gone.
///
/// Threads: any; values.

/// The user has just been asked for the camera, and has said no.
CustomPopupView::Contents cameraRefusedPopup(URLOpener &opener);
/// The camera is not allowed, and asking is of no use.
CustomPopupView::Contents cameraForbiddenPopup(URLOpener &opener);
/// A run cannot go on, or begin, because there is no room for its photos.
CustomPopupView::Contents noRoomPopup(std::function<void()> openGallery);
/// A photo could not be put into the device's library.
CustomPopupView::Contents libraryForbiddenPopup();
/// @param storePage  the address that "Update" opens
CustomPopupView::Contents updatePopup(URLOpener &opener, std::string storePage);

} // namespace skyflare
