/// Reads the command line: words to a table of option values, and the table to settings.
#include "velmora/Options.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "common/SourceSettings.h"
#include "velmora/HelpText.h"

namespace app {

namespace {

/// Every option that takes a value. "--help" takes none and is known only as the first argument.
constexpr std::array<const char*, 18> KNOWN_OPTIONS = {
    "--width",  "--height", "--fps",         "--hdist",      "--model",        "--split",
    "--output", "--video",  "--video_right", "--webcam",     "--webcam_right", "--gstreamer",
    "--rtmp",   "--codec",  "--port",        "--calib_left", "--calib_right",  "--select"};

bool IsKnown(const std::string& argument) {
  return std::find(KNOWN_OPTIONS.begin(), KNOWN_OPTIONS.end(), argument) != KNOWN_OPTIONS.end();
}

/// The leading whole number of the text, or the nearest one that an int holds; 0 when it does not begin with
/// one.
int ToInt(const std::string& text) {
  const long number = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(
      std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::optional<std::string> TextOf(const OptionValues& values, const char* option) {
  const auto found = values.find(option);
  return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
}

std::optional<int> IntOf(const OptionValues& values, const char* option) {
  const auto text = TextOf(values, option);
  return text ? std::optional<int>(ToInt(*text)) : std::nullopt;
}

/// The lens model; an unknown word leaves the default, whatever the message says.
int ModelOf(const OptionValues& values, std::ostream& err) {
  const std::string word =
      TextOf(values, "--model").value_or(ModelChoice::NameOf(Calibrator::MODEL_RATIONAL));
  const int model = ModelChoice::NumberOf(word);
  if (model != 0) return model;
  err << "'" << word << "' is an unknown model. Set to 'classic' by default." << std::endl;
  return Calibrator::MODEL_RATIONAL;
}

common::Split SplitOf(const OptionValues& values, std::ostream& err) {
  const auto word = TextOf(values, "--split");
  if (!word) return common::Split::None;
  if (*word == "horizontal") return common::Split::Horizontal;
  if (*word != "vertical") {
    err << "'" << *word << "' is an unknown value for the '--split' option. Set to 'vertical' by default."
        << std::endl;
  }
  return common::Split::Vertical;
}

}  // namespace

std::optional<OptionValues> PairOptions(const std::vector<std::string>& arguments, std::ostream& err) {
  OptionValues values;
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const std::string& option = arguments[i];
    if (!IsKnown(option)) {
      common::PrintError(err,
                         "option '" + option + "' doesn't exist. Please use '--help' for more information.");
      return std::nullopt;
    }
    if (i + 1 == arguments.size()) {
      common::PrintError(err, "missing value after '" + option + "'.");
      return std::nullopt;
    }
    values[option] = arguments[i + 1];
  }
  return values;
}

Settings ReadSettings(const OptionValues& values, std::ostream& err) {
  Settings settings;
  settings.width = IntOf(values, "--width").value_or(settings.width);
  settings.height = IntOf(values, "--height").value_or(settings.height);
  settings.fps = IntOf(values, "--fps").value_or(settings.fps);
  if (const auto hdist = TextOf(values, "--hdist")) {
    settings.hdist = std::strtof(hdist->c_str(), nullptr) / 10.0F;
  }
  settings.model = ModelOf(values, err);
  settings.split = SplitOf(values, err);
  settings.select = TextOf(values, "--select");
  settings.output = TextOf(values, "--output").value_or(settings.output);
  settings.calibLeft = TextOf(values, "--calib_left");
  settings.calibRight = TextOf(values, "--calib_right");
  settings.gstreamerHost = TextOf(values, "--gstreamer");
  settings.codec = TextOf(values, "--codec").value_or(settings.codec);
  settings.port = TextOf(values, "--port").value_or(settings.port);
  settings.rtmp = TextOf(values, "--rtmp");
  settings.video = TextOf(values, "--video");
  settings.videoRight = TextOf(values, "--video_right");
  settings.webcam = IntOf(values, "--webcam");
  settings.webcamRight = IntOf(values, "--webcam_right");
  return settings;
}

CommandLine ReadCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  if (arguments.empty() || arguments.front() == "--help") {
    out << HelpText() << std::flush;
    return {common::APPLICATION_LEFT, {}};
  }
  const auto values = PairOptions(arguments, err);
  if (!values) return {common::APPLICATION_FAILED, {}};
  return {std::nullopt, ReadSettings(*values, err)};
}

}  // namespace app
