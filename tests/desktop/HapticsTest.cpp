#include "platform/linux/FeedbackdHaptics.h"
#include "tests/desktop/BusFixture.h"

using namespace skyflare;

TEST_CASE_FIXTURE(BusFixture, "impacts are felt; a service that is missing or stuck is not run after")
{
    constexpr const char *feedback = "org.sigxcpu.Feedback";
    const auto haptics = std::make_shared<FeedbackdHaptics>(session, "org.example.App");
    const auto impact = [&](ImpactFeedbackStyle style) {
        haptics->impactOccurred(style);
        settle(session, feedback);
    };
    impact(ImpactFeedbackStyle::Light); // nobody is there
    struct Row {
        FakeBusService::Method answer;
        std::size_t asked; ///< of ten times
    };
    const Row rows[] = {
        {[](auto) { return Reply{.error = "org.example.Broken"}; }, 10},
        {[](auto) { return Reply{g_variant_new("(u)", 1U)}; }, 10},
        {[](auto) { return Reply{.error = "org.freedesktop.DBus.Error.ServiceUnknown"}; }, 1}, // the bus's
        {[](auto) { return Reply{}; }, 4},
    };
    for (const Row &row : rows) {
        const auto running = service(feedback);
        running->on("TriggerFeedback", row.answer);
        settle(session, feedback);
        impact(ImpactFeedbackStyle::Heavy);
        REQUIRE_FALSE(running->calls().empty());
        CHECK(running->calls().back() == "TriggerFeedback ('org.example.App', 'camera-shutter', {}, -1)");
        for (int each = 1; each < 10; ++each)
            impact(each == 1 ? ImpactFeedbackStyle::Light : ImpactFeedbackStyle::Medium);
        CHECK(running->count("TriggerFeedback") == row.asked);
        CHECK((row.asked == 1 || running->calls().back().find("'button-pressed'") != std::string::npos));
    }
    CHECK(console.reports().empty());
}
