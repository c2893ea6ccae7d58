/// The tables of the accuracy report.
#pragma once

#include <cmath>
#include <vector>

#include "Statistics.h"
#include "Table.h"

namespace accuracy {

/// How much work a report may be.
struct Effort {
  double share = 1.0;  ///< of the trials of a whole report

  int Of(int trials) const { return std::max(5, static_cast<int>(std::lround(share * trials))); }
};

// Projected points with noise.
Table ViewsTable(const Effort& effort);
Table NoiseTable(const Effort& effort);
Table FieldsOfViewTable(const Effort& effort);
Table ModelsTable(const Effort& effort);
// How true standard deviations are.
Table DeviationsTable(const Effort& effort);
Table MisleadingTable(const Effort& effort);
/// What verdicts on data of all kinds are worth.
Table VerdictsTable(const Effort& effort);
Table PairsTable(const Effort& effort);
Table ImagesTable(const Effort& effort);
/// What views bring of which the border cuts off a part.
Table PartsTable(const Effort& effort);
/// Photographs that are not part of the project; without rows where they are not at hand.
Table RealTable(const Effort& effort);
// Sheets that are bent or badly printed: made ones, and those of the photographs.
Table SheetsTable(const Effort& effort);
Table HalvesTable(const Effort& effort);

struct NamedTable {
  const char* name;
  Table (*make)(const Effort& effort);
};
const std::vector<NamedTable>& AllTables();

/// The row of a case, as all tables of one camera have it.
Row RowOf(const Case& what, const std::vector<Trial>& trials);
/// How many trials failed, as text: a condition, since it is the same (none) in most tables.
std::string FailuresOf(const std::vector<Trial>& trials);
/// What those that did not came to.
std::vector<Number> NumbersOf(const std::vector<Trial>& trials);

}  // namespace accuracy
