#include "screens/gallery/DetailPopups.h"

#include "platform/base/Localization.h"

#include <QUrl>

namespace skyflare {

namespace {

constexpr std::string_view mailSubject = "Photo Save Error";
constexpr std::string_view mailBody =
    "I'm having trouble saving a photo. Please send me a screenshot of the error.";

std::string escaped(std::string_view text, const char *kept = "")
{
    const QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
    return QUrl::toPercentEncoding(QString::fromUtf8(bytes), kept).toStdString();
}

} // namespace

CustomPopupView::Contents libraryRefusedPopup(URLOpener &opener)
{
    return {.icon = "bolt.heart.fill",
            .title = localized("We need your permission"),
            .description =
                localized("We don't have access to your photo gallery. Please allow us to save it for you."),
            .buttonTitle = localized("Go to Settings"),
            .tapAction = [&opener] { opener.openURL(std::string(openSettingsURLString)); }};
}

CustomPopupView::Contents saveErrorPopup(URLOpener &opener, std::string_view supportAddress)
{
    return {.icon = "heart.slash.fill",
            .title = localized("We couldn't save your photo."),
            .description = localized("Sorry, we couldn't save your photo. Send us a screenshot of the error "
                                     "and we'll look into it."),
            .buttonTitle = localized("Email to Developer"),
            .tapAction = [&opener, mail = saveErrorMail(supportAddress)] { opener.openURL(mail); }};
}

CustomPopupView::Contents deletePhotoPopup(std::function<void()> deletePhoto)
{
    return {.icon = "trash",
            .title = localized("Delete Photo"),
            .description = localized("Are you sure you want to delete this photo?"),
            .buttonTitle = localized("Delete"),
            .tapAction = std::move(deletePhoto)};
}

std::string saveErrorMail(std::string_view supportAddress)
{
    std::string mail = "mailto:" + escaped(supportAddress, "@+") + "?subject=" + escaped(mailSubject) +
                       "&body=" + escaped(mailBody);
    if (!formsURL(mail))
        qFatal("The support address makes no URL: %s", mail.c_str());
    return mail;
}

} // namespace skyflare
