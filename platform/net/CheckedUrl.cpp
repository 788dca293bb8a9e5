#include "platform/net/CheckedUrl.h"

#include "platform/net/HttpTransport.h"

#include <string_view>

namespace skyflare {

namespace {

std::string part(CURLU *url, CURLUPart which)
{
    char *text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK)
        return {};
    return CurlText(text).get();
}

/// libcurl writes every IPv4 address in the same way, whatever way it was given in.
bool isLoopbackHost(std::string_view host)
{
    const bool isAddress = host.find_first_not_of("0123456789.") == host.npos;
    return host == "localhost" || host == "[::1]" || (isAddress && host.starts_with("127."));
}

Error refused(const std::string &why)
{
    return httpError(HttpFailure::InvalidRequest, why);
}

} // namespace

Result<CheckedUrl> CheckedUrl::parse(const std::string &text)
{
    CheckedUrl checked;
    checked.url.reset(curl_url());
    if (!checked.url || text.find('\0') != text.npos ||
        curl_url_set(checked.url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
        return refused("this is no web address: " + text);
    checked.scheme = part(checked.url.get(), CURLUPART_SCHEME);
    checked.isLoopback = isLoopbackHost(part(checked.url.get(), CURLUPART_HOST));
    if (checked.scheme != "https" && !(checked.isPlain() && checked.isLoopback))
        return refused("only https is asked, and http of this machine itself: " + text);
    if (!part(checked.url.get(), CURLUPART_USER).empty())
        return refused("a web address must not carry a user's name");
    return checked;
}

} // namespace skyflare
