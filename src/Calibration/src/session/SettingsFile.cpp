/// The text of session.json: what a session goes by.
#include "session/SettingsFile.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "foundation/Version.h"
#include "session/JsonFields.h"

namespace velmora {

namespace {

const char* const FINE = "fine";
const char* const PLAIN = "plain";

std::string TextOf(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

std::string TextOf(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(9);
  text << number;
  return text.str();
}

/// Units that were floats once are the same as those that never were.
bool IsSameUnit(double a, double b) {
  constexpr double TOLERANCE = 1e-6;
  return std::abs(a - b) <= TOLERANCE * std::max(a, b);
}

/// What the session is, when it is of another format; else empty.
std::string OtherFormat(const nlohmann::json& document) {
  const int format = FieldOf<int>(document, "format");
  if (format == SESSION_FORMAT) return "";
  return " is of format " + std::to_string(format) + ", written by version " +
         FieldOf<std::string>(document, "velmora") + "; this is version " + VERSION +
         ", which reads format " + std::to_string(SESSION_FORMAT) + ".";
}

}  // namespace

std::string FaultOf(const SessionSettings& settings) {
  if (settings.grid.width < 1 || settings.grid.height < 1) {
    return "A grid of " + TextOf(settings.grid) + " circles is none.";
  }
  if (!std::isfinite(settings.unit) || settings.unit <= 0.0) {
    return "The unit must be positive, not " + TextOf(settings.unit) + " m.";
  }
  if (!std::isfinite(settings.discRadius) || settings.discRadius < 0.0) {
    return "The radius of a disc cannot be " + TextOf(settings.discRadius) + " m.";
  }
  if (settings.imageSizes.empty()) return "A session needs at least one camera.";
  for (const cv::Size& size : settings.imageSizes) {
    if (size.width < 1 || size.height < 1) return "There is no image of " + TextOf(size) + " pixels.";
  }
  return "";
}

nlohmann::json JsonOf(const SessionSettings& settings) {
  nlohmann::json cameras = nlohmann::json::array();
  for (const cv::Size& size : settings.imageSizes) {
    cameras.push_back({{"imageSize", {{"width", size.width}, {"height", size.height}}}});
  }
  return {{"grid", {{"columns", settings.grid.width}, {"rows", settings.grid.height}}},
          {"unit", settings.unit},
          {"cameras", cameras},
          {"lensModel", settings.lensModel},
          {"finder", settings.finder},
          {"solver", settings.solver},
          {"discRadius", settings.discRadius},
          {"sheetShape", settings.sheetShape},
          {"centres", settings.fineCentres ? FINE : PLAIN},
          {"source", settings.source},
          {"images", settings.keepsImages}};
}

SessionSettings SettingsIn(const nlohmann::json& document) {
  SessionSettings settings;
  const nlohmann::json& grid = FieldOf(document, "grid");
  settings.grid = {FieldOf<int>(grid, "columns"), FieldOf<int>(grid, "rows")};
  settings.unit = FieldOf<double>(document, "unit");
  for (const nlohmann::json& camera : FieldOf(document, "cameras")) {
    const nlohmann::json& size = FieldOf(camera, "imageSize");
    settings.imageSizes.emplace_back(FieldOf<int>(size, "width"), FieldOf<int>(size, "height"));
  }
  settings.lensModel = FieldOf<std::string>(document, "lensModel");
  settings.finder = FieldOf<std::string>(document, "finder");
  settings.solver = FieldOf<std::string>(document, "solver");
  settings.discRadius = FieldOf<double>(document, "discRadius");
  settings.sheetShape = FieldOf<std::string>(document, "sheetShape");
  settings.fineCentres = FieldOf<std::string>(document, "centres") == FINE;
  settings.source = FieldOf<std::string>(document, "source");
  settings.keepsImages = FieldOf<bool>(document, "images");
  return settings;
}

std::string TextOf(const SessionSettings& settings, const std::string& created) {
  nlohmann::json document = JsonOf(settings);
  document["format"] = SESSION_FORMAT;
  document["velmora"] = VERSION;
  document["created"] = created;
  return JsonText(document);
}

SessionSettings SettingsOf(const std::string& text, const std::string& session) {
  SessionSettings settings;
  std::string otherFormat;
  std::string damage;
  try {
    const nlohmann::json document = ParsedJson(text);
    otherFormat = OtherFormat(document);
    if (otherFormat.empty()) {
      settings = SettingsIn(document);
      const std::string fault = FaultOf(settings);
      if (!fault.empty()) damage = "makes no sense. " + fault;
    }
  } catch (const std::runtime_error& error) {
    damage = std::string(error.what()) + ".";
  }
  if (!otherFormat.empty()) throw std::runtime_error(session + otherFormat);
  if (!damage.empty()) throw std::runtime_error(session + " is damaged: its session.json " + damage);
  return settings;
}

void RequireSame(const SessionSettings& settings, const SessionSettings& expected,
                 const std::string& session) {
  std::string differences;
  const auto compare = [&](const std::string& what, const std::string& there, const std::string& asked) {
    differences += (differences.empty() ? "" : "; ") + what + " " + there + ", not " + asked;
  };
  if (settings.grid != expected.grid) compare("a grid of", TextOf(settings.grid), TextOf(expected.grid));
  if (!IsSameUnit(settings.unit, expected.unit)) {
    compare("a unit of", TextOf(settings.unit) + " m", TextOf(expected.unit) + " m");
  }
  const size_t cameras = settings.imageSizes.size();
  if (cameras != expected.imageSizes.size()) {
    compare("cameras:", std::to_string(cameras), std::to_string(expected.imageSizes.size()));
  }
  for (size_t i = 0; i < std::min(cameras, expected.imageSizes.size()); ++i) {
    if (settings.imageSizes[i] == expected.imageSizes[i]) continue;
    compare("images of camera " + std::to_string(i) + " of", TextOf(settings.imageSizes[i]),
            TextOf(expected.imageSizes[i]));
  }
  if (!differences.empty()) throw std::runtime_error(session + " has " + differences + ".");
}

}  // namespace velmora
