/// What is said of a check.
#include "quality/CheckWords.h"

#include <algorithm>
#include <cmath>

#include "quality/SystematicRemarks.h"

namespace velmora {

namespace {

using Answer = ResultCheck::Answer;

/// Sheets that are tilted by less say little of the focal length.
constexpr double SMALL_TILT = 15.0;
constexpr size_t FEW_IMAGES = 5;
constexpr double SMALL_COVERAGE = 0.3;
/// Residuals over those of the calibration, and in pixels, that are no matter of the lens.
constexpr double MUCH_NOISE = 4.0;
constexpr double LEAST_NOISE = 0.3;
constexpr double SURE = 3.0;  // standard deviations

/// "0.037", "0.37", "3.7": two digits that count.
std::string Pixels(double value) {
  const int digits =
      !(value > 0.0) ? 2 : std::clamp(1 - static_cast<int>(std::floor(std::log10(value))), 1, 3);
  return Decimal(value, digits) + " px";
}

std::string Signed(double value, int digits) {
  return (value < 0.0 ? "-" : "+") + Decimal(std::abs(value), digits);
}

double Sureness(double value, double deviation) {
  return deviation > 0.0 ? std::abs(value) / deviation : 0.0;
}

bool FocalMoved(const ResultCheck& check) {
  return Sureness(check.focalChange, check.focalDeviation) > SURE;
}

std::string WhatMoved(const CheckFacts& facts, const ResultCheck& check) {
  const double focal = Sureness(check.focalChange, check.focalDeviation);
  const double centre = CentreSureness(check);
  std::string text;
  const auto add = [&text](const std::string& words) { text += (text.empty() ? " (" : ", ") + words; };
  if (focal > SURE) {
    add("focal length " + Signed(100.0 * check.focalChange, 2) + " % +-" +
        Decimal(100.0 * check.focalDeviation, 2));
  }
  if (centre > SURE) {
    add("principal point " + Signed(check.principalPointChange.x, 1) + ", " +
        Signed(check.principalPointChange.y, 1) + " px");
  }
  if (facts.termsMoved > SURE && text.empty()) add("distortion");
  return text.empty() ? text : text + ")";
}

std::string AdviceForMoved(const ResultCheck& check) {
  std::string advice = "Calibrate the camera again.";
  if (FocalMoved(check)) {
    advice = "See that focus and zoom are as they were, or fix them and calibrate the camera again.";
  } else if (CentreSureness(check) > SURE) {
    advice =
        "See that the lens sits tight, and that crop and image stabilisation are as they were; then "
        "calibrate "
        "the camera again.";
  }
  return advice;
}

std::string AdviceForMore(const ResultCheck& check) {
  double tilt = 0.0;
  size_t used = 0;
  for (const ResultCheck::Image& image : check.images) {
    if (!image.used) continue;
    ++used;
    tilt = std::max(tilt, image.tilt);
  }
  if (tilt < SMALL_TILT) return "Tilt the sheet by 20 to 40 degrees, each time to another side.";
  if (used < FEW_IMAGES) return "Take five images or more, with the sheet tilted to all sides.";
  if (check.coverage < SMALL_COVERAGE)
    return "Hold the sheet nearer, and show it near the edges of the image, too.";
  return "Take more images, with the sheet tilted more and held still.";
}

std::string AdviceForNoise(const CheckFacts& facts, const ResultCheck& check) {
  if (!(facts.calibrationRms > 0.0) || !(check.noise > MUCH_NOISE * facts.calibrationRms) ||
      !(check.noise > LEAST_NOISE)) {
    return "";
  }
  return "Residuals are " + Decimal(check.noise / facts.calibrationRms, 0) +
         " times those of the calibration, whatever the lens is: see that the images are sharp and the sheet "
         "is "
         "held still, and that it is the right sheet.";
}

}  // namespace

double CentreSureness(const ResultCheck& check) {
  return std::hypot(Sureness(check.principalPointChange.x, check.principalPointDeviation.x),
                    Sureness(check.principalPointChange.y, check.principalPointDeviation.y));
}

void PutIntoWords(const CheckFacts& facts, ResultCheck& check) {
  const std::string moved = "about " + Pixels(check.shift) + " (+-" + Pixels(check.shiftDeviation) + ")";
  switch (check.answer) {
    case Answer::NotCalibrated:
      check.sentence =
          "No longer calibrated: the camera has moved off by " + moved + WhatMoved(facts, check) + ".";
      check.advice = AdviceForMoved(check);
      break;
    case Answer::CannotTell:
      check.sentence = "Cannot tell: projections may be off by as much as " + Pixels(check.unseen) +
                       " without these images showing it.";
      check.advice = AdviceForMore(check);
      if (!std::isfinite(check.unseen)) check.sentence = "Cannot tell: the images say nothing of the lens.";
      if (facts.worthless) {
        check.sentence = "Cannot tell: the verdict on the result itself is that it is worthless.";
        check.advice = "Calibrate the camera again, as the remarks of that verdict advise.";
      }
      break;
    case Answer::Calibrated:
      check.sentence = facts.moved
                           ? "Still calibrated: the camera has moved off by " + moved +
                                 ", no more than the " + Pixels(check.tolerance) + " that are allowed."
                           : "Still calibrated: projections are where the result has them, to within " +
                                 Pixels(std::max(check.unseen, check.shift)) + ".";
      break;
  }
  const std::string noise = AdviceForNoise(facts, check);
  if (!noise.empty()) check.advice += (check.advice.empty() ? "" : " ") + noise;
}

}  // namespace velmora
