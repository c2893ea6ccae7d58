/// The table that ends a calibration.
#include "common/Report.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <opencv2/calib3d.hpp>

namespace common {

namespace {

constexpr size_t WORST_VIEWS = 5;
constexpr size_t LINE_WIDTH = 100;
constexpr size_t LISTED_NAMES = 40;  // frames of a video come by the hundred

const char* const PARAMETERS[] = {"fx", "fy", "cx", "cy", "k1", "k2", "p1", "p2",    "k3",
                                  "k4", "k5", "k6", "s1", "s2", "s3", "s4", "tau x", "tau y"};
const char* const FISHEYE_PARAMETERS[] = {"fx", "fy", "cx", "cy", "k1", "k2", "k3", "k4"};
constexpr int CAMERA_PARAMETERS = 4;

#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
Formatted(const char* format, ...) {
  char text[256] = "";
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  return text;
}

/// Names separated by commas, broken into indented lines.
std::string Wrapped(const std::vector<std::string>& names, const std::string& indent) {
  std::string text;
  std::string line;
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string item = names[i] + (i + 1 < names.size() ? "," : "");
    if (!line.empty() && line.size() + 1 + item.size() > LINE_WIDTH) {
      text += line + "\n";
      line.clear();
    }
    line += (line.empty() ? indent : " ") + item;
  }
  return text + line + "\n";
}

double ParameterValue(const Report& report, int index) {
  switch (index) {
    case 0:
      return report.K.at<double>(0, 0);
    case 1:
      return report.K.at<double>(1, 1);
    case 2:
      return report.K.at<double>(0, 2);
    case 3:
      return report.K.at<double>(1, 2);
    default:
      return report.D.at<double>(index - CAMERA_PARAMETERS);
  }
}

std::string ParameterTable(const Report& report) {
  std::string text = Formatted("  %-9s %14s %14s\n", "parameter", "value", "std. dev.");
  const int count = CAMERA_PARAMETERS + static_cast<int>(report.D.total());
  for (int i = 0; i < count; ++i) {
    const double deviation = i < report.stdDevs.rows ? report.stdDevs.at<double>(i) : 0.0;
    const double value = ParameterValue(report, i);
    const bool coefficient = i >= CAMERA_PARAMETERS;
    if (coefficient && deviation == 0.0 && value == 0.0) continue;  // not part of the model
    const int digits = coefficient ? 6 : 3;
    const char* const name = report.fisheye ? FISHEYE_PARAMETERS[i] : PARAMETERS[i];
    text += Formatted("  %-9s %14.*f %14.*f\n", name, digits, value, digits, deviation);
  }
  return text;
}

/// Those with the largest errors, of the first `count` views without those that disagree.
template <typename ErrorOf>
std::vector<size_t> WorstOf(size_t count, const std::set<size_t>& disagreeing, const ErrorOf& error) {
  std::vector<size_t> order;
  for (size_t i = 0; i < count; ++i) {
    if (disagreeing.count(i) == 0) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return error(a) > error(b); });
  order.resize(std::min(order.size(), WORST_VIEWS));
  return order;
}

std::string WorstViews(const Report& report) {
  const size_t count = std::min(report.used.size(), static_cast<size_t>(report.viewErrors.rows));
  const auto error = [&](size_t i) { return report.viewErrors.at<double>(static_cast<int>(i)); };
  std::string text;
  for (const size_t i : WorstOf(count, report.disagreeing, error)) {
    text += Formatted("  %8.4f px  ", error(i)) + report.used[i] + "\n";
  }
  return text;
}

/// The names by reason, of long lists the first ones.
std::string ReasonsText(const std::vector<Rejection>& rejected) {
  std::string text;
  std::vector<std::pair<std::string, std::vector<std::string>>> byReason;
  for (const Rejection& rejection : rejected) {
    const std::string heading = (rejection.hasGrid ? "" : "not used, ") + rejection.reason;
    const auto same = std::find_if(byReason.begin(), byReason.end(),
                                   [&](const auto& entry) { return entry.first == heading; });
    if (same == byReason.end()) {
      byReason.push_back({heading, {rejection.name}});
    } else {
      same->second.push_back(rejection.name);
    }
  }
  for (const auto& [heading, names] : byReason) {
    text += Formatted("  %zu ", names.size()) + heading + ":\n";
    const size_t listed = std::min(names.size(), LISTED_NAMES);
    text += Wrapped({names.begin(), names.begin() + static_cast<std::ptrdiff_t>(listed)}, "    ");
    if (listed < names.size()) text += Formatted("    and %zu more\n", names.size() - listed);
  }
  return text;
}

}  // namespace

const char* const DISAGREES = "found but in disagreement with the others";

std::string ViewsTable(const std::vector<std::string>& used, const std::vector<Rejection>& rejected,
                       const std::set<size_t>& disagreeing, const std::string& what) {
  const size_t all = used.size() + rejected.size();
  std::string text = Formatted("%zu of %zu ", used.size() - disagreeing.size(), all) + what +
                     (all == 1 ? "" : "s") + " used";
  if (disagreeing.size() == 1) text += "; 1 disagrees";
  if (disagreeing.size() > 1) text += Formatted("; %zu disagree", disagreeing.size());
  std::vector<Rejection> reasons = rejected;
  for (const size_t view : disagreeing) {
    reasons.push_back({used.at(view), DISAGREES, true});
  }
  return text + "\n" + ReasonsText(reasons);
}

std::string PartsText(const Parts& parts, size_t views) {
  if (parts.circles.empty()) return "";
  constexpr size_t LISTED = 4;
  const std::vector<size_t>& circles = parts.circles;
  std::string numbers;
  if (circles.size() <= LISTED) {
    for (size_t i = 0; i < circles.size(); ++i) {
      numbers += (i == 0 ? "" : i + 1 < circles.size() ? ", " : " and ") + std::to_string(circles[i]);
    }
  } else {
    const auto [fewest, most] = std::minmax_element(circles.begin(), circles.end());
    numbers = std::to_string(*fewest) + " to " + std::to_string(*most);
  }
  return Formatted("%zu of %zu views %s of the grid (", circles.size(), views,
                   circles.size() == 1 ? "is a part" : "are parts") +
         numbers + Formatted(" of %zu circles)\n", parts.of);
}

Rejection NotNeeded(const std::string& name, int maxViews) {
  return {name, "found but not needed (--max-views " + std::to_string(maxViews) + ")", true};
}

std::string ResultTable(const Report& report) {
  std::string reasons;
  for (const std::string& reason : report.modelReasons) reasons += "  " + reason + "\n";
  return ViewsTable(report.used, report.rejected, report.disagreeing) +
         PartsText(report.parts, report.used.size()) + "\n" +
         Formatted("Model: %s, image size %d x %d\n", report.model.c_str(), report.frame.width,
                   report.frame.height) +
         reasons + Formatted("RMS reprojection error: %.6f px\n\n", report.rms) + ParameterTable(report) +
         "\nWorst views:\n" + WorstViews(report);
}

namespace {

/// The right camera sees the world further to the left, so that points move along -x from left to right.
std::string SwappedText(const cv::Mat& T) {
  const bool sideways =
      std::abs(T.at<double>(0)) > std::max(std::abs(T.at<double>(1)), std::abs(T.at<double>(2)));
  return sideways && T.at<double>(0) > 0.0
             ? "  The right camera stands to the left of the left one: are the two swapped?\n"
             : "";
}

/// By the camera that sees a view worse.
std::string WorstViews(const PairReport& report) {
  const size_t count = std::min({report.used.size(), report.left.views.size(), report.right.views.size()});
  const auto error = [&](size_t i) { return std::max(report.left.views[i], report.right.views[i]); };
  std::string text;
  for (const size_t i : WorstOf(count, report.disagreeing, error)) {
    text += Formatted("  %8.4f px %8.4f px  ", report.left.views[i], report.right.views[i]) + report.used[i] +
            "\n";
  }
  return text;
}

std::string RefinedLens(const char* side, const cv::Mat& K) {
  return K.empty()
             ? ""
             : Formatted("Refined %-5s lens:      fx %.3f, fy %.3f, cx %.3f, cy %.3f\n", side,
                         K.at<double>(0, 0), K.at<double>(1, 1), K.at<double>(0, 2), K.at<double>(1, 2));
}

}  // namespace

std::string PairTable(const PairReport& report) {
  const cv::Mat T = report.T;
  cv::Mat rotation;
  cv::Rodrigues(report.R, rotation);
  const double degrees = cv::norm(rotation) * 180.0 / CV_PI;
  return ViewsTable(report.used, report.rejected, report.disagreeing, "pair") +
         PartsText(report.parts, report.used.size()) + "\n" +
         Formatted("Pair: %s model\n", report.model.c_str()) +
         Formatted("RMS reprojection error:  %.6f px\n", report.rms) +
         Formatted("RMS of left and right:   %.6f px, %.6f px\n", report.left.rms, report.right.rms) +
         Formatted("Mean epipolar distance:  %.6f px\n", report.epipolarDistance) +
         Formatted("Baseline:                %.6f m\n", cv::norm(T)) +
         Formatted("Translation:             %.6f %.6f %.6f m\n", T.at<double>(0), T.at<double>(1),
                   T.at<double>(2)) +
         Formatted("Rotation:                %.4f degrees\n", degrees) + SwappedText(report.T) +
         RefinedLens("left", report.refinedLeft) + RefinedLens("right", report.refinedRight) +
         "\nWorst views, left and right:\n" + WorstViews(report);
}

}  // namespace common
