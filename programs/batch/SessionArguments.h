/// The arguments of a run, and what the session goes by that it keeps.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/Arguments.h"
#include "batch/SearchLog.h"
#include "velmora/Session.h"

namespace batch {

/// Of a session that is begun with these arguments; `frames` are the processing sizes of the cameras.
velmora::SessionSettings SettingsFor(const Arguments& arguments, const std::vector<cv::Size>& frames);
SearchHeader HeaderFor(const Arguments& arguments);

/// Takes from a session what the command line leaves open. Raises InputError, which names both, for what the
/// command line says otherwise although the session's views depend on it. A header is there when this tool
/// has written into the session before.
void TakeOver(const velmora::SessionSettings& settings, const std::optional<SearchHeader>& header,
              Arguments& arguments);

/// Raises InputError where the session's views are of parts of the grid and those of the run are not, or the
/// reverse. Once all arguments are settled.
void CheckParts(const SearchHeader& header, const Arguments& arguments);

/// The names of result files to be checked before a run: those in a session that is still to be made are left
/// out.
std::vector<std::string> OutputsToCheck(const Arguments& arguments);

}  // namespace batch
