/// Any words are a command line of the application, or are refused with an exit status. A line is a word.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "common/Sources.h"
#include "velmora/Options.h"
#include "velmora/Selection.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<std::string> words;
  for (std::string word; std::getline(lines, word);) words.push_back(word);
  std::ostringstream out;
  std::ostringstream err;
  const app::CommandLine parsed = app::ReadCommandLine(words, out, err);
  if (parsed.exitStatus) return 0;
  const common::SourcePlan plan = common::PlanSources(parsed.settings);
  if (plan.captures.size() > 2) std::abort();
  app::SelectCameras(parsed.settings, plan.stereo, err);
  return 0;
}
