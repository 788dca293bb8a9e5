#include "analytics/validation/APMDataTypeValidator.h"
#include "bench/Machine.h"
#include "bench/Table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

using namespace skyflare;
using namespace skyflare::bench;

namespace {

/// What is measured is accepted, so nothing may be logged.
class NoMonitor final : public APMMonitor {
public:
    [[nodiscard]] bool isLogging(Level) const override { return true; }
    void log(Level, int, std::string_view message) override
    {
        std::fprintf(stderr, "refused: %.*s\n", static_cast<int>(message.size()), message.data());
        std::exit(EXIT_FAILURE);
    }
};

/// Seconds for one of many calls in a row.
template <typename Call> double secondsEach(const Call &call)
{
    constexpr int calls = 20'000;
    const double start = now();
    for (int i = 0; i < calls; ++i)
        call();
    return (now() - start) / calls;
}

std::string nanoseconds(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
    return text;
}

/// The least of many rounds, in which what is measured and its yardstick take turns.
template <typename Call> void measure(Table &table, const std::string &what, const std::string &text,
                                      double reachSeconds, const Call &call)
{
    double least = std::numeric_limits<double>::infinity();
    double leastYardstick = least;
    for (int round = 0; round < 200; ++round) {
        leastYardstick = std::min(leastYardstick, secondsEach([&] {
                                      const char *bytes = text.c_str();
                                      benchmark::DoNotOptimize(bytes); // or the length is known beforehand
                                      benchmark::DoNotOptimize(std::strlen(bytes));
                                  }));
        least = std::min(least, secondsEach(call));
    }
    table.add({what, nanoseconds(least), "strlen: " + nanoseconds(leastYardstick),
               ratio(least / leastYardstick), "<= " + nanoseconds(reachSeconds), least <= reachSeconds});
}

} // namespace

int main()
{
    NoMonitor monitor;
    const APMDataTypeValidator validator(monitor, {});
    Table table("Validating one ASCII name, one ASCII value");
    const auto eventName = [&](const std::string &name) {
        measure(table, "event name of " + std::to_string(name.size()), name, 100e-9, [&] {
            std::string_view given = name;
            benchmark::DoNotOptimize(given);
            benchmark::DoNotOptimize(validator.isValidPublicEventName(given).failureCode);
        });
    };
    eventName("catch_photo");
    eventName("attempt_to_save_photo_in_the_gallery_now");
    const std::string parameterName = "light_power_of_the_brightest_frame_so_fa";
    measure(table, "parameter name of 40", parameterName, 100e-9, [&] {
        std::string_view given = parameterName;
        benchmark::DoNotOptimize(given);
        benchmark::DoNotOptimize(validator.isValidPublicEventParameterName(given).failureCode);
    });
    for (const std::size_t length : {std::size_t{30}, std::size_t{500}}) {
        const APMValue value(std::string(length, 'v'));
        measure(table, "value of " + std::to_string(length), *value.text(), 200e-9, [&] {
            const APMValue *given = &value;
            benchmark::DoNotOptimize(given);
            benchmark::DoNotOptimize(validator.isValidPublicEventParameterValue(*given).failureCode);
        });
    }
    table.print();
    return EXIT_SUCCESS;
}
