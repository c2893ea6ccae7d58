/// The headless calibration of a rig of cameras.
#include "batch/RigBatch.h"

#include <iostream>

#include "batch/CameraViews.h"
#include "batch/KeptSession.h"
#include "batch/RigCameras.h"
#include "batch/RigFile.h"
#include "batch/RigReport.h"
#include "batch/RigViews.h"
#include "batch/SessionArguments.h"
#include "common/EngineOptions.h"
#include "common/ExitStatus.h"
#include "common/LensModels.h"
#include "common/OutputFiles.h"
#include "common/Report.h"
#include "common/ResultFile.h"
#include "common/RigNames.h"
#include "common/VerdictFiles.h"
#include "common/VerdictReport.h"

namespace batch {

namespace {

velmora::RigOptions OptionsFrom(const Arguments& arguments, const std::vector<CameraFile>& intrinsics) {
  velmora::RigOptions options;
  options.model = arguments.model;
  options.fisheye = arguments.model == common::MODEL_FISHEYE;
  options.discRadius = common::DiscRadius(arguments, UnitOf(arguments));
  options.sheetShape = arguments.sheet;
  options.sheetPoints = arguments.sheetPoints;
  for (const CameraFile& file : intrinsics) options.intrinsics.push_back({file.K, file.D, file.fisheye});
  return options;
}

/// Prints what there is, when that is too little: no grid at all, or too few for a camera's intrinsics.
common::ExitStatus CheckCounts(RigViews& views, bool intrinsicsGiven) {
  const auto report = [&](size_t found, const std::string& whose) {
    std::cout << common::ViewsTable(views.Names().AllImages(), views.Rejected());
    return ReportTooFewViews("image", found, views.OtherGridText(), whose);
  };
  if (views.Count() == 0) return report(0, "");
  for (size_t i = 0; i < views.Names().cameras.size() && !intrinsicsGiven; ++i) {
    const size_t found = views.CountOf(i);
    if (found < ENOUGH_VIEWS) return report(found, " of camera '" + views.Names().cameras[i] + "'");
  }
  return common::SUCCESS;
}

/// Raises the engine's exception as a text for users, with names.
velmora::RigResult Compute(const RigViews& views, const velmora::RigOptions& options) {
  try {
    return velmora::CalibrateRig(views.Records(), options);
  } catch (cv::Exception& error) {
    error.err = common::WithCameraNames(error.err, views.Names().cameras);
    throw;
  }
}

/// Intrinsics that are given have no images: nothing was found out about them.
void CheckOutputs(const Arguments& arguments, const std::string& output) {
  common::CheckWritable(output + ".json");
  for (size_t i = 0; i < arguments.rig.size() && arguments.intrinsics.empty(); ++i) {
    common::CheckWritable(common::VerdictFiles(output).PictureOf(std::to_string(i)));
  }
}

/// The file that could not be written, or an empty text.
std::string SaveAll(const std::string& json, const velmora::RigVerdict& verdict, const RigViews& views,
                    const std::string& output, common::OutputFiles& files) {
  std::string file = output + ".json";
  files.Announce(file);
  if (!SaveRig(json, file)) return file;
  files.Written(file);
  const std::vector<cv::Size> frames = views.Frames();
  for (size_t i = 0; i < verdict.cameras.size(); ++i) {
    std::string unwritten =
        common::SavePictureOf(i, verdict.cameras[i], frames[i], views.CirclesOf(i), output, files);
    if (!unwritten.empty()) return unwritten;
  }
  return "";
}

}  // namespace

common::ExitStatus RunRig(const Arguments& arguments, const RunContext& context) {
  for (const std::string& output : OutputsToCheck(arguments)) CheckOutputs(arguments, output + "_rig");
  const std::vector<CameraFile> intrinsics = RigCameraFiles(arguments);
  RigViews views(arguments, RigCameraNames(arguments.rig));
  views.Look(context);
  CheckSizes(intrinsics, views.Names().cameras, views.Frames());
  const common::ExitStatus enough = CheckCounts(views, !intrinsics.empty());
  if (enough != common::SUCCESS) return enough;
  views.Select();
  std::cerr << "Computing the rig ...\n";
  const velmora::RigResult result = Compute(views, OptionsFrom(arguments, intrinsics));
  const std::string model = intrinsics.empty() ? arguments.modelName : "";
  std::cout << RigTable(result, views.Names(), views.Rejected(), model) << "\n"
            << common::VerdictTable(result, views.Names());
  context.EndIfAsked();
  common::OutputFiles files;
  const std::string json = RigJson(result, views.Names(), model);
  for (const std::string& output : arguments.Outputs()) {
    const std::string unwritten = SaveAll(json, result.verdict, views, output + "_rig", files);
    if (!unwritten.empty()) return ReportUnwritten(unwritten);
  }
  if (context.session != nullptr) context.session->Write(views.Notes(result));
  return EndWithFiles(files, result.verdict.grade == CalibrationVerdict::Grade::Worthless, arguments);
}

}  // namespace batch
