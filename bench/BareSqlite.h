#pragma once

#include <cstddef>
#include <string>

namespace skyflare::bench {

/// The yardstick of what stores events: as many rows as they have, by the shortest way that SQLite has and
/// without anything around them, in a new database on the disk that is measured.
/// @return rows a second; ends the program where one is not stored
double bareRowsASecond(int count, int rowsATransaction, std::size_t bytesARow);

/// "101000 rows/s".
std::string rows(double aSecond);

} // namespace skyflare::bench
