#include "platform/base/Files.h"
#include "platform/linux/SystemRandom.h"
#include "platform/push/PushMessage.h"
#include "platform/push/PushSubscription.h"
#include "platform/push/WebPushDecryption.h"
#include "platform/push/WebPushKeyFile.h"
#include "tests/fakes/RecordingConsole.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/WebPushSender.h"

#include <doctest/doctest.h>

#include <algorithm>

using namespace skyflare;

namespace {

/// The device of RFC 8291, appendix A.
WebPushKeys exampleKeys()
{
    WebPushKeys::PrivateKey privateKey{};
    WebPushKeys::AuthSecret authSecret{};
    std::ranges::copy(fromBase64Url("q1dXpw3UpT5VOmu_cf_v6ih07Aems3njxI-JWgLcM94"), privateKey.begin());
    std::ranges::copy(fromBase64Url("BTBZMqHH6r4Tts7J_aSIgg"), authSecret.begin());
    return WebPushKeys::from(privateKey, authSecret).value();
}

/// And the message to it (section 5).
constexpr const char *exampleMessage = "DGv6ra1nlYgDCS1FRnbzlwAAEABBBP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27ml"
                                       "mlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBru3jl7A_yl95bQpu6cVPT"
                                       "pK4Mqgkf1CXztLVBSt2Ks3oZwbuwXPXLWyouBWLVWGNWQexSgSxsj_Qulcy4a-fN";

std::string textOf(const Result<Bytes> &decrypted)
{
    return decrypted ? std::string(decrypted->begin(), decrypted->end())
                     : "refused: " + decrypted.error().message;
}

Result<UserNotification> read(std::string_view text)
{
    return readPushMessage({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
}

} // namespace

TEST_CASE("the RFC's own message is read, and none of it can be changed")
{
    const WebPushKeys keys = exampleKeys();
    const Bytes message = fromBase64Url(exampleMessage);
    CHECK(textOf(decryptWebPush(keys, message)) == "When I grow up, I want to be a watermelon");

    for (std::size_t i = 0; i < message.size(); ++i) {
        const bool isRecordSize = i >= 16 && i < 20; // nothing vouches for it
        Bytes changed = message;
        changed[i] ^= 1;
        CAPTURE(i);
        CHECK(decryptWebPush(keys, changed).has_value() == isRecordSize);
        CHECK_FALSE(decryptWebPush(keys, std::span(message).first(i)));
    }
    Bytes longer = message;
    longer.push_back(0);
    CHECK_FALSE(decryptWebPush(keys, longer));
    SystemRandom random;
    CHECK_FALSE(decryptWebPush(WebPushKeys::make(random).value(), message));
}

TEST_CASE("one record is read, with or without padding; a torn one is not")
{
    const WebPushKeys keys = exampleKeys();
    const Bytes token = deviceTokenFor("https://push.example/JzLQ3raZJfFBR0aqvOMsLrt54w4rJUsV", keys);
    CHECK(
        std::string(token.begin(), token.end()) ==
        R"({"endpoint":"https://push.example/JzLQ3raZJfFBR0aqvOMsLrt54w4rJUsV",)"
        R"("p256dh":"BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4",)"
        R"("auth":"BTBZMqHH6r4Tts7J_aSIgg"})");
    const WebPushSender sender(token);
    const auto sent = [&](const WebPushSender::Shape &shape) {
        return textOf(decryptWebPush(keys, sender.encrypt("hello", shape)));
    };
    CHECK(sent({}) == "hello");
    CHECK(sent({.padding = 500}) == "hello");
    CHECK(sent({.recordSize = 22}) == "hello");
    CHECK(sent({.recordSize = 21}) == "refused: the message is of more than one record");
    CHECK(sent({.delimiter = 1}) == "refused: the message does not end with its only record");
    CHECK(sent({.padding = 9, .delimiter = 0}) == "refused: the message does not end with its only record");
    CHECK(textOf(decryptWebPush(keys, sender.encrypt(""))).empty());
}

TEST_CASE("keys are made once, are nobody else's to read, and are made anew when they are damaged")
{
    const TemporaryFolder folder;
    const auto file = folder / "state/push.keys";
    SystemRandom random;
    RecordingConsole console;
    const auto open = [&] { return WebPushKeyFile::open(file, random, console).value().publicKey(); };
    const auto made = open();
    CHECK(open() == made);
    CHECK(std::filesystem::status(file).permissions() ==
          (std::filesystem::perms::owner_read | std::filesystem::perms::owner_write));
    CHECK(console.reports().empty());

    const Bytes whole = readFile(file).value();
    for (const std::size_t place : {std::size_t{0}, std::size_t{40}, whole.size() - 1}) {
        Bytes damaged = whole;
        damaged[place] ^= 1;
        REQUIRE(replaceFile(file, damaged));
        CHECK(open() != made);
    }
    REQUIRE(console.reports().size() == 3);
    CHECK(console.reports()[0] ==
          "The keys for push messages are made anew: " + file.string() + " is damaged");
    CHECK(open() == open());

    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    CHECK_FALSE(WebPushKeyFile::open(file, random, console));
    WebPushKeys::PrivateKey tooLarge{};
    tooLarge.fill(0xFF);
    CHECK_FALSE(WebPushKeys::from(tooLarge, {}));
    CHECK_FALSE(WebPushKeys::from({}, {}));
}

TEST_CASE("a message is a title, a body and an identifier, or a text alone; without either it says nothing")
{
    struct Row {
        std::string text, identifier, title, body;
    };
    const Row rows[] = {
        {R"({"title":"Tonight","body":"Fireworks\nat ten","id":"7"})", "7", "Tonight", "Fireworks\nat ten"},
        {R"({"title":"Two\nlines\u0007","other":[1]})", "", "Two lines", ""},
        {"Fireworks at ten\n", "", "", "Fireworks at ten"},
        {"[1]", "", "", "[1]"},
        {R"({"title":)", "", "", R"({"title":)"},
        {R"({"body":")" + std::string(1001, 'x') + R"(","id":")" + std::string(101, 'i') + "\"}", "", "",
         std::string(1000, 'x') + "…"},
        {R"({"title":")" + std::string(99, 'x') + "éé\"}", "", std::string(99, 'x') + "é…", ""},
    };
    for (const Row &row : rows) {
        CAPTURE(row.text);
        const auto message = read(row.text).value();
        CHECK(message.identifier == row.identifier);
        CHECK(message.title == row.title);
        CHECK(message.body == row.body);
    }
    for (const char *text : {"", " \n", "{}", R"({"title":7,"body":null})", "\xFF\xFE"})
        CHECK_FALSE(read(text));

    CHECK(isPushEndpoint("https://push.example/" + std::string(979, 'x')));
    CHECK_FALSE(isPushEndpoint("https://push.example/" + std::string(980, 'x')));
    for (const char *endpoint :
         {"", "ftp://push.example/", "https://push.example/a b", "https://püsh.example"})
        CHECK_FALSE(isPushEndpoint(endpoint));
}
