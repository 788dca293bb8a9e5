#pragma once

#include "analytics/store/TableInfo.h"

namespace skyflare {

struct MeasurementTable {
    std::string_view name;
    TableInfo info;
};

/// So that what is asked at every bundle and at every upload does not look at every row.
struct MeasurementIndex {
    std::string_view name;
    std::string_view sql; ///< makes it, if it is not there
};

std::span<const MeasurementIndex> measurementIndexes();

/// Every table of the measurement database. Threads: any; constants.
std::span<const MeasurementTable> measurementTables();

} // namespace skyflare
