/// What the window shows of results.
#include "guided/Pages.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "common/UncertaintyPicture.h"

namespace guided {

namespace {

std::string Decimal(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

/// With two digits that tell.
std::string Pixels(double value) {
  if (!std::isfinite(value)) return "unknown";
  const int digits = value <= 0.0 ? 2 : std::clamp(1 - static_cast<int>(std::floor(std::log10(value))), 0, 5);
  return Decimal(value, digits) + " px";
}

KnownNumber NumberOf(const std::string& name, double value, double deviation) {
  return {name, Decimal(value, 2), "+- " + Pixels(deviation)};
}

void AddNumbers(const CameraOutcome& camera, const std::string& side, std::vector<KnownNumber>& numbers) {
  const cv::Mat& K = camera.report.K;
  const cv::Mat& deviations = camera.report.stdDevs;
  const std::array<std::string, 4> names = {"fx", "fy", "cx", "cy"};
  const std::array<double, 4> values = {K.at<double>(0, 0), K.at<double>(1, 1), K.at<double>(0, 2),
                                        K.at<double>(1, 2)};
  for (int i = 0; i < 4; ++i) {
    const auto at = static_cast<size_t>(i);
    const double deviation =
        i < static_cast<int>(deviations.total()) ? deviations.at<double>(i) : std::nan("");
    numbers.push_back(NumberOf(side + names.at(at), values.at(at), deviation));
  }
  numbers.push_back({side + "RMS", Pixels(camera.report.rms), ""});
}

void AddPairNumbers(const PairOutcome& pair, std::vector<KnownNumber>& numbers) {
  numbers.push_back({"baseline", Decimal(1000.0 * cv::norm(pair.report.T), 2) + " mm", ""});
  const double turn = std::acos(std::clamp((cv::trace(pair.report.R)[0] - 1.0) / 2.0, -1.0, 1.0));
  numbers.push_back({"rotation", Decimal(turn * 180.0 / CV_PI, 3) + " degrees", ""});
  numbers.push_back({"pair's RMS", Pixels(pair.report.rms), ""});
}

template <typename Verdict>
void AddSentences(const Verdict& verdict, const std::string& whose, std::vector<std::string>& sentences) {
  for (const auto& remark : verdict.remarks)
    sentences.push_back(whose + remark.reason + (remark.advice.empty() ? "" : " " + remark.advice));
}

/// The one that is farthest from the result, of those that were used.
int WorstOf(const CameraOutcome& camera) {
  int worst = -1;
  for (int i = 0; i < camera.report.viewErrors.rows; ++i) {
    if (camera.report.disagreeing.count(static_cast<size_t>(i)) > 0) continue;
    if (worst < 0 || camera.report.viewErrors.at<double>(i) > camera.report.viewErrors.at<double>(worst))
      worst = i;
  }
  return worst;
}

cv::Mat ImageOf(const velmora::Session& session, int number, size_t camera) {
  try {
    return session.LoadImage(number, static_cast<int>(camera));
  } catch (const std::exception&) {
    return cv::Mat();  // it is not kept, or damaged: the residuals are shown all the same
  }
}

WorstView WorstViewOf(const Outcome& outcome, size_t camera, const velmora::Session& session) {
  const CameraOutcome& of = outcome.cameras[camera];
  WorstView view;
  view.frame = of.report.frame;
  const int worst = WorstOf(of);
  if (worst < 0) return view;
  const auto index = static_cast<size_t>(worst);
  view.name = of.report.used.at(index);
  view.image = ImageOf(session, outcome.numbers.at(index), camera);
  const velmora::SnapshotFit fit = of.engine->GetSnapshotFit(worst);
  if (fit.cameras.empty()) return view;
  view.rms = fit.cameras.front().rms;
  const auto centres = of.engine->GetSnapshot(worst).cameras.front().centres;
  for (size_t k = 0; k < fit.cameras.front().residuals.size(); ++k) {
    const cv::Point2d& residual = fit.cameras.front().residuals[k];
    if (!std::isfinite(residual.x)) continue;
    view.points.push_back(centres.at(k));
    view.residuals.push_back(residual);
  }
  return view;
}

CalibrationVerdict::Grade GradeOf(PairVerdict::Grade grade) {
  switch (grade) {
    case PairVerdict::Grade::Good:
      return CalibrationVerdict::Grade::Good;
    case PairVerdict::Grade::WithCare:
      return CalibrationVerdict::Grade::WithCare;
    case PairVerdict::Grade::Worthless:
      return CalibrationVerdict::Grade::Worthless;
    case PairVerdict::Grade::None:
      break;
  }
  return CalibrationVerdict::Grade::None;
}

}  // namespace

std::string PrecisionOf(const Outcome& outcome) {
  if (outcome.Failed()) return "";
  double worst = 0.0;
  for (const CameraOutcome& camera : outcome.cameras)
    worst = std::max(worst, camera.verdict.ExpectedInData());
  if (!std::isfinite(worst)) return "";
  return "known to " + Pixels(worst) + ", from " + std::to_string(outcome.numbers.size()) + " views";
}

cv::Mat MapOf(const Outcome& outcome) {
  std::vector<cv::Mat> maps;
  for (const CameraOutcome& camera : outcome.cameras)
    maps.push_back(common::DrawUncertainty(camera.verdict, camera.report.frame, camera.seen));
  if (maps.empty()) return cv::Mat();
  cv::Mat map;
  cv::hconcat(maps, map);
  return map;
}

EndPage EndPageOf(const Outcome& outcome, const velmora::Session& session,
                  const std::vector<std::string>& files) {
  EndPage page;
  const CalibrationVerdict& first = outcome.cameras.front().verdict;
  page.grade = outcome.pair ? GradeOf(outcome.pair->verdict.grade) : first.grade;
  page.verdict = "Verdict: " + (outcome.pair ? outcome.pair->verdict.ToString() : first.ToString());
  if (outcome.pair) AddSentences(outcome.pair->verdict, "", page.sentences);
  for (size_t i = 0; i < outcome.cameras.size(); ++i) {
    const CameraOutcome& camera = outcome.cameras[i];
    const std::string side = !outcome.pair ? "" : i == 0 ? "Left camera: " : "Right camera: ";
    const std::string prefix = !outcome.pair ? "" : i == 0 ? "left " : "right ";
    AddSentences(camera.verdict, side, page.sentences);
    AddNumbers(camera, prefix, page.numbers);
    page.maps.push_back(common::DrawUncertainty(camera.verdict, camera.report.frame, camera.seen));
    page.worst.push_back(WorstViewOf(outcome, i, session));
  }
  if (outcome.pair) AddPairNumbers(*outcome.pair, page.numbers);
  page.files = files;
  return page;
}

}  // namespace guided
