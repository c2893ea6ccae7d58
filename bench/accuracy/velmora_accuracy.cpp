/// velmora-accuracy: calibrates many cameras whose truth is known and reports how far off they came out.
#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <set>

#include "Calibration.h"
#include "Tables.h"

namespace {

constexpr int USAGE_ERROR = 2;

struct Arguments {
  bool quick = false;
  std::string folder;
  std::set<std::string> only;
};

std::set<std::string> Names() {
  std::set<std::string> names;
  for (const accuracy::NamedTable& table : accuracy::AllTables()) names.insert(table.name);
  return names;
}

void Report(const Arguments& arguments) {
  accuracy::Effort effort;
  if (arguments.quick) effort.share = 0.1;
  const auto start = std::chrono::steady_clock::now();
  for (const accuracy::NamedTable& named : accuracy::AllTables()) {
    if (!arguments.only.empty() && arguments.only.count(named.name) == 0) continue;
    const accuracy::Table table = named.make(effort);
    accuracy::PrintMarkdown(table, std::cout);
    if (!arguments.folder.empty()) accuracy::WriteCsv(table, arguments.folder);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::cerr << named.name << ": done after " << std::lround(elapsed.count()) << " s" << std::endl;
  }
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(
      "Calibrates many cameras whose truth is known, and prints how far off they came out, as Markdown.",
      "velmora-accuracy");
  app.add_flag("--quick", arguments.quick, "a tenth of the trials");
  app.add_option("--csv", arguments.folder, "write each table to a CSV file in this folder too")
      ->check(CLI::ExistingDirectory);
  app.add_option("--only", arguments.only, "only these tables")->check(CLI::IsMember(Names()));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : USAGE_ERROR;
  }
  // Faults are counted, not told one by one; times are those of one core.
  Calibration::SetLogLevel(0);
  cv::setNumThreads(1);
  try {
    Report(arguments);
    return 0;
  } catch (const std::exception& fault) {
    std::cerr << "ERROR: " << fault.what() << ".\n";
    return USAGE_ERROR;
  }
}
