#include "screens/gallery/PhotoDetailViewController.h"

#include "platform/base/Localization.h"
#include "ui/SharedObject.h"

namespace skyflare {

Storyboard PhotoDetailViewController::storyboard(const Services &services)
{
    return {"PhotoDetailViewController",
            {{"PhotoDetailViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Gallery/PhotoDetailView.qml")),
              [services] { return makeShared<PhotoDetailViewController>(services); }}}};
}

void PhotoDetailViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    closeButton_.setSymbol("close");
    closeButton_.setAccessibleName(localized("Close"));
}

void PhotoDetailViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

} // namespace skyflare
