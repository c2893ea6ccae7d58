/// The cameras of a rig as the command line names them.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/Arguments.h"
#include "batch/CameraFile.h"
#include "batch/TogetherStream.h"

namespace batch {

/// A name for each camera: the folder or file of its input, or the whole input where that would not tell it
/// from another camera's. Raises InputError for an input that is given twice.
std::vector<std::string> RigCameraNames(const std::vector<std::string>& inputs);

/// The images of all cameras, as the options match them. Raises InputError, which names cameras, for
/// numbers of images that differ and for names that do not match.
TogetherStream RigImages(const Arguments& arguments, const std::vector<std::string>& names);

/// The result files that are given for the cameras, or none. Raises InputError for a file that is none.
std::vector<CameraFile> RigCameraFiles(const Arguments& arguments);

/// Raises InputError when a result file is of another image size than that of its camera's images.
void CheckSizes(const std::vector<CameraFile>& files, const std::vector<std::string>& names,
                const std::vector<cv::Size>& frames);

}  // namespace batch
