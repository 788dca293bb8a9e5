#include "screens/gallery/PhotoListViewController.h"

#include "platform/base/Localization.h"
#include "ui/SharedObject.h"

namespace skyflare {

Storyboard PhotoListViewController::storyboard(const Services &services)
{
    return {"PhotoListViewController",
            {{"PhotoListViewSB", QUrl(QStringLiteral("qrc:/Skyflare/Gallery/PhotoListView.qml")),
              [services] { return makeShared<PhotoListViewController>(services); }}}};
}

void PhotoListViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    allPhotosLabel_.setText(localized("All Photos"));
    closeButton_.setSymbol("close");
    closeButton_.setAccessibleName(localized("Close"));
}

void PhotoListViewController::dismissButtonTapped()
{
    dismiss(Animated::Yes);
}

} // namespace skyflare
