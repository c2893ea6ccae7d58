/// The live picture of a guided calibration, drawn from values.
#include "guided/Picture.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "guided/Coverage.h"
#include "guided/Shapes.h"
#include "guided/SheetDrawing.h"

namespace guided {

namespace {

Icon IconOf(Tone tone) {
  switch (tone) {
    case Tone::Warning:
      return Icon::Attention;
    case Tone::Good:
      return Icon::Check;
    default:
      return Icon::GoOn;
  }
}

cv::Scalar ColourOf(Tone tone) {
  switch (tone) {
    case Tone::Warning:
      return palette::AMBER;
    case Tone::Good:
      return palette::GREEN;
    default:
      return palette::TEXT;
  }
}

/// 0 to 1; 0 for what is no number.
double Share(double value) {
  return std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0;
}

/// The picture while it is drawn.
class Drawing {
 public:
  Drawing(const Picture& picture, const PictureLayout& layout)
      : picture_(picture), layout_(layout), canvas_(layout.picture, CV_8UC3, palette::BACK) {}

  cv::Mat Finished() {
    if (picture_.notice.empty()) {
      Images();
      Map();
      Head();
      Bar();
      Steps();
    } else {
      DrawIcon(IconOf(picture_.tone), layout_.icon, ColourOf(picture_.tone), canvas_);
    }
    for (const PlacedText& text : layout_.texts) {
      if (text.what != "message") Text(text);
    }
    DrawKeys(layout_.keys, canvas_);
    Flash();
    // Over the flash, of which it often tells.
    for (const PlacedText& text : layout_.texts) {
      if (text.what == "message") Message(text);
    }
    return canvas_;
  }

 private:
  void Images() {
    for (size_t i = 0; i < layout_.halves.size(); ++i) {
      const cv::Rect& place = layout_.halves[i];
      if (place.empty()) continue;
      if (i < picture_.cameras.size() && !picture_.cameras[i].image.empty()) {
        Image(picture_.cameras[i], place);
      } else {
        FillBox(place, 0, palette::PANEL, 1.0, canvas_);
      }
    }
  }

  void Image(const CameraPicture& camera, const cv::Rect& place) {
    ShowImage(camera.image, place, canvas_);
    cv::Mat part = canvas_(place);
    if (camera.mirrored) cv::flip(part.clone(), part, 1);
    const ImageView view(camera.image.size(), place, camera.mirrored);
    DrawCoverage(camera.kept, camera.image.size(), view, part);
    DrawFound(camera.found, camera.weights, view, part);
    DrawTarget(camera.target, picture_.grid, view, picture_.tone == Tone::Good, part);
    MarkFirst(camera.found, camera.weights, view, part);
  }

  void Map() {
    if (layout_.map.empty()) return;
    ShowImage(picture_.map, layout_.map, canvas_);
    if (picture_.mapPlace == MapPlace::Inset) cv::rectangle(canvas_, layout_.map, palette::LINE, 2);
  }

  void Head() {
    FillBox(layout_.head, 0, palette::DARK, 1.0, canvas_);
    if (!picture_.instruction.empty()) {
      DrawIcon(IconOf(picture_.tone), layout_.icon, ColourOf(picture_.tone), canvas_);
    }
  }

  void Bar() {
    if (layout_.bar.empty() || !picture_.closeness) return;
    const cv::Rect& bar = layout_.bar;
    const double share = Share(*picture_.closeness);
    FillBox(bar, bar.height / 2, palette::LINE, 1.0, canvas_);
    const cv::Rect full(bar.x, bar.y, cvRound(share * bar.width), bar.height);
    const cv::Scalar& colour = share >= 1.0 ? palette::GREEN : palette::TARGET;
    if (full.width > 0) FillBox(full, bar.height / 2, colour, 1.0, canvas_);
  }

  /// One mark for each view: those before this one filled, this one with a rim.
  void Steps() {
    const cv::Rect& place = layout_.steps;
    if (place.empty()) return;
    const double pitch = static_cast<double>(place.width) / picture_.goal;
    const int gap = pitch > 6.0 ? std::max(2, cvRound(pitch / 6.0)) : 0;
    const int height = std::max(2, place.height * 6 / 10);
    for (int i = 0; i < picture_.goal; ++i) {
      const int from = place.x + cvRound(pitch * i);
      const int to = place.x + cvRound(pitch * (i + 1)) - gap;
      const cv::Rect mark(from, place.y + (place.height - height) / 2, std::max(1, to - from), height);
      const bool now = i + 1 == picture_.view;
      const cv::Scalar& colour = i + 1 < picture_.view ? palette::GREEN
                                 : now                 ? palette::TARGET
                                                       : palette::LINE;
      FillBox(mark, height / 3, colour, 1.0, canvas_);
    }
  }

  void Text(const PlacedText& text) {
    if (text.what == "label") {
      FillBox(text.box, text.box.height / 5, palette::DARK, 0.75, canvas_);
    }
    cv::Scalar colour = palette::TEXT;
    if (text.what == "instruction" || text.what == "notice") colour = ColourOf(picture_.tone);
    if (text.what == "precision" || text.what == "match" || text.what == "percent") colour = palette::QUIET;
    const bool onBack = text.what != "label" && text.what != "instruction";
    WriteText(text.text, text.box, text.align, {colour, onBack ? palette::BACK : palette::DARK}, canvas_);
  }

  /// Fades with everything that is part of it.
  void Message(const PlacedText& text) {
    const int margin = std::max(2, cvRound(text.text.size / 2.0));
    const cv::Rect panel = cv::Rect(text.box.tl() - cv::Point(margin, margin / 2),
                                    text.box.br() + cv::Point(margin, margin / 2)) &
                           cv::Rect(cv::Point(), canvas_.size());
    cv::Mat part = canvas_(panel);
    const cv::Mat below = part.clone();
    FillBox(panel, panel.height / 5, palette::DARK, 1.0, canvas_);
    WriteText(text.text, text.box, text.align, {palette::TEXT, palette::DARK}, canvas_);
    const double strength = Share(picture_.messageStrength);
    cv::addWeighted(part, strength, below, 1.0 - strength, 0.0, part);
  }

  /// Towards white, in a frame that stays longer than the white.
  void Flash() {
    const double strength = Share(picture_.flash);
    if (!(strength > 0.0)) return;
    canvas_.convertTo(canvas_, -1, 1.0 - 0.75 * strength, 0.75 * strength * 255.0);
    const int width = std::max(4, layout_.picture.height / 28);
    cv::Mat framed = canvas_.clone();
    cv::rectangle(framed, {cv::Point(), framed.size()}, palette::GREEN, 2 * width);
    const double shown = std::sqrt(strength);
    cv::addWeighted(framed, shown, canvas_, 1.0 - shown, 0.0, canvas_);
  }

  const Picture& picture_;
  const PictureLayout& layout_;
  cv::Mat canvas_;
};

}  // namespace

cv::Mat Draw(const Picture& picture) {
  const PictureLayout layout = LayoutOf(picture);
  return Drawing(picture, layout).Finished();
}

}  // namespace guided
