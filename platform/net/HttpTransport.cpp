#include "platform/net/HttpTransport.h"

#include "platform/base/Text.h"

#include <algorithm>
#include <utility>

namespace skyflare {

std::optional<std::string_view> HttpResponse::header(std::string_view name) const
{
    const auto found = std::ranges::find_if(
        headers, [name](const HttpHeader &header) { return isSameInAnyCase(header.name, name); });
    return found == headers.end() ? std::nullopt : std::optional<std::string_view>(found->value);
}

Error httpError(HttpFailure failure, std::string message)
{
    return {"http", static_cast<int>(failure), std::move(message)};
}

} // namespace skyflare
