/// The text that explains the application to its user.
#pragma once

#include <string>

namespace app {

/// The whole help text, with all its line ends.
std::string HelpText();

}  // namespace app
