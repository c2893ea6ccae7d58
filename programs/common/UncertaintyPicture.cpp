/// A picture of how sure a camera's projections are, place by place.
#include "common/UncertaintyPicture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <sstream>

namespace common {

const cv::Vec3b NO_DATA(150, 150, 150);

namespace {

const cv::Scalar INK(30, 30, 30);
const cv::Scalar PAPER(255, 255, 255);
constexpr int LONG_SIDE = 800;
constexpr int HEAD = 36;
constexpr int FOOT = 34;
constexpr int MARGIN = 12;
constexpr int SCALE_WIDTH = 22;
constexpr int SCALE_ROOM = 120;
constexpr double FONT = 0.45;

std::string PixelsText(double value) {
  std::ostringstream text;
  text << value << " px";
  return text.str();
}

void Write(cv::Mat& picture, const std::string& text, const cv::Point& origin, double size = FONT) {
  cv::putText(picture, text, origin, cv::FONT_HERSHEY_SIMPLEX, size, INK, 1, cv::LINE_AA);
}

/// From values to colours, in equal steps for equal factors.
class ColourScale {
 public:
  explicit ColourScale(const cv::Mat& values) {
    double low = std::numeric_limits<double>::infinity();
    double high = 0.0;
    for (int i = 0; i < static_cast<int>(values.total()); ++i) {
      const double value = values.at<double>(i / values.cols, i % values.cols);
      if (!(value > 0.0) || !std::isfinite(value)) continue;
      low = std::min(low, value);
      high = std::max(high, value);
    }
    any_ = high > 0.0;
    if (!any_) return;
    least_ = low / 1.05;
    most_ = std::max(high * 1.05, 2.0 * least_);
  }

  bool Any() const { return any_; }
  double Least() const { return least_; }
  double Most() const { return most_; }

  /// 0 at the least, 1 at the most.
  double Share(double value) const {
    return std::clamp(std::log(value / least_) / std::log(most_ / least_), 0.0, 1.0);
  }

  static cv::Mat Colours(const cv::Mat& shares) {
    cv::Mat steps;
    cv::Mat colours;
    shares.convertTo(steps, CV_8U, 255.0);
    cv::applyColorMap(steps, colours, cv::COLORMAP_PARULA);
    return colours;
  }

 private:
  double least_ = 1.0;
  double most_ = 2.0;
  bool any_ = false;
};

std::vector<cv::Point> Scaled(const std::vector<cv::Point2f>& polygon, double scale) {
  std::vector<cv::Point> scaled;
  scaled.reserve(polygon.size());
  for (const cv::Point2f& point : polygon) scaled.emplace_back(cv::Point2d(point) * scale);
  return scaled;
}

/// The cells that have data, others NaN; a cell counts when its middle is within the data's hull.
cv::Mat WithinData(const CalibrationVerdict& verdict, const cv::Size& frame) {
  cv::Mat within = verdict.deviationMap.clone();
  for (int row = 0; row < within.rows; ++row) {
    for (int column = 0; column < within.cols; ++column) {
      const cv::Point2f middle(static_cast<float>((column + 0.5) * frame.width / within.cols - 0.5),
                               static_cast<float>((row + 0.5) * frame.height / within.rows - 0.5));
      if (verdict.dataArea.size() < 3 || cv::pointPolygonTest(verdict.dataArea, middle, false) < 0.0) {
        within.at<double>(row, column) = std::numeric_limits<double>::quiet_NaN();
      }
    }
  }
  return within;
}

/// The map's part of the picture while it is drawn.
class MapDrawing {
 public:
  MapDrawing(const CalibrationVerdict& verdict, const cv::Size& frame, const ColourScale& scale,
             cv::Mat picture)
      : picture_(std::move(picture)), scale_(scale), zoom_(static_cast<double>(picture_.cols) / frame.width) {
    hull_ = Scaled(verdict.dataArea, zoom_);
    picture_.setTo(NO_DATA);
    if (!scale.Any()) return;
    cv::Mat shares(verdict.deviationMap.size(), CV_32F, cv::Scalar(1.0));
    cv::Mat rays(shares.size(), CV_8U, cv::Scalar(0));
    for (int row = 0; row < shares.rows; ++row) {
      for (int column = 0; column < shares.cols; ++column) {
        const double value = verdict.deviationMap.at<double>(row, column);
        if (!std::isfinite(value)) continue;
        shares.at<float>(row, column) = static_cast<float>(scale.Share(value));
        rays.at<unsigned char>(row, column) = 255;
      }
    }
    cv::resize(shares, shares_, picture_.size(), 0.0, 0.0, cv::INTER_CUBIC);
    cv::resize(rays, known_, picture_.size(), 0.0, 0.0, cv::INTER_NEAREST);
    cv::Mat inside = cv::Mat::zeros(picture_.size(), CV_8U);
    if (hull_.size() > 2) cv::fillConvexPoly(inside, hull_, 255);
    known_ &= inside;
    ColourScale::Colours(shares_).copyTo(picture_, known_);
  }

  void Points(const std::vector<std::vector<cv::Point2d>>& seen) {
    for (const auto& view : seen) {
      for (const cv::Point2d& point : view)
        cv::circle(picture_, point * zoom_, 1, INK, cv::FILLED, cv::LINE_AA);
    }
    if (hull_.size() > 2) cv::polylines(picture_, hull_, true, PAPER, 2, cv::LINE_AA);
  }

  void Lines() {
    if (!scale_.Any()) return;
    // Where the colours end is no line of equal uncertainty.
    cv::Mat inner;
    cv::erode(known_, inner, cv::Mat(), cv::Point(-1, -1), 3, cv::BORDER_CONSTANT, 0);
    for (const double level : UncertaintyLevels(scale_.Least(), scale_.Most())) {
      const cv::Mat above = shares_ > scale_.Share(level);
      std::vector<std::vector<cv::Point>> contours;
      cv::findContours(above, contours, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
      std::vector<cv::Point> places;
      for (const auto& contour : contours) Line(contour, inner, places);
      Label(PixelsText(level), places);
    }
    for (const auto& [text, box] : labels_) {
      cv::rectangle(picture_, box, PAPER, cv::FILLED);
      Write(picture_, text, {box.x + 3, box.br().y - 5});
    }
  }

 private:
  void Line(const std::vector<cv::Point>& contour, const cv::Mat& inner, std::vector<cv::Point>& places) {
    for (size_t i = 0; i < contour.size(); ++i) {
      const cv::Point& from = contour[i];
      const cv::Point& to = contour[(i + 1) % contour.size()];
      if (inner.at<unsigned char>(from) == 0 || inner.at<unsigned char>(to) == 0) continue;
      cv::line(picture_, from, to, PAPER, 1, cv::LINE_AA);
      places.push_back(from);
    }
  }

  /// Beside the line's middle, or as near to it as no other label is.
  void Label(const std::string& text, const std::vector<cv::Point>& places) {
    constexpr size_t SHORT = 30;
    if (places.size() < SHORT) return;
    int below = 0;
    const cv::Size size = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, FONT, 1, &below) + cv::Size(6, 9);
    for (size_t i = 0; i < places.size(); ++i) {
      const cv::Point& place = places[(places.size() / 2 + i) % places.size()];
      const cv::Rect box(place - cv::Point(size.width / 2, size.height / 2), size);
      const bool fits = (box & cv::Rect(cv::Point(), picture_.size())) == box;
      const bool free = std::none_of(labels_.begin(), labels_.end(),
                                     [&](const auto& other) { return (other.second & box).area() > 0; });
      if (!fits || !free) continue;
      labels_.emplace_back(text, box);
      return;
    }
  }

  cv::Mat picture_;
  const ColourScale& scale_;
  double zoom_;
  cv::Mat shares_;
  cv::Mat known_;
  std::vector<cv::Point> hull_;
  std::vector<std::pair<std::string, cv::Rect>> labels_;
};

void DrawScale(const ColourScale& scale, const cv::Rect& place, cv::Mat& picture) {
  if (!scale.Any()) {
    picture(place).setTo(NO_DATA);
    return;
  }
  cv::Mat shares(place.size(), CV_32F);
  for (int row = 0; row < shares.rows; ++row) {
    shares.row(row) = 1.0 - static_cast<double>(row) / (shares.rows - 1);
  }
  ColourScale::Colours(shares).copyTo(picture(place));
  for (const double level : UncertaintyLevels(scale.Least(), scale.Most())) {
    const int y = place.y + cvRound((1.0 - scale.Share(level)) * (place.height - 1));
    cv::line(picture, {place.br().x, y}, {place.br().x + 5, y}, INK, 1);
    Write(picture, PixelsText(level), {place.br().x + 9, y + 5});
  }
}

}  // namespace

UncertaintyLayout::UncertaintyLayout(const cv::Size& frame) {
  const double zoom = static_cast<double>(LONG_SIDE) / std::max(frame.width, frame.height);
  map = {MARGIN, HEAD, std::max(1, cvRound(frame.width * zoom)), std::max(1, cvRound(frame.height * zoom))};
  scale = {map.br().x + MARGIN, map.y, SCALE_WIDTH, map.height};
  picture = {std::max(map.br().x + SCALE_ROOM, LONG_SIDE), map.br().y + FOOT};
}

std::vector<double> UncertaintyLevels(double least, double most) {
  std::vector<double> levels;
  if (!(least > 0.0) || !(most >= least) || !std::isfinite(most)) return levels;
  for (int power = static_cast<int>(std::floor(std::log10(least))); std::pow(10.0, power) <= most; ++power) {
    for (const double step : {1.0, 2.0, 5.0}) {
      const double level = step * std::pow(10.0, power);
      if (level >= least && level <= most) levels.push_back(level);
    }
  }
  return levels;
}

cv::Mat DrawUncertainty(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& title) {
  const UncertaintyLayout layout(frame);
  cv::Mat picture(layout.picture, CV_8UC3, PAPER);
  const ColourScale scale(verdict.deviationMap.empty() ? cv::Mat() : WithinData(verdict, frame));
  MapDrawing drawing(verdict, frame, scale, picture(layout.map));
  drawing.Points(seen);
  drawing.Lines();
  DrawScale(scale, layout.scale, picture);
  const std::string usual = "Standard deviation of projections. Verdict: " + verdict.ToString();
  Write(picture, title.empty() ? usual : title, {MARGIN, HEAD - 13}, 0.55);
  Write(picture, "dots: circles that were seen    white line: around them    grey: no circles seen",
        {MARGIN, layout.picture.height - 12});
  return picture;
}

}  // namespace common
