/// The page at the end of a guided calibration, drawn from values.
#include "guided/EndPage.h"

#include <opencv2/imgproc.hpp>

#include "guided/Residuals.h"
#include "guided/Shapes.h"

namespace guided {

namespace {

using Grade = CalibrationVerdict::Grade;

Icon IconOf(Grade grade) {
  switch (grade) {
    case Grade::Good:
      return Icon::Check;
    case Grade::WithCare:
      return Icon::Attention;
    case Grade::Worthless:
      return Icon::Cross;
    default:
      return Icon::Dash;
  }
}

cv::Scalar ColourOf(Grade grade) {
  switch (grade) {
    case Grade::Good:
      return palette::GREEN;
    case Grade::WithCare:
      return palette::AMBER;
    case Grade::Worthless:
      return palette::RED;
    default:
      return palette::QUIET;
  }
}

/// The image is darkened so that the arrows stand out.
void DrawWorst(const WorstView& worst, const cv::Rect& place, double zoom, cv::Mat& canvas) {
  if (place.empty()) return;
  cv::Mat part = canvas(place);
  part.setTo(palette::LINE);
  ShowImage(worst.image, place, canvas);
  if (!worst.image.empty()) part.convertTo(part, -1, 0.6, 0.0);
  const cv::Size frame = worst.image.empty() ? worst.frame : worst.image.size();
  if (frame.empty()) return;
  DrawResiduals(worst.points, worst.residuals, zoom, ImageView(frame, place), part);
}

void WriteTexts(const EndPageLayout& layout, const cv::Scalar& ofGrade, cv::Mat& canvas) {
  for (const PlacedText& text : layout.texts) {
    const bool heading = text.what == "verdict";
    const bool quiet = text.what == "files" || text.what == "deviation" || text.what == "number";
    const cv::Scalar& colour = heading ? ofGrade : quiet ? palette::QUIET : palette::TEXT;
    WriteText(text.text, text.box, text.align, {colour, heading ? palette::DARK : palette::BACK}, canvas);
  }
}

}  // namespace

cv::Mat Draw(const EndPage& page) {
  const EndPageLayout layout = LayoutOf(page);
  cv::Mat canvas(layout.picture, CV_8UC3, palette::BACK);
  FillBox(layout.head, 0, palette::DARK, 1.0, canvas);
  const cv::Scalar colour = ColourOf(page.grade);
  DrawIcon(IconOf(page.grade), layout.icon, colour, canvas);
  for (size_t i = 0; i < layout.maps.size(); ++i) ShowImage(page.maps[i], layout.maps[i], canvas);
  for (size_t i = 0; i < layout.worst.size(); ++i) {
    DrawWorst(page.worst[i], layout.worst[i], layout.zoom[i], canvas);
  }
  WriteTexts(layout, colour, canvas);
  DrawKeys(layout.keys, canvas);
  return canvas;
}

}  // namespace guided
