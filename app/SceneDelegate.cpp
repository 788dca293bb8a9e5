#include "app/SceneDelegate.h"

#include <utility>

namespace skyflare {

void SceneDelegate::willConnectToSession(std::shared_ptr<Window> windowOfScene)
{
    if (!windowOfScene)
        return;
    window_ = std::move(windowOfScene);
    if (!window_->quickWindow().isVisible()) // the application has shown its own already
        window_->makeKeyAndVisible();
}

void SceneDelegate::performActionForShortcutItem(const std::string & /*type*/,
                                                 const std::function<void(bool)> &completionHandler)
{
    completionHandler(false);
}

} // namespace skyflare
