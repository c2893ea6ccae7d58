/// The result file of a calibration.
#include "common/ResultFile.h"

#include <filesystem>
#include <fstream>

#include "JSON.h"
#include "common/InputError.h"
#include "common/VerdictFiles.h"

namespace common {

namespace {

/// The text if the file holds it, else an empty one.
std::string ReadBack(const std::string& text, const std::string& path) {
  try {
    JSON written;
    JSON expected;
    expected.fromJson(text);
    return written.load(path) && written.toJson() == expected.toJson() ? text : "";
  } catch (const std::exception&) {
    return "";
  }
}

}  // namespace

void CopyResult(Calibrator& calibrator, Report& report) {
  report.rms = static_cast<double>(calibrator.GetRMS());
  report.K = calibrator.GetK();
  report.D = calibrator.GetDistCoefs();
  report.stdDevs = calibrator.GetStdDevIntrinsics();
  const FisheyeResult fisheye = calibrator.GetFisheye();
  report.fisheye = !fisheye.IsEmpty();
  if (report.fisheye) {
    report.D = fisheye.coefficients;
    report.stdDevs = fisheye.stdDevs;
  }
  report.viewErrors = calibrator.GetPerViewErrors();
}

std::string SaveResultFile(Calibrator& calibrator, const std::string& name) {
  return ReadBack(calibrator.SaveResult(true, name), name + ".json");
}

std::string SaveFisheyeFile(Calibrator& calibrator, const std::string& name) {
  return ReadBack(calibrator.SaveFisheye(true, name), name + "_fisheye.json");
}

void CheckOutput(const std::string& name) {
  CheckWritable(name + ".json");
}

void CheckOutputWithVerdict(const std::string& name) {
  CheckOutput(name);
  const VerdictFiles files(name);
  CheckWritable(files.text);
  CheckWritable(files.picture);
}

void CheckWritable(const std::string& path) {
  namespace fs = std::filesystem;
  const fs::path file = path;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  std::error_code error;
  if (!fs::is_directory(folder, error)) throw InputError("folder '" + folder.string() + "' does not exist");
  if (fs::is_directory(file, error)) throw InputError("'" + file.string() + "' is a folder");
  // Rights alone do not tell: a read-only or virtual file system refuses even those who have them.
  const bool exists = fs::exists(file, error);
  const bool opens = std::ofstream(file, std::ios::app).is_open();
  if (!exists) fs::remove(file, error);
  if (!opens) throw InputError("'" + file.string() + "' cannot be written");
}

}  // namespace common
