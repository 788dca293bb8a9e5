#include "platform/net/HttpTransport.h"

#include <algorithm>
#include <utility>

namespace skyflare {

namespace {

char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool isSameName(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, {}, lower, lower);
}

} // namespace

std::optional<std::string_view> HttpResponse::header(std::string_view name) const
{
    const auto found = std::ranges::find_if(
        headers, [name](const HttpHeader &header) { return isSameName(header.name, name); });
    return found == headers.end() ? std::nullopt : std::optional<std::string_view>(found->value);
}

Error httpError(HttpFailure failure, std::string message)
{
    return {"http", static_cast<int>(failure), std::move(message)};
}

} // namespace skyflare
