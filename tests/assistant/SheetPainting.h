/// The target as it must look, told from geometry alone: what the drawing is compared with.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace unit {

/// The printed sheet, written out: circles row by row, four corners, the ends of the cut.
std::vector<cv::Point2f> SheetCircles();
std::vector<cv::Point2f> SheetOutline();

/// A painting of the sheet on a frame of one colour, told pixel by pixel.
class SheetPainting {
 public:
  /// The homography leads from the sheet to the frame; `weight` is that of the figure.
  SheetPainting(const cv::Matx33d& homography, int radius, const cv::Vec3b& background, double weight);

  /// What is certain of a pixel.
  enum class Part {
    Outside,  ///< clearly outside the paper
    Paper,    ///< clearly on the paper and off every line
    Corner,   ///< clearly within the filled corner
    Edge,     ///< in the middle of a line of the outline
    Unsure    ///< near some line, where anti-aliasing decides
  };
  Part PartAt(const cv::Point2d& pixel) const;

  /// The colours of the parts (Edge: as if the line covered the pixel wholly).
  cv::Vec3d ColourOf(Part part) const;
  /// The colour of a circle's rim, where it covers a pixel wholly.
  cv::Vec3d RimColour(std::size_t circle) const;

  const std::vector<cv::Point2d>& Circles() const { return circles_; }

 private:
  cv::Vec3d Blended(const cv::Vec3d& figure, bool onPaper) const;

  std::vector<cv::Point2d> circles_;
  std::vector<cv::Point2d> outline_;
  int radius_;
  cv::Vec3d background_;
  double weight_;
};

}  // namespace unit
