#include "capture/AutoSave.h"

#include <utility>

namespace skyflare {

namespace {

void printOutcome(Console &console, const LibraryChange &change)
{
    if (change.success)
        console.printLine("Fotoğraf başarıyla galeriye kaydedildi.");
    else
        console.printLine("Fotoğraf galeriye kaydedilemedi: " +
                          (change.error ? change.error->message : std::string("unknown error")));
}

} // namespace

void AutoSave::handOver(const Image &image, double creationDate, std::function<void()> onPermissionMissing)
{
    if (!services_.app.autoSave())
        return;
    services_.photoLibrary.requestAuthorization(
        [library = &services_.photoLibrary, console = &services_.console, image, creationDate,
         permissionMissing = std::move(onPermissionMissing)](AuthorizationStatus status) {
            if (status != AuthorizationStatus::Authorized) {
                permissionMissing();
                return;
            }
            library->createAsset(image, creationDate,
                                 [console](const LibraryChange &change) { printOutcome(*console, change); });
        });
    services_.logManager.logEvent(LogEvent::PhotoAutoSaved);
}

} // namespace skyflare
