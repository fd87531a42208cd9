#pragma once

#include <cstdint>

#include "catalogue/database.h"

namespace velamo {

/// The layout of the catalogue's file that this program knows.
inline constexpr std::int64_t catalogueLayout = 2;

/// The version of the layout; 0 for an empty file. Throws CatalogueError where the database is another program's, or of
/// a newer layout.
[[nodiscard]] std::int64_t checkedLayout(const Database& database);

/// Leads the database from its layout to the one of this program, one step after the other, or not at all. What a newer
/// layout knows besides is not there for designs from before: their reader is 0, so that they are read again, and what
/// is away keeps what was known of it.
void bringLayoutUpToDate(const Database& database);

}  // namespace velamo
