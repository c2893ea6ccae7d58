/// The cameras of a rig as the command line names them.
#include "batch/RigCameras.h"

#include <algorithm>
#include <filesystem>

namespace batch {

namespace {

std::string WithoutTrailingSlashes(std::string input) {
  while (input.size() > 1 && input.back() == '/') input.pop_back();
  return input;
}

/// The last part of a path; all of an address or a pattern.
std::string ShortName(const std::string& input) {
  if (IsUrl(input) || input.find_first_of("*?[") != std::string::npos) return input;
  const std::string name = std::filesystem::path(input).filename().string();
  return name.empty() || name == "." || name == ".." ? input : name;
}

std::string CountText(const std::string& camera, int count) {
  const std::string images = count == 1 ? " image" : " images";
  return "camera '" + camera + "' has " + (count == 0 ? "a video" : std::to_string(count) + images);
}

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

std::vector<std::string> RigCameraNames(const std::vector<std::string>& inputs) {
  std::vector<std::string> whole;
  std::vector<std::string> names;
  for (const std::string& input : inputs) {
    whole.push_back(WithoutTrailingSlashes(input));
    names.push_back(ShortName(whole.back()));
    if (std::count(whole.begin(), whole.end(), whole.back()) > 1) {
      throw InputError("'" + input + "' is given for two cameras");
    }
  }
  const std::vector<std::string> shortNames = names;
  for (size_t i = 0; i < names.size(); ++i) {
    if (std::count(shortNames.begin(), shortNames.end(), shortNames[i]) > 1) names[i] = whole[i];
  }
  return names;
}

TogetherStream RigImages(const Arguments& arguments, const std::vector<std::string>& names) {
  if (!arguments.HasInputs()) {
    return TogetherStream(std::vector<std::vector<std::string>>(names.size()), arguments.sampling);
  }
  std::vector<CameraFiles> cameras;
  std::vector<std::vector<std::string>> files;
  for (size_t i = 0; i < names.size(); ++i) {
    files.push_back(ExpandInputsAloud({arguments.rig[i]}));
    cameras.push_back({names[i], files.back()});
  }
  if (arguments.match == Match::Names) return TogetherStream(MatchByNames(cameras), arguments.sampling);
  TogetherStream stream(files, arguments.sampling);
  for (size_t i = 1; i < names.size(); ++i) {
    if (stream.ExpectedCount(i) == stream.ExpectedCount(0)) continue;
    throw InputError(CountText(names[0], stream.ExpectedCount(0)) + ", " +
                     CountText(names[i], stream.ExpectedCount(i)) +
                     "; images belong together by their order (--match names: by their names)");
  }
  return stream;
}

std::vector<CameraFile> RigCameraFiles(const Arguments& arguments) {
  std::vector<CameraFile> files;
  for (const std::string& path : arguments.intrinsics) files.push_back(ReadCameraFile(path));
  return files;
}

void CheckSizes(const std::vector<CameraFile>& files, const std::vector<std::string>& names,
                const std::vector<cv::Size>& frames) {
  for (size_t i = 0; i < files.size(); ++i) {
    if (files[i].frame == frames[i]) continue;
    throw InputError("'" + files[i].path + "' is of " + SizeText(files[i].frame) + " pixels, but camera '" +
                     names[i] + "' has " + SizeText(frames[i]));
  }
}

}  // namespace batch
