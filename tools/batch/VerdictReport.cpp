/// What the headless tool says of a result's worth.
#include "batch/VerdictReport.h"

#include <iomanip>
#include <sstream>

namespace batch {

namespace {

std::string NameOf(const CalibrationVerdict::LeftOut& left, const std::vector<std::string>& names) {
  const std::string view = left.view < names.size() ? names[left.view] : "view " + std::to_string(left.view);
  return left.point < 0 ? view : "point " + std::to_string(left.point) + " of " + view;
}

}  // namespace

std::string VerdictTable(const CalibrationVerdict& verdict, const std::vector<std::string>& names) {
  std::ostringstream text;
  text << std::fixed << "Verdict: " << verdict.Words() << "\n";
  for (const auto& remark : verdict.remarks) {
    text << "  " << remark.reason << "\n    " << remark.advice << "\n";
  }
  text << std::setprecision(2) << "  Focal length to " << 100.0 * verdict.focalDeviation
       << " % (by the noise), " << 100.0 * verdict.focalJackknife << " % (by leaving out views)\n"
       << "  Projections to " << verdict.deviationInData << " px where there is data ("
       << verdict.jackknifeInData << " px by leaving out views), " << verdict.deviationInImage
       << " px over the whole image\n"
       << std::setprecision(0) << "  Data cover " << 100.0 * verdict.coverage << " % of the image\n"
       << std::setprecision(2);
  for (const auto& left : verdict.leftOut) {
    text << "  Left out: " << NameOf(left, names) << ", " << left.reason << " (" << left.residual << " px)\n";
  }
  return text.str();
}

}  // namespace batch
