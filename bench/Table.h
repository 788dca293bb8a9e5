#pragma once

#include <string>
#include <vector>

namespace skyflare::bench {

/// The results of a run, printed as one table: what was measured, beside its yardstick of the same run.
///
/// Threads: one.
class Table {
public:
    struct Row {
        std::string what;
        std::string measured;       ///< with its unit: "0.42 ms"
        std::string yardstick = {}; ///< what it is held against: "read once: 0.40 ms"; may be empty
        std::string ratio = {};     ///< "1.05 x"; may be empty
        std::string reach;          ///< what was aimed at: "<= 1.3 x"
        bool isReached = false;
    };

    explicit Table(std::string title);

    void add(Row row);
    /// As GitHub-flavoured Markdown on standard output, so that it can go into the README as it stands.
    void print() const;

private:
    std::string title_;
    std::vector<Row> rows_;
};

/// "1.23 ms", "45 us", "3.1 s": three significant digits, the unit that suits.
std::string duration(double seconds);
/// "1.05 x".
std::string ratio(double value);
/// "1.06 %".
std::string percent(double share);

/// The middle of some measurements, and the one that 95 or 99 of 100 do not exceed. Empty input is an error
/// of the caller.
double median(std::vector<double> values);
double percentile95(std::vector<double> values);
double percentile99(std::vector<double> values);

} // namespace skyflare::bench
