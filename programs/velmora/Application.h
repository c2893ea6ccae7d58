/// The application as a whole: command line, sources, window, loop.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace app {

/// Runs the application with the arguments after the program's name and returns its exit status. Ends the
/// process itself, with the same status, when a source is stuck in the capture library.
int RunApplication(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace app
