#include "bench/Table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace skyflare::bench {

namespace {

std::string number(double value, const char *unit)
{
    char text[48];
    const int decimals = value >= 100 ? 0 : value >= 10 ? 1 : 2;
    std::snprintf(text, sizeof text, "%.*f %s", decimals, value, unit);
    return text;
}

/// The value below which `share` of all lie; the nearest rank.
double quantile(std::vector<double> values, double share)
{
    const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
    const auto index = static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

} // namespace

Table::Table(std::string title) : title_(std::move(title)) {}

void Table::add(Row row)
{
    rows_.push_back(std::move(row));
}

void Table::print() const
{
    std::printf("\n### %s\n\n", title_.c_str());
    std::printf("| What | Measured | Beside it | Ratio | Reach | |\n|---|---|---|---|---|---|\n");
    for (const Row &row : rows_)
        std::printf("| %s | %s | %s | %s | %s | %s |\n", row.what.c_str(), row.measured.c_str(),
                    row.yardstick.c_str(), row.ratio.c_str(), row.reach.c_str(),
                    row.isReached ? "reached" : "**missed**");
    std::fflush(stdout);
}

std::string duration(double seconds)
{
    constexpr std::array<std::pair<double, const char *>, 3> units{{{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}}};
    for (const auto &[size, unit] : units) {
        if (seconds >= size)
            return number(seconds / size, unit);
    }
    return number(seconds * 1e9, "ns");
}

std::string ratio(double value)
{
    return number(value, "x");
}

std::string percent(double share)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f %%", share * 100);
    return text;
}

double median(std::vector<double> values)
{
    return quantile(std::move(values), 0.5);
}

double percentile95(std::vector<double> values)
{
    return quantile(std::move(values), 0.95);
}

double percentile99(std::vector<double> values)
{
    return quantile(std::move(values), 0.99);
}

} // namespace skyflare::bench
