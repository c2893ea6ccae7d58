/// What the headless tool says of a result's worth.
#include "batch/VerdictReport.h"

#include <iomanip>
#include <sstream>

namespace batch {

namespace {

std::string NameOf(size_t view, const std::vector<std::string>& names) {
  return view < names.size() ? names[view] : "view " + std::to_string(view);
}

/// A view that is left out, or a circle of one that is kept.
std::string LeftOutText(const CalibrationVerdict::LeftOut& left, const std::vector<std::string>& names) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(2);
  if (left.point < 0) {
    text << "  Left out: " << NameOf(left.view, names) << ", " << left.reason << " (" << left.residual
         << " px)\n";
  } else {
    text << "  Ignored: circle " << left.point << " of " << NameOf(left.view, names) << ", " << left.residual
         << " px from where the others put it\n";
  }
  return text.str();
}

/// The grade, and what speaks against the result.
std::string Judgement(const std::string& words, const std::vector<CalibrationVerdict::Remark>& remarks) {
  std::string text = "Verdict: " + words + "\n";
  for (const auto& remark : remarks) text += "  " + remark.reason + "\n    " + remark.advice + "\n";
  return text;
}

std::string DeviationsText(const PairVerdict::Deviations& deviations) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << "rotation to " << deviations.rotation
       << " degrees, baseline to " << 100.0 * deviations.baseline << " %, its direction to "
       << deviations.direction << " degrees\n";
  return text.str();
}

}  // namespace

std::string VerdictTable(const CalibrationVerdict& verdict, const std::vector<std::string>& names) {
  std::ostringstream text;
  text << std::fixed << Judgement(verdict.Words(), verdict.remarks);
  text << std::setprecision(2) << "  Focal length known to " << 100.0 * verdict.focalDeviation
       << " % (from the noise), " << 100.0 * verdict.focalJackknife
       << " % (repeatability when views are left out)\n"
       << "  Projections accurate to " << verdict.deviationInData << " px where the grid was seen ("
       << verdict.jackknifeInData << " px when views are left out), " << verdict.deviationInImage
       << " px over the whole image\n"
       << std::setprecision(0) << "  The grid was seen in " << 100.0 * verdict.coverage
       << " % of the image\n";
  for (const auto& left : verdict.leftOut) text << LeftOutText(left, names);
  return text.str();
}

std::string VerdictTable(const PairVerdict& verdict, const std::vector<std::string>& names) {
  std::string text = Judgement(verdict.Words(), verdict.remarks);
  text += "  From the noise: " + DeviationsText(verdict.formal);
  text += "  When views are left out: " + DeviationsText(verdict.jackknife);
  if (!verdict.lensesRefined) {
    text += "  Including the lenses' own uncertainty: " + DeviationsText(verdict.withLenses);
  }
  std::ostringstream apart;
  apart << std::fixed << std::setprecision(1);
  for (const auto& item : verdict.disagreements) {
    apart << "  Not at the same place in both pictures: " << NameOf(item.view, names) << " (" << item.factor
          << " times the noise)\n";
  }
  return text + apart.str();
}

std::set<size_t> ViewsLeftOut(const CalibrationVerdict& verdict) {
  std::set<size_t> views;
  for (const auto& left : verdict.leftOut) {
    if (left.point < 0) views.insert(left.view);
  }
  return views;
}

}  // namespace batch
