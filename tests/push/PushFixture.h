#pragma once

#include "platform/linux/SystemRandom.h"
#include "platform/linux/UnifiedPushNotifications.h"
#include "tests/desktop/BusFixture.h"
#include "tests/fakes/RecordingDesktop.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fakes/WebPushSender.h"

namespace skyflare {

/// A desktop with distributors of push messages on its bus, and the app's side of it.
struct PushFixture : BusFixture {
    static constexpr const char *distributor = "org.unifiedpush.Distributor.one";

    std::string app = "org.example.App";
    TemporaryFolder folder;
    SystemRandom random;
    RecordingNotifications shown;
    Texts failures;
    std::vector<Bytes> tokens; ///< those handed out by the app
    std::shared_ptr<UnifiedPushNotifications> notifications;

    /// As at each start of the app.
    void startApp()
    {
        notifications.reset();
        settle(session, "org.freedesktop.DBus"); // the name is given back
        notifications = std::make_shared<UnifiedPushNotifications>(UnifiedPushNotifications::Services{
            {session, random, shown, console, folder / "state"}, main, app});
        notifications->registerForRemoteNotifications([this](const Result<Bytes> &token) {
            CHECK(main.isCurrent());
            if (token)
                tokens.push_back(*token);
            else
                failures.push_back(token.error().message);
        });
    }
    /// A distributor that says yes, as version 2 does.
    [[nodiscard]] std::unique_ptr<FakeBusService> startDistributor(const std::string &name = distributor)
    {
        auto started = service(name);
        started->on("Register", "({'success': <'REGISTRATION_SUCCEEDED'>},)");
        return started;
    }
    /// The token that it was registered with, last.
    [[nodiscard]] static std::string tokenIn(const FakeBusService &asked)
    {
        const std::string &call = asked.calls().back();
        const std::string before = "'token': <'";
        return call.substr(call.find(before) + before.size(), 36);
    }
    /// A distributor calls the app. @return its answer as text, or the name of an error
    std::string callApp(const std::string &interface, const std::string &method, GVariant *arguments)
    {
        const bool isVersion2 = interface.ends_with('2');
        std::optional<std::string> text;
        system.call({app, "/org/unifiedpush/Connector", "org.unifiedpush." + interface, method,
                     takeVariant(arguments), isVersion2 ? "(a{sv})" : "()"},
                    [&](const Result<BusAnswer> &answer) {
                        text = answer ? textOf(answer->values) : answer.error().domain;
                    });
        CHECK(main.runUntil([&] { return text.has_value(); }));
        return text.value_or("");
    }
    std::string bringEndpoint(const std::string &token, const std::string &endpoint)
    {
        return callApp(
            "Connector2", "NewEndpoint",
            g_variant_new_parsed("({'token': <%s>, 'endpoint': <%s>},)", token.c_str(), endpoint.c_str()));
    }
    std::string bringMessage(const std::string &token, const Bytes &message, const char *id)
    {
        auto *octets = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, message.data(), message.size(), 1);
        return callApp("Connector2", "Message",
                       g_variant_new_parsed("({'token': <%s>, 'message': <%@ay>, 'id': <%s>},)",
                                            token.c_str(), octets, id));
    }
    std::string bringMessageByVersion1(const std::string &token, const Bytes &message)
    {
        auto *octets = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, message.data(), message.size(), 1);
        return callApp("Connector1", "Message", g_variant_new("(s@ays)", token.c_str(), octets, ""));
    }
};

} // namespace skyflare
