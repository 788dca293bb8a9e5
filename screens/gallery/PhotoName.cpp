#include "screens/gallery/PhotoName.h"

#include "platform/base/Localization.h"

#include <QDateTime>
#include <QLocale>
#include <cmath>

namespace skyflare {

std::string photoName(const PhotoModel &photo)
{
    const QLocale locale(QString::fromStdString(Localization::shared().language()));
    const auto moment = QDateTime::fromMSecsSinceEpoch(std::llround(photo.createdDate * 1000));
    return localized("Photo") + " " + locale.toString(moment, QLocale::ShortFormat).toStdString();
}

} // namespace skyflare
