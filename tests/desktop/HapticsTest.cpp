#include "platform/linux/FeedbackdHaptics.h"
#include "tests/desktop/BusFixture.h"

#include <vector>

using namespace skyflare;

TEST_CASE_FIXTURE(BusFixture, "impacts are felt; a service that is missing or stuck is not run after")
{
    constexpr const char *feedback = "org.sigxcpu.Feedback";
    const auto haptics = std::make_shared<FeedbackdHaptics>(session, "org.example.App");
    std::unique_ptr<FakeBusService> running;
    const auto startsAnew = [&](const FakeBusService::Method &answer) {
        running.reset();
        running = service(feedback);
        running->on("TriggerFeedback", answer);
        settle(session, feedback);
    };
    const auto impact = [&](ImpactFeedbackStyle style) {
        haptics->impactOccurred(style);
        settle(session, feedback);
    };
    impact(ImpactFeedbackStyle::Light); // nobody is there
    startsAnew([](auto) { return Reply{.error = "org.example.Broken"}; });
    for (const auto style :
         {ImpactFeedbackStyle::Light, ImpactFeedbackStyle::Medium, ImpactFeedbackStyle::Heavy})
        impact(style);
    CHECK(running->calls() ==
          std::vector<std::string>{"TriggerFeedback ('org.example.App', 'button-pressed', {}, -1)",
                                   "TriggerFeedback ('org.example.App', 'button-pressed', {}, -1)",
                                   "TriggerFeedback ('org.example.App', 'camera-shutter', {}, -1)"});
    const auto countOfTen = [&] {
        for (int each = 0; each < 10; ++each)
            impact(ImpactFeedbackStyle::Medium);
        return running->count("TriggerFeedback");
    };
    startsAnew([](auto) { return Reply{g_variant_new("(u)", 1U)}; });
    CHECK(countOfTen() == 10);
    startsAnew([](auto) { return Reply{.error = "org.freedesktop.DBus.Error.ServiceUnknown"}; });
    CHECK(countOfTen() == 1); // as the bus says where there is none
    startsAnew([](auto) { return Reply{}; });
    CHECK(countOfTen() == 4);
    CHECK(console.reports().empty());
}
