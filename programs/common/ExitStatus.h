/// What the programs end with.
#pragma once

namespace common {

enum ExitStatus : int {
  SUCCESS = 0,    ///< what was asked for is done
  NO_RESULT = 1,  ///< it came to its end without one: too few views, or ended by its user or with the video
  UNUSABLE = 2,   ///< wrong usage, an input that cannot be read, an output that cannot be written, no display
  WORTHLESS = 3,  ///< with --strict: there is a result, which is worth nothing

  // Of the interactive application, which has its own.
  APPLICATION_LEFT = 1,  ///< the help was shown, or q was pressed
  APPLICATION_FAILED = -1,
};

}  // namespace common
