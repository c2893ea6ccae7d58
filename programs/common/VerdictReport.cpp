/// What the tools say of a result's worth.
#include "common/VerdictReport.h"

#include <iomanip>
#include <sstream>

namespace common {

namespace {

std::string NameOf(size_t view, const std::vector<std::string>& names) {
  return view < names.size() ? names[view] : "view " + std::to_string(view);
}

/// A rejected image, or a rejected circle of one that is kept.
std::string RejectedText(const std::string& image, int point, double residual, const std::string& reason) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(2);
  if (point < 0) {
    text << "  Left out: " << image << ", " << reason << " (" << residual << " px)\n";
  } else {
    text << "  Ignored: circle " << point << " of " << image << ", " << residual
         << " px from where the others put it\n";
  }
  return text.str();
}

std::string RecountedText(const std::string& image) {
  return "  Put right: " + image + ", whose circles were counted from another end of the grid\n";
}

/// The grade, and what speaks against the result.
std::string AssessmentText(const std::string& words, const std::vector<CalibrationVerdict::Remark>& remarks) {
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

/// Views whose pictures do not agree.
std::string ApartText(const std::vector<PairVerdict::Disagreement>& disagreements,
                      const std::vector<std::string>& names, const std::string& where) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(1);
  for (const auto& item : disagreements) {
    text << "  Not at the same place in " << where << ": " << NameOf(item.view, names) << " (" << item.factor
         << " times the noise)\n";
  }
  return text.str();
}

template <typename LeftOut>
std::set<size_t> WholeViews(const std::vector<LeftOut>& leftOut) {
  std::set<size_t> views;
  for (const LeftOut& left : leftOut) {
    if (left.point < 0) views.insert(left.view);
  }
  return views;
}

std::string VerdictWithoutViews(const CalibrationVerdict& verdict) {
  std::ostringstream text;
  text << std::fixed << AssessmentText(verdict.ToString(), verdict.remarks);
  text << std::setprecision(2) << "  Focal length known to " << 100.0 * verdict.focalDeviation
       << " % (from the noise), " << 100.0 * verdict.focalJackknife
       << " % (repeatability when views are left out)\n"
       << "  Projections accurate to " << verdict.deviationInData << " px where the grid was seen ("
       << verdict.jackknifeInData << " px when views are left out), " << verdict.deviationInImage
       << " px over the whole image\n"
       << std::setprecision(0) << "  The grid was seen in " << 100.0 * verdict.coverage
       << " % of the image\n";
  return text.str();
}

}  // namespace

std::string VerdictTable(const CalibrationVerdict& verdict, const std::vector<std::string>& names) {
  std::string text = VerdictWithoutViews(verdict);
  for (const auto& left : verdict.leftOut) {
    text += RejectedText(NameOf(left.view, names), left.point, left.residual, left.reason);
  }
  return text;
}

std::string VerdictTable(const PairVerdict& verdict, const std::vector<std::string>& names) {
  std::string text = AssessmentText(verdict.ToString(), verdict.remarks);
  text += "  From the noise: " + DeviationsText(verdict.formal);
  text += "  When views are left out: " + DeviationsText(verdict.jackknife);
  if (!verdict.lensesRefined) {
    text += "  Including the lenses' own uncertainty: " + DeviationsText(verdict.withLenses);
  }
  text += ApartText(verdict.disagreements, names, "both pictures");
  for (const auto& left : verdict.leftOut) {
    const std::string image =
        std::string(left.right ? "right" : "left") + " picture of " + NameOf(left.view, names);
    text += RejectedText(image, left.point, left.residual, left.reason);
  }
  for (const auto& item : verdict.recounted) {
    text +=
        RecountedText(std::string(item.right ? "right" : "left") + " picture of " + NameOf(item.view, names));
  }
  return text;
}

std::string VerdictTable(const velmora::RigResult& result, const RigNames& names) {
  const velmora::RigVerdict& verdict = result.verdict;
  const std::vector<std::string>& cameras = names.cameras;
  std::string text = WithCameraNames(AssessmentText(verdict.ToString(), verdict.remarks), cameras);
  for (size_t i = 0; i < verdict.formal.size(); ++i) {
    text += "  " + cameras[i + 1] + " to " + cameras[0] +
            ", from the noise: " + DeviationsText(verdict.formal[i]) +
            "    When views are left out: " + DeviationsText(verdict.jackknife[i]);
  }
  text += ApartText(verdict.disagreements, names.Moments(), "all images");
  for (const velmora::RigLeftOut& left : result.leftOut) {
    text += RejectedText(names.Image(left.view, left.camera), left.point, left.residual, left.reason);
  }
  for (const velmora::RigRecounted& item : result.recounted) {
    text += RecountedText(names.Image(item.view, item.camera));
  }
  for (size_t i = 0; i < verdict.cameras.size(); ++i) {
    text += "\nCamera " + cameras[i] + "\n" + VerdictWithoutViews(verdict.cameras[i]);
  }
  return text;
}

std::set<size_t> RejectedViews(const CalibrationVerdict& verdict) {
  return WholeViews(verdict.leftOut);
}

std::set<size_t> RejectedViews(const PairVerdict& verdict) {
  return WholeViews(verdict.leftOut);
}

}  // namespace common
