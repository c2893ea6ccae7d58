/// How the programs tell what is wrong.
#include "common/Messages.h"

#include <opencv2/core.hpp>

#include "common/OneLine.h"

namespace common {

namespace {

/// In one line; of the image library's faults without the place in its source.
std::string TextOf(const std::exception& fault) {
  const auto* const ofLibrary = dynamic_cast<const cv::Exception*>(&fault);
  const std::string text = ofLibrary != nullptr ? ofLibrary->err : fault.what();
  // A name in the text may have two blanks in a row, which are left alone where there is one line anyway.
  return text.find('\n') == std::string::npos ? text : OneLine(text);
}

std::string WithFullStop(const std::string& text) {
  return !text.empty() && text.back() == '.' ? text : text + ".";
}

}  // namespace

void PrintError(std::ostream& err, const std::string& sentence) {
  err << "ERROR: " << sentence << std::endl;
}

void PrintError(std::ostream& err, const std::exception& fault, const std::string& failed) {
  PrintError(err, WithFullStop((failed.empty() ? "" : failed + ": ") + TextOf(fault)));
}

}  // namespace common
