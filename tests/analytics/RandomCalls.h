#pragma once

#include "analytics/APMAnalytics.h"
#include "tests/fakes/VirtualTime.h"

#include <initializer_list>
#include <limits>
#include <random>

namespace skyflare {

class RandomChoice {
public:
    explicit RandomChoice(std::uint64_t seed) : random_(seed) {}

    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool isOne(std::size_t in) { return below(in) == 0; }
    template <typename T> T oneOf(std::initializer_list<T> all) { return all.begin()[below(all.size())]; }

private:
    std::mt19937_64 random_;
};

/// Calls of every kind, good and bad, but those that switch collection and those that wipe.
class RandomCaller : public RandomChoice {
public:
    using RandomChoice::RandomChoice;

    std::uint64_t logged = 0; ///< events

    void callOnce(APMAnalytics &analytics)
    {
        const std::size_t kind = below(20);
        if (kind == 0)
            analytics.applicationWillResignActive();
        else if (kind == 1)
            analytics.applicationDidBecomeActive();
        else if (kind == 2)
            analytics.setScreenName(name(), name());
        else if (kind == 3)
            analytics.viewDidAppear(name().value_or(""), below(3));
        else if (kind == 4)
            analytics.setDefaultEventParameters(isOne(2) ? std::nullopt : std::optional(parameters()));
        else if (kind < 7)
            changeUser(analytics);
        else
            logEvent(analytics);
    }

private:
    std::optional<std::string> name()
    {
        if (!isOne(3))
            return std::string(1, char('a' + below(26)));
        if (isOne(8))
            return {};
        return oneOf<std::string>({"", "_x", "first_open", "screen_view", "extend_session", "mipeme_a", "a b",
                                   "\xff\xfe", "_sid", std::string(41, 'a')});
    }
    PropertyList value(int depth = 0)
    {
        if (depth > 1 || !isOne(4))
            return oneOf<PropertyList>({std::int64_t{7}, 0.5, std::numeric_limits<double>::quiet_NaN(),
                                        Bytes(3), std::string("\xc3("), std::string(600, 'v')});
        const auto inner = parameters(depth + 1);
        return isOne(2) ? PropertyList(inner) : PropertyList(PropertyList::Array(below(4), inner));
    }
    PropertyList::Dictionary parameters(int depth = 0)
    {
        PropertyList::Dictionary result;
        for (std::size_t count = below(6); count > 0; --count)
            result.insert_or_assign(isOne(6) ? "items" : name().value_or("p"), value(depth));
        return result;
    }
    void logEvent(APMAnalytics &analytics)
    {
        ++logged;
        if (isOne(2))
            return analytics.logEventWithName(isOne(9) ? "purchase" : name(), parameters());
        APMAnalytics::EventOptions options;
        options.isPublicEvent = isOne(2) ? IsPublicEvent::Yes : IsPublicEvent::No;
        options.ignoreEnabled = isOne(2);
        if (isOne(3)) // most of them stale
            options.timestamp = VirtualTime::defaultSecondsSince1970 + 1e6 * (double(below(13)) - 6);
        analytics.logEventWithOrigin(oneOf<std::string>({"app", "auto", "b+gtm", "", std::string(33, 'o')}),
                                     name(), parameters(), options);
    }
    void changeUser(APMAnalytics &analytics)
    {
        const auto given = isOne(3) ? std::nullopt : std::optional(value(2));
        if (isOne(5))
            return analytics.setUserID(given);
        if (isOne(3))
            return analytics.setInternalUserProperty(given, name(), isOne(2) ? "auto" : "no origin");
        analytics.setUserPropertyString(given, isOne(9) ? "allow_personalized_ads" : name());
    }
};

} // namespace skyflare
