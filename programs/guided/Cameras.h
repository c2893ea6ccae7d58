/// Which cameras the machine has, for those whose camera does not open.
#pragma once

#include <string>

namespace guided {

/// A line about the devices videoN in the folder, when camera `wanted` could not be opened: that it may not
/// be used, which others there are, or that there is none.
std::string CamerasText(const std::string& folder, int wanted);

}  // namespace guided
