#pragma once

#include <string>
#include <string_view>

namespace skyflare {

/// The address of the desktop's page where this app's permissions and language are set.
inline constexpr std::string_view openSettingsURLString = "app-settings:";

/// Whether `text` is an absolute URL (RFC 3986): a scheme, a colon, and none but the letters that a URL may
/// have.
bool formsURL(std::string_view text);

/// Whether the app opens such addresses at all: https, http, mailto, appstream and the settings page. What
/// comes over the network must not be able to start anything else.
bool isOpenableURL(std::string_view url);

/// Opens addresses outside the app.
///
/// Threads: main; no call waits for what is opened.
class URLOpener {
public:
    URLOpener() = default;
    URLOpener(const URLOpener &) = delete;
    URLOpener &operator=(const URLOpener &) = delete;
    virtual ~URLOpener() = default;

    /// Whether openURL() would find something that opens it.
    [[nodiscard]] virtual bool canOpenURL(const std::string &url) = 0;

    /// Opens it, in a program of the user's. One that is not openable does nothing.
    virtual void openURL(const std::string &url) = 0;
};

} // namespace skyflare
