/// Which session a guided calibration writes.
#include "guided/SessionChoice.h"

#include <algorithm>
#include <filesystem>

#include "common/LensModels.h"

namespace guided {

namespace {

using velmora::Session;
using velmora::SessionSettings;

std::string SheetName(const Arguments& arguments) {
  if (!arguments.sheetFile.empty()) return arguments.sheetFile;
  switch (arguments.sheet) {
    case Calibrator::SHEET_FLAT:
      return "flat";
    case Calibrator::SHEET_BENT:
      return "bent";
    case Calibrator::SHEET_FREE:
      return "free";
    default:
      return "auto";
  }
}

std::string ViewsText(size_t count) {
  return std::to_string(count) + (count == 1 ? " view" : " views");
}

std::unique_ptr<Session> GoOn(const std::string& folder, const SessionSettings& settings, std::ostream& out) {
  auto session = Session::Open(folder, settings);
  const auto snapshots = session->Snapshots();
  const auto used = std::count_if(snapshots.begin(), snapshots.end(),
                                  [](const auto& snapshot) { return snapshot.IsUsed(); });
  out << "Going on with the session in '" << folder << "': " << ViewsText(static_cast<size_t>(used)) << ".\n";
  for (const std::string& warning : session->Warnings()) out << "Warning: " << warning << "\n";
  for (const auto& snapshot : snapshots) {
    if (!snapshot.fault.empty()) out << "Warning: view " << snapshot.number << ": " << snapshot.fault << "\n";
  }
  return session;
}

}  // namespace

SessionSettings SettingsOf(const Arguments& arguments, const std::string& source, const cv::Size& frame,
                           size_t cameras) {
  SessionSettings settings;
  settings.grid = GRID;
  settings.unit = static_cast<double>(UnitOf(arguments));
  settings.imageSizes.assign(cameras, frame);
  settings.lensModel = common::NameOfModel(arguments.model);
  if (arguments.model == common::MODEL_AUTO) settings.lensModel = "auto";
  if (arguments.model == common::MODEL_FISHEYE) settings.lensModel = "fisheye";
  settings.finder = arguments.finder == Calibrator::FINDER_ROBUST ? "robust" : "standard";
  settings.solver = arguments.solver == Calibrator::SOLVER_SPARSE ? "sparse" : "opencv";
  settings.discRadius = common::DiscRadius(arguments, UnitOf(arguments));
  settings.sheetShape = SheetName(arguments);
  settings.fineCentres = arguments.fineCentres;
  settings.source = source;
  settings.keepsImages = arguments.keepImages;
  return settings;
}

std::unique_ptr<Session> ChooseSession(const Arguments& arguments, const SessionSettings& settings,
                                       std::ostream& out) {
  namespace fs = std::filesystem;
  const bool named = !arguments.session.empty();
  const std::string wanted = named ? arguments.session : Session::FolderOf(arguments.output);
  if (named && fs::exists(wanted)) return GoOn(wanted, settings, out);
  const std::string folder = named ? wanted : Session::FreeFolder(arguments.output);
  auto session = Session::Create(folder, settings);
  if (folder == wanted) {
    out << "Every view is kept in '" << folder << "'.\n";
  } else {
    out << "Every view is kept in '" << folder << "': there is a '" << wanted
        << "' already, which --session would go on with.\n";
  }
  return session;
}

}  // namespace guided
