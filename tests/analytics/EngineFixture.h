#pragma once

#include "analytics/FIRAnalytics.h"
#include "platform/base/Text.h"
#include "tests/fakes/EngineInFolder.h"

#include <doctest/doctest.h>

namespace doctest {

template <> struct StringMaker<std::vector<std::string>> {
    static String convert(const std::vector<std::string> &texts)
    {
        std::string all;
        for (const std::string &text : texts)
            all += "\n    " + text;
        return all.c_str();
    }
};

} // namespace doctest

namespace skyflare {

inline PropertyList text(const std::string &value)
{
    return value;
}

/// "level_up a=1 b=text", with the origin in front where it is not "app".
inline std::string shown(const APMEvent &event)
{
    struct Shown {
        std::string operator()(const std::string &text) const { return text; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return shortestDecimal(number); }
        std::string operator()(const APMValue::Array &) const { return "[]"; }
    };
    std::string text = (event.origin == "app" ? "" : event.origin + ":") + event.name;
    for (const APMParameter &parameter : event.parameters)
        text += " " + parameter.name + "=" + std::visit(Shown{}, parameter.value.held());
    return text;
}

/// An engine behind its public face, and what it has done since it was asked last.
struct EngineFixture : EngineInFolder {
    using Texts = std::vector<std::string>;

    /// Whatever a test has done, the ledger must balance.
    ~EngineFixture() { end(); }

    void end()
    {
        if (host)
            CHECK(balance() == "balanced");
        EngineInFolder::end();
    }
    void log(std::optional<std::string> name, PropertyList::Dictionary parameters = {})
    {
        FIRAnalytics::logEventWithName(std::move(name), std::move(parameters));
        time.runUntilIdle();
    }
    /// What was stored since the last call.
    Texts takeStored()
    {
        Texts texts;
        for (const APMEvent &event : stored())
            texts.push_back(shown(event));
        const std::size_t before = std::exchange(seen_, texts.size());
        return {texts.begin() + static_cast<std::ptrdiff_t>(std::min(before, texts.size())), texts.end()};
    }
    /// What was reported since the last call, without what stands before each message.
    Texts takeProblems()
    {
        Texts texts = console.reports();
        console.clear();
        for (std::string &line : texts)
            line.erase(0, line.find(": ") + 2);
        return texts;
    }
    /// How many lines of the log have this in them.
    long told(const std::string &part)
    {
        time.runUntilIdle();
        Texts all = console.lines();
        std::ranges::copy(console.reports(), std::back_inserter(all));
        return std::ranges::count_if(all,
                                     [&](const std::string &line) { return line.find(part) != line.npos; });
    }
    /// What the engine answers, or why it does not.
    std::string session()
    {
        std::string answer;
        FIRAnalytics::sessionIDWithCompletion(
            [&](const auto &id) { answer = id ? std::to_string(*id) : id.error().message; });
        time.runUntilIdle();
        return answer;
    }
    /// The same of the user's properties: "auto:_sno v=1".
    Texts properties(IncludingInternal which = IncludingInternal::Yes)
    {
        Texts texts;
        analytics().userPropertiesIncludingInternal(
            which, time.makeSerialQueue("asker"), [&](const Result<std::vector<APMUserAttribute>> &all) {
                if (!all)
                    texts = {all.error().message};
                else
                    for (const auto &[name, origin, timestamp, value] : *all)
                        texts.push_back(shown({origin, name, timestamp, 0, {{"v", value}}}));
            });
        time.runUntilIdle();
        return texts;
    }

private:
    std::size_t seen_ = 0;
};

} // namespace skyflare
