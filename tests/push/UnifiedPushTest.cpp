#include "tests/push/PushFixture.h"

using namespace skyflare;

namespace {

constexpr const char *endpoint = "https://push.example/up?id=1";

const Bytes plain{'p', 'l', 'a', 'i', 'n'};

} // namespace

TEST_CASE_FIXTURE(PushFixture, "who has the device's token reaches its user, and nobody else does")
{
    const auto running = startDistributor();
    startApp();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    const std::string token = tokenIn(*running);
    CHECK(running->calls()[0] == "Register ({'service': <'org.example.App'>, 'token': <'" + token +
                                     "'>, 'description': <'Skyflare'>},)");
    CHECK(token[14] == '4');
    CHECK(bringEndpoint("00000000-0000-4000-8000-000000000000", endpoint) == "({},)");
    CHECK(bringEndpoint(token, "file:///etc/passwd") == "({},)");
    CHECK(tokens.empty());
    CHECK(bringEndpoint(token, endpoint) == "({},)");
    CHECK(bringEndpoint(token, endpoint) == "({},)");
    REQUIRE(tokens.size() == 1);

    const WebPushSender sender(tokens[0]);
    CHECK(sender.endpoint() == endpoint);
    const Bytes message = sender.encrypt(R"({"title":"Tonight","body":"at ten"})");
    CHECK(bringMessage(token, message, "m1") == "({'id': <'m1'>},)");
    CHECK(bringMessageByVersion1(token, sender.encrypt("by version 1")) == "()");
    REQUIRE(shown.shown.size() == 2);
    CHECK(shown.shown[0].identifier == "m1");
    CHECK(shown.shown[0].title == "Tonight");
    CHECK(shown.shown[0].body == "at ten");
    CHECK(shown.shown[1].body == "by version 1");
    CHECK(console.reports().empty());

    CHECK(bringMessage("another", message, "m2") == "({'id': <'m2'>},)");
    CHECK(bringMessage(token, sender.encrypt(std::string(4096, 'x')), "m3") == "({'id': <'m3'>},)");
    CHECK(callApp("Connector2", "Message", g_variant_new_parsed("({'token': <%s>},)", token.c_str())) ==
          "({},)");
    CHECK(console.reports().empty());
    bringMessageByVersion1(token, plain);
    bringMessage(token, plain, "m5");
    CHECK(shown.shown.size() == 2);
    CHECK(console.reports() ==
          Texts{"A push message is not shown: the message is too short to be encrypted"});
    CHECK(failures.empty());
}

TEST_CASE_FIXTURE(PushFixture, "it registers anew, as the same device, when distributor or app start again")
{
    auto running = startDistributor();
    auto other = startDistributor("org.unifiedpush.Distributor.two");
    startApp();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    const std::string token = tokenIn(*running);
    bringEndpoint(token, endpoint);

    running.reset();
    running = startDistributor();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    CHECK(tokenIn(*running) == token);
    bringEndpoint(token, "https://push.example/moved");
    const auto earlier = startDistributor("org.unifiedpush.Distributor.a");
    startApp();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 2; }));
    CHECK(tokenIn(*running) == token);
    bringEndpoint(token, "https://push.example/moved");
    REQUIRE(tokens.size() == 3);
    CHECK(WebPushSender(tokens[1]).endpoint() == "https://push.example/moved");
    CHECK(tokens[2] == tokens[1]);
    bringMessage(token, WebPushSender(tokens[0]).encrypt("to the first token"), "m");
    CHECK(shown.shown.size() == 1);
    CHECK(earlier->calls().empty());

    CHECK(callApp("Connector2", "Unregistered", g_variant_new_parsed("({'token': <%s>},)", token.c_str())) ==
          "({},)");
    running.reset();
    startApp(); // the one that it used is no longer installed
    REQUIRE(main.runUntil([&] { return earlier->count("Register") == 1; }));
    CHECK(other->calls().empty());
    CHECK(failures == Texts{"the distributor has ended the registration"});
}

TEST_CASE_FIXTURE(PushFixture, "a distributor of version 1 is spoken to in its way")
{
    const auto running = service(distributor);
    const char *success = "REGISTRATION_SUCCEEDED";
    running->on("Register", [&](GVariant *arguments) {
        if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sss)")))
            return Reply{.error = "org.freedesktop.DBus.Error.UnknownInterface"};
        return Reply{g_variant_new("(ss)", success, "NETWORK")};
    });
    startApp();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 2; }));
    const std::string call = running->calls()[1];
    CHECK(call.starts_with("Register ('org.example.App', '"));
    const std::string token = call.substr(std::string("Register ('org.example.App', '").size(), 36);
    CHECK(callApp("Connector1", "NewEndpoint", g_variant_new("(ss)", token.c_str(), endpoint)) == "()");
    REQUIRE(tokens.size() == 1);

    success = "REGISTRATION_FAILED";
    startApp();
    REQUIRE(main.runUntil([&] { return !failures.empty(); }));
    CHECK(failures == Texts{"org.unifiedpush.Distributor.one cannot reach its server"});
}

TEST_CASE_FIXTURE(PushFixture, "a registration that fails says why, once, and is tried again later")
{
    startApp();
    REQUIRE(main.runUntil([&] { return failures.size() == 1; }));
    CHECK(failures[0] == "no program on this system brings push messages (a UnifiedPush distributor)");
    CHECK_FALSE(std::filesystem::exists(folder / "state/push.keys"));
    CHECK_FALSE(std::filesystem::exists(folder / "state/push.plist"));

    auto running = service(distributor);
    const char *reason = "ACTION_REQUIRED";
    running->on("Register", [&](auto) {
        return Reply{g_variant_new_parsed("({'success': <'REGISTRATION_FAILED'>, 'reason': <%s>},)", reason)};
    });
    REQUIRE(main.runUntil([&] { return failures.size() == 2; }));
    CHECK(failures[1] == "org.unifiedpush.Distributor.one waits for you: open its settings");
    reason = "SOMETHING_NEW";
    startApp();
    REQUIRE(main.runUntil([&] { return failures.size() == 3; }));
    CHECK(failures[2] == "org.unifiedpush.Distributor.one refuses, and gives no reason that is known");

    running->on("Register", [](auto) { return Reply{}; });
    startApp();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 3; }));
    running.reset(); // before it has answered
    REQUIRE(main.runUntil([&] { return failures.size() == 4; }));
    CHECK(failures[3].starts_with("org.unifiedpush.Distributor.one cannot be asked: "));

    running = startDistributor();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    settle(session, distributor); // its answer has come
    main.passTime();
    REQUIRE(main.runUntil([&] { return failures.size() == 5; }));
    CHECK(failures[4] == "org.unifiedpush.Distributor.one gives no address to send to");
    bringEndpoint(tokenIn(*running), endpoint); // late, but here it is
    CHECK(tokens.size() == 1);
    CHECK(console.reports().empty());
}

TEST_CASE_FIXTURE(PushFixture, "messages go to one program: the next one registers when the first has gone")
{
    const auto running = startDistributor();
    auto first = service(app);
    startApp();
    REQUIRE(main.runUntil([&] { return failures.size() == 1; }));
    CHECK(failures[0] == "another program has the name org.example.App");
    CHECK(running->calls().empty());
    first.reset();
    REQUIRE(main.runUntil([&] { return running->count("Register") == 1; }));
    settle(session, distributor);
    bus.kill();
    REQUIRE(main.runUntil([&] { return failures.size() == 2; }));
    CHECK(failures[1] == "there is no session bus");
    startApp();
    CHECK(main.runUntil([&] { return failures.size() == 3; }));
    CHECK(console.reports().size() == 1);
}
