#include "platform/push/PushMessage.h"

#include "platform/base/Text.h"

#include <nlohmann/json.hpp>

namespace skyflare {

namespace {

constexpr std::size_t longestTitle = 100;
constexpr std::size_t longestBody = 1000;
constexpr std::size_t longestIdentifier = 100;

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// @param text  valid UTF-8
std::string atMost(std::size_t characters, const std::string &text)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isContinuation(text[i]) && count++ == characters)
            return text.substr(0, i) + "…";
    }
    return text;
}

enum class LineEnds { Kept, Blanks };

std::string withoutControls(std::string text, LineEnds lineEnds)
{
    for (char &letter : text) {
        const bool isControl = static_cast<unsigned char>(letter) < ' ' || letter == '\x7f';
        if (isControl && !(letter == '\n' && lineEnds == LineEnds::Kept))
            letter = ' ';
    }
    return std::string(withoutOuterSpace(text));
}

std::string textIn(const nlohmann::json &object, const char *key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace

Result<UserNotification> readPushMessage(std::span<const std::uint8_t> text)
{
    const std::string whole(text.begin(), text.end());
    if (validUtf8(whole) != whole)
        return Error{"push", 0, "the message is no text"};
    const auto json = nlohmann::json::parse(whole, nullptr, false);
    const bool isObject = json.is_object();
    const std::string title = isObject ? textIn(json, "title") : std::string();
    const std::string body = isObject ? textIn(json, "body") : whole;
    const std::string identifier = isObject ? textIn(json, "id") : std::string();
    UserNotification notification{.identifier =
                                      identifier.size() <= longestIdentifier ? identifier : std::string(),
                                  .title = atMost(longestTitle, withoutControls(title, LineEnds::Blanks)),
                                  .body = atMost(longestBody, withoutControls(body, LineEnds::Kept))};
    if (notification.title.empty() && notification.body.empty())
        return Error{"push", 0, "the message says nothing"};
    return notification;
}

} // namespace skyflare
