/// The shape of a sheet that an earlier calibration measured.
#include "common/SheetFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Verdict.h"

namespace common {

std::vector<cv::Point3d> GridPoints(const cv::Size& grid, float unit) {
  const auto step = static_cast<double>(unit);
  std::vector<cv::Point3d> points;
  points.reserve(static_cast<size_t>(grid.area()));
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) {
      points.emplace_back(step * (2 * column + row % 2), step * row, 0.0);
    }
  }
  return points;
}

std::vector<cv::Point3d> SheetPointsOf(const std::string& verdictFile) {
  std::ifstream file(verdictFile);
  // A folder can be opened, but not be read.
  if (!file || std::filesystem::is_directory(verdictFile)) throw std::invalid_argument("cannot be read");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    return CalibrationVerdict::Sheet::FromVerdict(text).points;
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("is no verdict on a calibration that measured the shape of its sheet");
  }
}

std::string FaultOfSheet(const std::vector<cv::Point3d>& points, const cv::Size& grid, float unit) {
  const std::vector<cv::Point3d> places = GridPoints(grid, unit);
  if (points.size() != places.size()) {
    return "has a sheet of " + std::to_string(points.size()) + " circles, not of " +
           std::to_string(places.size());
  }
  for (size_t i = 0; i < points.size(); ++i) {
    // No bend or printer moves a circle by half the distance of two rows.
    if (!(cv::norm(points[i] - places[i]) < 0.5 * static_cast<double>(unit)))
      return "has the shape of another sheet, or of one with another --hdist";
  }
  return "";
}

}  // namespace common
