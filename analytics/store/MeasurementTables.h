#pragma once

#include "analytics/store/TableInfo.h"

namespace skyflare {

struct MeasurementTable {
    std::string_view name;
    TableInfo info;
};

/// Every table of the measurement database. Threads: any; constants.
std::span<const MeasurementTable> measurementTables();

} // namespace skyflare
