#pragma once

#include "analytics/AnalyticsHost.h"
#include "platform/base/Clock.h"
#include "platform/base/Console.h"
#include "watch/AnalyticsStatus.h"

#include <cstdio>
#include <filesystem>

namespace skyflare {

/// Shows what the measurement engine has recorded: --analytics-status and --analytics-show. Changes nothing,
/// and works beside a program that is recording.
///
/// Threads: main. Borrows its Services.
class AnalyticsInspection {
public:
    enum class Form { Text, Json };
    struct Services {
        const Clock &clock;
        Console &console; ///< for what is wrong with a file
        RandomSource &random;
        std::FILE *answers;
    };
    AnalyticsInspection(const Services &services, AnalyticsHost::Places places, Form form)
        : services_(services), places_(std::move(places)), form_(form)
    {
    }

    /// The error says what is to be done; what could be said before it was found has been printed.
    Result<> printStatus();
    Result<> printEvents();

private:
    const Services services_;
    const AnalyticsHost::Places places_;
    const Form form_;

    [[nodiscard]] std::filesystem::path database() const;
    void readSettings(AnalyticsStatus &status, APMMonitor &monitor);
    void print(const std::string &text);
};

} // namespace skyflare
