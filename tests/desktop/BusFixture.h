#pragma once

#include "platform/base/Handle.h"
#include "platform/linux/MessageBus.h"
#include "tests/fakes/PrivateBus.h"
#include "tests/fakes/RecordingConsole.h"

#include <doctest/doctest.h>
#include <gio/gio.h>

#include <memory>
#include <string>
#include <vector>

namespace skyflare {

/// A desktop with nothing on its buses, and the program's side of them.
struct BusFixture {
    using Reply = FakeBusService::Reply;
    using Texts = std::vector<std::string>;

    PrivateBus bus;
    PumpedQueue main;
    RecordingConsole console;
    PlatformThread thread;
    MessageBus session{MessageBus::Kind::Session, {thread, main, console}};
    MessageBus system{MessageBus::Kind::System, {thread, main, console}};

    [[nodiscard]] std::unique_ptr<FakeBusService> service(const std::string &name)
    {
        return std::make_unique<FakeBusService>(bus, name, main);
    }
    /// What was asked of that service before is answered, and what it said before is heard.
    void settle(MessageBus &one, const std::string &name)
    {
        bool isDone = false;
        one.call({name, "/", name, "Settle", {}, "()", BusCall::forEver},
                 [&](const auto &) { isDone = true; });
        CHECK(main.runUntil([&] { return isDone; }));
    }
    [[nodiscard]] static std::string textOf(const Variant &values)
    {
        const Handle<gchar, &g_free> text(g_variant_print(values.get(), FALSE));
        return text.get();
    }
};

} // namespace skyflare
