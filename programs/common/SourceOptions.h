/// The options of the tools that say where pictures come from, and in which frames to work. The interactive
/// application has a parser of its own.
#pragma once

#include "common/SourceSettings.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace common {

/// A live source or a recording, of which exactly one has to be given.
void AddSourceOptions(CLI::App& app, SourceSettings& settings);

/// The other camera or recording of a pair, and --split for a source that shows both. They go with the
/// options of AddSourceOptions, which come first.
void AddRightOptions(CLI::App& app, SourceSettings& settings);

/// Size and rate of its frames. The size is that of what arrives unless both numbers are given.
void AddFrameOptions(CLI::App& app, SourceSettings& settings);

/// --split, for pictures that show two cameras.
CLI::Option* AddSplitOption(CLI::App& app, Split& split);

}  // namespace common
