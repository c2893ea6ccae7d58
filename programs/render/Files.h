/// The renderer's files.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <string>

#include "Truth.h"

namespace render {

// What cannot be made or written is a std::runtime_error that names it.

void MakeFolder(const std::filesystem::path& folder);

std::string PictureName(int number);
/// Saves the truth of one camera of several in the folder of its pictures; files are named without their
/// folder there.
void SaveOwnTruth(world::Truth truth, const std::filesystem::path& folder);
void WritePicture(const std::string& path, const cv::Mat& picture);

/// Throws std::invalid_argument unless the name ends in .avi.
void CheckVideoName(const std::string& path);
cv::VideoWriter OpenVideo(const std::string& path, double fps, cv::Size size);
/// The name of a video's truth file.
std::string TruthName(const std::string& video);

}  // namespace render
