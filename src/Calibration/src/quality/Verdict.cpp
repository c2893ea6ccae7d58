/// How good a calibration is, in words and as JSON.
#include "Verdict.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace {

using Verdict = CalibrationVerdict;
using Grade = Verdict::Grade;

const std::pair<Grade, const char*> GRADES[] = {{Grade::None, "no result"},
                                                {Grade::Good, "good"},
                                                {Grade::WithCare, "usable with care"},
                                                {Grade::Worthless, "worthless"}};

const std::pair<const char*, int Verdict::*> COUNTS[] = {
    {"views", &Verdict::views}, {"poses", &Verdict::poses}, {"changedAfter", &Verdict::changedAfter}};

const std::pair<const char*, double Verdict::*> NUMBERS[] = {
    {"focalDeviation", &Verdict::focalDeviation},
    {"focalJackknife", &Verdict::focalJackknife},
    {"deviationInData", &Verdict::deviationInData},
    {"jackknifeInData", &Verdict::jackknifeInData},
    {"systematicInData", &Verdict::systematicInData},
    {"sheetBend", &Verdict::sheetBend},
    {"sheetStretch", &Verdict::sheetStretch},
    {"printError", &Verdict::printError},
    {"movedWhileRead", &Verdict::movedWhileRead},
    {"focalChange", &Verdict::focalChange},
    {"principalPointDeviation", &Verdict::principalPointDeviation},
    {"imageWithoutRay", &Verdict::imageWithoutRay},
    {"deviationInImage", &Verdict::deviationInImage},
    {"coverage", &Verdict::coverage}};

const std::pair<const char*, double Verdict::Sheet::*> SHEET_NUMBERS[] = {
    {"bend", &Verdict::Sheet::bend},
    {"bendDeviation", &Verdict::Sheet::bendDeviation},
    {"stretch", &Verdict::Sheet::stretch},
    {"skew", &Verdict::Sheet::skew},
    {"misprint", &Verdict::Sheet::misprint},
    {"bendChanges", &Verdict::Sheet::bendChanges},
    {"parameters", &Verdict::Sheet::parameters},
    {"flatRms", &Verdict::Sheet::flatRms},
    {"shift", &Verdict::Sheet::shift}};

const std::pair<const char*, cv::Mat Verdict::*> MATRICES[] = {
    {"covariance", &Verdict::covariance}, {"jackknifeCovariance", &Verdict::jackknifeCovariance}};

/// JSON has no number for what is not finite.
nlohmann::json Number(double value) {
  return std::isfinite(value) ? nlohmann::json(value) : nlohmann::json();
}

double NumberFrom(const nlohmann::json& item) {
  return item.is_null() ? std::numeric_limits<double>::infinity() : item.get<double>();
}

nlohmann::json Rows(const cv::Mat& matrix) {
  nlohmann::json rows = nlohmann::json::array();
  for (int i = 0; i < matrix.rows; ++i) {
    nlohmann::json row = nlohmann::json::array();
    for (int j = 0; j < matrix.cols; ++j) row.push_back(Number(matrix.at<double>(i, j)));
    rows.push_back(row);
  }
  return rows;
}

/// A square matrix.
cv::Mat MatrixFrom(const nlohmann::json& rows) {
  const auto size = static_cast<int>(rows.size());
  cv::Mat matrix(size, size, CV_64F);
  for (int i = 0; i < size; ++i) {
    const auto& row = rows.at(static_cast<size_t>(i));
    if (row.size() != rows.size()) throw std::invalid_argument("a covariance is not square");
    for (int j = 0; j < size; ++j) matrix.at<double>(i, j) = NumberFrom(row.at(static_cast<size_t>(j)));
  }
  return matrix;
}

nlohmann::json TextOf(const Verdict::Sheet& sheet) {
  nlohmann::json text;
  text["model"] = sheet.model;
  text["points"] = nlohmann::json::array();
  for (const cv::Point3d& point : sheet.points) {
    text["points"].push_back({Number(point.x), Number(point.y), Number(point.z)});
  }
  for (const auto& [name, member] : SHEET_NUMBERS) text[name] = Number(sheet.*member);
  text["bends"] = nlohmann::json::array();
  for (const cv::Vec3d& bend : sheet.bends) {
    text["bends"].push_back({Number(bend[0]), Number(bend[1]), Number(bend[2])});
  }
  return text;
}

Verdict::Sheet SheetFrom(const nlohmann::json& text) {
  Verdict::Sheet sheet;
  sheet.model = text.at("model").get<std::string>();
  for (const auto& point : text.at("points")) {
    sheet.points.emplace_back(NumberFrom(point.at(0)), NumberFrom(point.at(1)), NumberFrom(point.at(2)));
  }
  for (const auto& [name, member] : SHEET_NUMBERS) sheet.*member = NumberFrom(text.at(name));
  for (const auto& bend : text.at("bends")) {
    sheet.bends.emplace_back(NumberFrom(bend.at(0)), NumberFrom(bend.at(1)), NumberFrom(bend.at(2)));
  }
  return sheet;
}

Grade GradeFrom(const std::string& words) {
  for (const auto& [grade, name] : GRADES) {
    if (words == name) return grade;
  }
  throw std::invalid_argument("'" + words + "' is no grade");
}

Verdict VerdictFrom(const nlohmann::json& text) {
  Verdict verdict;
  verdict.grade = GradeFrom(text.at("grade").get<std::string>());
  for (const auto& [name, member] : COUNTS) verdict.*member = text.at(name).get<int>();
  for (const auto& [name, member] : NUMBERS) verdict.*member = NumberFrom(text.at(name));
  for (const auto& [name, member] : MATRICES) verdict.*member = MatrixFrom(text.at(name));
  if (text.contains("sheet")) verdict.sheet = SheetFrom(text.at("sheet"));
  const auto& moved = text.at("principalPointChange");
  verdict.principalPointChange = {NumberFrom(moved.at(0)), NumberFrom(moved.at(1))};
  for (const auto& remark : text.at("remarks")) {
    verdict.remarks.push_back(
        {remark.at("reason").get<std::string>(), remark.at("advice").get<std::string>()});
  }
  for (const auto& left : text.at("leftOut")) {
    verdict.leftOut.push_back({left.at("view").get<size_t>(), left.at("point").get<int>(),
                               NumberFrom(left.at("residual")), left.at("reason").get<std::string>()});
  }
  return verdict;
}

}  // namespace

double CalibrationVerdict::ExpectedInData() const {
  return std::hypot(std::max(deviationInData, jackknifeInData), systematicInData);
}

std::string CalibrationVerdict::ToString() const {
  for (const auto& [known, words] : GRADES) {
    if (grade == known) return words;
  }
  return "no result";
}

std::string CalibrationVerdict::Sheet::ToJson() const {
  return TextOf(*this).dump();
}

CalibrationVerdict::Sheet CalibrationVerdict::Sheet::FromVerdict(const std::string& text) {
  try {
    return SheetFrom(nlohmann::json::parse(text).at("sheet"));
  } catch (const nlohmann::json::exception& fault) {
    throw std::invalid_argument(std::string("the text has no shape of a sheet: ") + fault.what());
  }
}

std::string CalibrationVerdict::ToJson() const {
  nlohmann::json text;
  text["grade"] = ToString();
  for (const auto& [name, member] : COUNTS) text[name] = this->*member;
  for (const auto& [name, member] : NUMBERS) text[name] = Number(this->*member);
  for (const auto& [name, member] : MATRICES) text[name] = Rows(this->*member);
  text["principalPointChange"] = {Number(principalPointChange.x), Number(principalPointChange.y)};
  if (!sheet.points.empty()) text["sheet"] = TextOf(sheet);
  text["remarks"] = nlohmann::json::array();
  for (const Remark& remark : remarks) {
    text["remarks"].push_back({{"reason", remark.reason}, {"advice", remark.advice}});
  }
  text["leftOut"] = nlohmann::json::array();
  for (const LeftOut& left : leftOut) {
    text["leftOut"].push_back({{"view", left.view},
                               {"point", left.point},
                               {"residual", Number(left.residual)},
                               {"reason", left.reason}});
  }
  return text.dump();
}

CalibrationVerdict CalibrationVerdict::FromJson(const std::string& text) {
  try {
    return VerdictFrom(nlohmann::json::parse(text));
  } catch (const nlohmann::json::exception& fault) {
    throw std::invalid_argument(std::string("the text is no verdict: ") + fault.what());
  }
}
