/// Writes numbers down, one in a line, under the name of the calibration that they are of.
#include "frozen/Writer.h"

#include <cstdio>

namespace frozen {

void Writer::Number(const std::string& what, double value) {
  char digits[40];
  std::snprintf(digits, sizeof digits, "%.17g", value);
  out_ << name_ << '/' << what << ' ' << digits << '\n';
}

void Writer::Text(const std::string& what, const std::string& value) {
  out_ << name_ << '/' << what << " \"" << value << "\"\n";
}

void Writer::Matrix(const std::string& what, const cv::Mat& values) {
  if (values.empty()) {
    Text(what, "empty");
    return;
  }
  cv::Mat numbers;
  values.reshape(1, 1).convertTo(numbers, CV_64F);
  for (int i = 0; i < numbers.cols; ++i) Number(what + '.' + std::to_string(i), numbers.at<double>(i));
}

void Writer::Camera(Calibrator& calibrator) {
  Number("rms", static_cast<double>(calibrator.GetRMS()));
  Matrix("K", calibrator.GetK());
  Matrix("D", calibrator.GetDistCoefs());
  Matrix("stdDev", calibrator.GetStdDevIntrinsics());
  Matrix("viewRms", calibrator.GetPerViewErrors());
  Matrix("rotation", calibrator.GetRotationVectors());
  Matrix("translation", calibrator.GetTranslationVectors());
  Verdict(calibrator.GetVerdict());
  Proposal("next.classic", calibrator.ProposePose(Calibrator::MODEL_CLASSIC));
  Proposal("next.rational", calibrator.ProposePose(Calibrator::MODEL_RATIONAL));
  const ModelChoice choice = calibrator.ChooseModel();
  Number("choice", choice.model);
  for (const ModelChoice::Candidate& candidate : choice.candidates) {
    const std::string name = "choice." + ModelChoice::NameOf(candidate.model);
    Number(name + ".rms", candidate.rms);
    Number(name + ".criterion", candidate.criterion);
    Number(name + ".unseen", candidate.unseen);
  }
}

void Writer::Verdict(const CalibrationVerdict& verdict) {
  Text("verdict", verdict.ToString());
  for (size_t i = 0; i < verdict.remarks.size(); ++i) {
    Text("remark." + std::to_string(i), verdict.remarks[i].reason);
  }
  for (size_t i = 0; i < verdict.leftOut.size(); ++i) {
    const CalibrationVerdict::LeftOut& out = verdict.leftOut[i];
    const std::string name = "out." + std::to_string(i);
    Number(name + ".view", static_cast<double>(out.view));
    Number(name + ".point", out.point);
    Number(name + ".residual", out.residual);
  }
  Number("verdict.views", verdict.views);
  Number("verdict.focalDeviation", verdict.focalDeviation);
  Number("verdict.focalJackknife", verdict.focalJackknife);
  Number("verdict.deviationInData", verdict.deviationInData);
  Number("verdict.jackknifeInData", verdict.jackknifeInData);
  Number("verdict.systematicInData", verdict.systematicInData);
  Number("verdict.sheetBend", verdict.sheetBend);
  Number("verdict.sheetStretch", verdict.sheetStretch);
  Number("verdict.deviationInImage", verdict.deviationInImage);
  Number("verdict.coverage", verdict.coverage);
  Matrix("verdict.map", verdict.deviationMap);
}

void Writer::Proposal(const std::string& what, const PoseProposal& proposal) {
  Number(what + ".nominal", proposal.nominal ? 1.0 : 0.0);
  Number(what + ".deviation", proposal.deviation);
  Number(what + ".then", proposal.deviationThen);
  Matrix(what + ".rvec", cv::Mat(proposal.rvec));
  Matrix(what + ".tvec", cv::Mat(proposal.tvec));
}

void Writer::Pair(Calibrator& calibrator) {
  Number("rms", static_cast<double>(calibrator.GetRMS()));
  Matrix("K.left", calibrator.GetKLeft());
  Matrix("D.left", calibrator.GetDistCoefsLeft());
  Matrix("K.right", calibrator.GetKRight());
  Matrix("D.right", calibrator.GetDistCoefsRight());
  Matrix("R", calibrator.GetR());
  Matrix("T", calibrator.GetStereoTranslation());
  Matrix("E", calibrator.GetEssentialMatrix());
  Matrix("F", calibrator.GetFundamentalMatrix());
  const PairVerdict verdict = calibrator.GetPairVerdict();
  Text("verdict", verdict.ToString());
  for (size_t i = 0; i < verdict.remarks.size(); ++i) {
    Text("remark." + std::to_string(i), verdict.remarks[i].reason);
  }
  const auto deviations = [this](const std::string& what, const PairVerdict::Deviations& values) {
    Number(what + ".rotation", values.rotation);
    Number(what + ".baseline", values.baseline);
    Number(what + ".direction", values.direction);
  };
  deviations("verdict.formal", verdict.formal);
  deviations("verdict.jackknife", verdict.jackknife);
  deviations("verdict.withLenses", verdict.withLenses);
  Number("verdict.disagreement", verdict.disagreement);
  for (size_t i = 0; i < verdict.disagreements.size(); ++i) {
    const std::string name = "disagreement." + std::to_string(i);
    Number(name + ".view", static_cast<double>(verdict.disagreements[i].view));
    Number(name + ".factor", verdict.disagreements[i].factor);
  }
}

}  // namespace frozen
