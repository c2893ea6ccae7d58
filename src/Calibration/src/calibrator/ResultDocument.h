/// Names and texts of the result file and the status answer.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "FisheyeResult.h"
#include "calibrator/Snapshots.h"

class JSON;

namespace velmora {

/// Local date and time as strftime's "%Y%m%d%X" gives it.
std::string CurrentDateTime();

/// The path followed by ".json" (always appended); without a path a name of kind, date and time.
std::string ResultFileName(const std::string& path, bool isPair);

/// The path followed by "_fisheye.json"; without a path a name of kind, date and time.
std::string FisheyeFileName(const std::string& path);

/// What a status means to a user.
const char* StatusSentence(int status);

/// What the documents say of a calibrator apart from its state.
struct DocumentFacts {
  bool isPair = false;
  cv::Size imageSize;
};

/// The result file's text, which `document` holds afterwards; empty without a result of the snapshots, and
/// for a fisheye, which has a file of its own.
std::string ResultText(const Snapshots::Moment& moment, const DocumentFacts& facts, JSON& document);

/// What of a fisheye is handed out.
FisheyeResult FisheyeOf(const Result& result, const cv::Size& imageSize);

/// The status answer: status, number of snapshots, a sentence and, when completed, the result file's text.
std::string StatusAnswer(const Snapshots::Moment& moment, const DocumentFacts& facts);

}  // namespace velmora
