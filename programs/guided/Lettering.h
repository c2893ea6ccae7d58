/// Large, outlined text that fits its room.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace guided {

/// Text in the size and the lines in which it fits a room. Sizes are heights of capital letters, pixels.
struct Lettering {
  std::vector<std::string> lines;  ///< ASCII; what is not is a question mark each
  double size = 0.0;
  double pitch = 0.0;  ///< from line to line, in sizes
  double width = 1.0;  ///< of the letters, share of their usual width
  cv::Size extent;     ///< of all lines with everything below the last one, and with the outline

  bool Empty() const { return lines.empty(); }
};

/// What the letters may measure. Lines are broken where words end, and words only where one alone is too
/// wide.
struct LetterSizes {
  double largest = 20.0;
  /// Down to this size text is kept in one line rather than broken.
  double leastInOneLine = 20.0;
  /// Down to this size lines are broken rather than words; below it both, so that all of the text is there.
  double leastWithWholeWords = 10.0;
  /// From line to line, in heights of capital letters.
  double pitch = 1.5;
  /// Down to this share of their usual width, letters of `leastInOneLine` are made narrow rather than the
  /// line broken.
  double narrowest = 1.0;
};

/// The largest letters in which the text fits the room. A line feed in the text begins a line. An empty text
/// and an empty room have no lines.
Lettering FitText(const std::string& text, const cv::Size& room, const LetterSizes& sizes);

enum class Align { Left, Centre, Right };

struct Ink {
  cv::Scalar colour = cv::Scalar::all(255);
  cv::Scalar outline = cv::Scalar::all(0);  ///< a rim around each letter
};

/// Writes into the box, the lines one below the other and all of them in the middle of its height.
void WriteText(const Lettering& text, const cv::Rect& box, Align align, const Ink& ink, cv::Mat& picture);

/// The box that the text takes when it is written into that one.
cv::Rect TextBox(const Lettering& text, const cv::Rect& box, Align align);

}  // namespace guided
