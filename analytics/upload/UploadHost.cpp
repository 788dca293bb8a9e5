#include "analytics/upload/UploadHost.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <charconv>

namespace skyflare {

namespace {

// RFC 1035, section 2.3.4
constexpr std::size_t longestLabel = 63;
constexpr std::size_t longestName = 253;

constexpr std::string_view digits = "0123456789";
constexpr std::string_view addressInBrackets = "[0123456789abcdefABCDEF:.]";

Error refused(std::string why)
{
    return {"host", 1, std::move(why)};
}

bool isLetterOrDigit(char letter)
{
    const char lower = lowerAscii(letter);
    return (lower >= 'a' && lower <= 'z') || digits.find(letter) != digits.npos;
}

bool isLabel(std::string_view label)
{
    return !label.empty() && label.size() <= longestLabel && label.front() != '-' && label.back() != '-' &&
           std::ranges::all_of(label, [](char letter) { return isLetterOrDigit(letter) || letter == '-'; });
}

std::string_view lastLabel(std::string_view name)
{
    return name.substr(name.rfind('.') + 1);
}

/// What ends with a number is an address to whoever asks it, in whichever way it is written.
bool isAddress(std::string_view name)
{
    const std::string_view last = lastLabel(name);
    return name.starts_with('[') || last.find_first_not_of(digits) == last.npos ||
           isSameInAnyCase(last.substr(0, 2), "0x");
}

bool isFourNumbers(std::string_view name)
{
    return name.find_first_not_of("0123456789.") == name.npos && std::ranges::count(name, '.') == 3;
}

bool isName(std::string_view name)
{
    if (name.size() > longestName)
        return false;
    for (;;) {
        const std::size_t dot = name.find('.');
        // Deliberate: a "_" is no letter of a host's name, but there are hosts that have one.
        std::string label(name.substr(0, dot));
        std::ranges::replace(label, '_', 'x');
        if (!isLabel(label))
            return false;
        if (dot == name.npos)
            return true;
        name.remove_prefix(dot + 1);
    }
}

bool isHost(std::string_view name)
{
    if (name.starts_with('['))
        return name.size() > 2 && name.ends_with(']') &&
               name.find_first_not_of(addressInBrackets) == name.npos && name.find(']') == name.size() - 1;
    return isName(name) && (!isAddress(name) || isFourNumbers(name));
}

bool isPort(std::string_view port)
{
    unsigned number = 0;
    const auto [end, failed] = std::from_chars(port.data(), port.data() + port.size(), number);
    return failed == std::errc{} && end == port.data() + port.size() && number > 0 && number <= 65'535;
}

/// Cuts the scheme off. Nothing: it is another one.
bool takeScheme(std::string_view &text, std::string &scheme)
{
    const std::size_t end = text.find("://");
    if (end == text.npos)
        return true;
    for (const std::string_view known : {"https", "http"}) {
        if (isSameInAnyCase(text.substr(0, end), known)) {
            scheme = known;
            text.remove_prefix(end + 3);
            return true;
        }
    }
    return false;
}

} // namespace

Result<UploadHost> UploadHost::parse(std::string_view text)
{
    UploadHost host;
    if (!takeScheme(text, host.scheme))
        return refused("only https is spoken, and http with this machine itself");
    if (text.ends_with('/'))
        text.remove_suffix(1);
    if (text.find_first_of("/?#@\\") != text.npos)
        return refused("a host alone may stand here, without path, query or user");
    const std::size_t closing = text.rfind(']');
    const std::size_t colon = text.find(':', closing == text.npos ? 0 : closing);
    host.name = text.substr(0, colon);
    if (colon != text.npos) {
        host.port = text.substr(colon);
        if (!isPort(text.substr(colon + 1)))
            return refused("this is no port: " + quoted(host.port));
    }
    if (!isHost(host.name))
        return refused("this is no host: " + quoted(host.name));
    host.isLoopback = isSameInAnyCase(host.name, "localhost") || host.name == "[::1]" ||
                      (isFourNumbers(host.name) && host.name.starts_with("127."));
    if (host.scheme == "http" && !host.isLoopback)
        return refused("http is spoken with this machine itself alone");
    return host;
}

UploadHost UploadHost::withSubdomain(std::string_view label) const
{
    UploadHost host = *this;
    if (!isLoopback && !isAddress(name) && isLabel(label) && label.size() + 1 + name.size() <= longestName)
        host.name = std::string(label) + "." + name;
    return host;
}

} // namespace skyflare
