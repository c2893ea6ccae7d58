/// Reads the command line: words to a table of option values, and the table to settings.
#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "velmora/Settings.h"

namespace app {

/// Option names, with their dashes, and the value text of each.
using OptionValues = std::map<std::string, std::string>;

/// Either an exit status, with which the application ends at once, or the settings to go on with.
struct CommandLine {
  std::optional<int> exitStatus;
  Settings settings;
};

/// Pairs every option with the argument after it, whatever that looks like; a repeated option keeps its last
/// value. Nothing, with a line on `err`, when an argument is no option or an option lacks its value.
std::optional<OptionValues> PairOptions(const std::vector<std::string>& arguments, std::ostream& err);

/// Converts the values. Unknown words for the model and the split are reported on `err` and replaced.
Settings ReadSettings(const OptionValues& values, std::ostream& err);

/// Reads the arguments after the program's name: the help text on `out` for none or a leading "--help",
/// otherwise settings, or what is wrong with the arguments on `err`.
CommandLine ReadCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace app
