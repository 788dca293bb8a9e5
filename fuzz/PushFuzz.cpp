// Any bytes as a push message, and any text as what was encrypted in one.
#include "fuzz/Checks.h"
#include "platform/base/Text.h"
#include "platform/push/PushMessage.h"
#include "platform/push/PushSubscription.h"
#include "platform/push/WebPushDecryption.h"
#include "tests/fakes/WebPushSender.h"

#include <algorithm>

using namespace skyflare;

namespace {

WebPushKeys someKeys()
{
    WebPushKeys::PrivateKey privateKey{};
    privateKey.fill(7);
    return WebPushKeys::from(privateKey, {}).value();
}

std::size_t charactersIn(const std::string &text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

void checkText(std::span<const std::uint8_t> text)
{
    const auto read = readPushMessage(text);
    if (!read)
        return;
    require(!read->title.empty() || !read->body.empty(), "there is something to show");
    require(validUtf8(read->title + read->body) == read->title + read->body, "and it is text");
    require(charactersIn(read->title) <= 101 && charactersIn(read->body) <= 1001, "of a length to be shown");
    require(read->title.find('\n') == std::string::npos, "a title is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const WebPushKeys keys = someKeys();
    static const WebPushSender sender(deviceTokenFor("https://push.example/", keys));
    const std::span bytes(data, size);
    if (const auto text = decryptWebPush(keys, bytes))
        require(text->size() < size, "what was read is shorter than what came");
    checkText(bytes);
    const std::string plain(bytes.begin(), bytes.end());
    if (size % 8 == 0) { // it takes its time
        const auto back = decryptWebPush(keys, sender.encrypt(plain, {.recordSize = 1U << 20U}));
        require(back && std::ranges::equal(*back, bytes), "what a sender has written is what is read");
    }
    return 0;
}
