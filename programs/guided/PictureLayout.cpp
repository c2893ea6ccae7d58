/// Where things are in the live picture.
#include <algorithm>
#include <cmath>

#include "guided/Picture.h"
#include "guided/Shapes.h"

namespace guided {

namespace {

constexpr double INSTRUCTION = 1.0 / 13.8;  ///< height of its capital letters, share of the window's
constexpr double LARGEST_INSTRUCTION = 1.0 / 9.0;
constexpr double LINE = 1.5;        ///< from line to line, in heights of capital letters
constexpr double NARROWEST = 0.62;  ///< width of its letters, share of the usual one
constexpr double HEAD = 0.15;       ///< of the window's height, for an instruction of one line
const char* const LONGEST_USUAL = "Tilt the bottom edge away from the camera";

class Arranging {
 public:
  explicit Arranging(const Picture& picture) : picture_(picture) {
    layout_.picture = {std::max(160, picture.window.width), std::max(120, picture.window.height)};
    margin_ = std::max(4, layout_.picture.height / 50);
  }

  PictureLayout Arrange() {
    rest_ = {cv::Point(), layout_.picture};
    ArrangeKeys();
    if (!picture_.notice.empty()) {
      ArrangeNotice();
      return std::move(layout_);
    }
    ArrangeHead();
    ArrangeImages();
    ArrangeSide();
    ArrangeMap();
    ArrangeLabels();
    return std::move(layout_);
  }

 private:
  double Height(double share) const { return share * layout_.picture.height; }
  int Pixels(double share) const { return cvRound(Height(share)); }

  cv::Rect CutFromTop(int height) {
    height = std::min(height, rest_.height);
    const cv::Rect cut(rest_.x, rest_.y, rest_.width, height);
    rest_ = {rest_.x, rest_.y + height, rest_.width, rest_.height - height};
    return cut;
  }

  cv::Rect CutFromBottom(int height) {
    height = std::min(height, rest_.height);
    rest_.height -= height;
    return {rest_.x, rest_.br().y, rest_.width, height};
  }

  /// The text in that box, if there is one.
  void Put(const std::string& what, const std::string& text, const cv::Rect& box, const LetterSizes& sizes,
           Align align) {
    Lettering fitted = FitText(text, box.size(), sizes);
    if (fitted.Empty()) return;
    const cv::Rect taken = TextBox(fitted, box, align);
    layout_.texts.push_back({what, std::move(fitted), taken, align});
  }

  /// In a window that is narrow for its height they take more lines, and more room.
  void ArrangeKeys() {
    if (picture_.keys.empty()) return;
    const double largest = std::min(Height(0.026), 26.0);
    for (const double share : {0.065, 0.12, 0.17}) {
      const cv::Rect place(margin_, layout_.picture.height - Pixels(share),
                           layout_.picture.width - 2 * margin_, Pixels(share));
      layout_.keys = PlaceKeys(picture_.keys, place, largest);
      const double size = layout_.keys.empty() ? 0.0 : layout_.keys.front().name.size;
      if (size >= 0.016 * layout_.picture.height || share > 0.15) {
        CutFromBottom(Pixels(share));
        return;
      }
    }
  }

  void ArrangeNotice() {
    const cv::Rect middle = Shrunk(rest_, margin_ * 3);
    const int icon = Pixels(0.16);
    layout_.head = rest_;
    layout_.icon = {middle.x + (middle.width - icon) / 2, middle.y + middle.height / 6, icon, icon};
    const int top = layout_.icon.br().y + margin_;
    const cv::Rect box(middle.x, top, middle.width, std::max(0, middle.br().y - middle.height / 8 - top));
    Put("notice", picture_.notice, box, {Height(0.1), Height(0.09), Height(INSTRUCTION)}, Align::Centre);
  }

  /// As high as usual instructions need, whatever this one is, so that the images stay where they are; higher
  /// only for one that would not be legible. Every line of it is taken from the images: rather than in two
  /// lines, instructions are written in narrow letters.
  void ArrangeHead() {
    const double letter = Height(INSTRUCTION);
    const int icon = cvRound(1.2 * letter);
    const int width = std::max(1, rest_.width - icon - 3 * margin_);
    const int highest = Pixels(0.48);
    // Only what has one line is written larger than it must be.
    LetterSizes sizes{Height(LARGEST_INSTRUCTION), letter, letter};
    sizes.narrowest = NARROWEST;
    const LetterSizes least{letter, letter, letter, sizes.pitch, NARROWEST};
    const size_t usual = FitText(LONGEST_USUAL, {width, highest}, least).lines.size();
    const double lines = std::clamp(static_cast<double>(usual), 1.0, 3.0);
    int height = lines > 1.0 ? cvRound((lines * LINE + 0.6) * letter) : Pixels(HEAD);
    const auto fit = [&] { return FitText(picture_.instruction, {width, height}, sizes); };
    if (fit().lines.size() > 1) sizes.largest = letter;
    while (height < highest && !picture_.instruction.empty() && fit().size < letter) {
      height = std::min(highest, height + cvRound(LINE * letter));
    }
    layout_.head = CutFromTop(height);
    layout_.icon = {margin_, layout_.head.y + (height - icon) / 2, icon, icon};
    const cv::Rect box(layout_.icon.br().x + margin_, layout_.head.y, width, height);
    Put("instruction", picture_.instruction, box, sizes, Align::Left);
  }

  bool HasCloseness() const { return picture_.closeness && std::isfinite(*picture_.closeness); }

  std::string PercentText() const {
    return std::to_string(cvRound(100.0 * std::clamp(*picture_.closeness, 0.0, 1.0))) + " %";
  }

  /// The bar in a row across the window: its words left of it, and how much it is right of it.
  void ArrangeBarAcross(const cv::Rect& place) {
    if (!HasCloseness()) return;
    const cv::Rect row = Shrunk(place, std::min(margin_, Pixels(0.006)));
    const int words = std::min(row.width / 5, cvRound(row.height * 3.4));
    const int percent = std::min(row.width / 6, cvRound(row.height * 2.2));
    const LetterSizes sizes{0.55 * row.height, 0.0, 0.0};
    const cv::Rect left(margin_, row.y, words, row.height);
    const cv::Rect right(row.br().x - percent - margin_ / 2, row.y, percent, row.height);
    Put("match", "Match", left, sizes, Align::Left);
    Put("percent", PercentText(), right, sizes, Align::Right);
    layout_.bar = {left.br().x, row.y + row.height / 6, right.x - left.br().x - margin_ / 2,
                   row.height * 2 / 3};
  }

  /// The bar at the top of the panel, below its words and how much it is; the panel has the rest.
  void ArrangeBarAbovePanel() {
    cv::Rect& panel = layout_.side;
    const int all = ColumnPixels(0.145);
    const cv::Rect words(panel.x, panel.y, panel.width, all / 2);
    const cv::Rect bar(panel.x, words.br().y, panel.width, all * 3 / 10);
    panel = {panel.x, panel.y + all, panel.width, panel.height - all};
    if (!HasCloseness()) return;
    const LetterSizes sizes{Height(0.04), 0.0, 0.0};
    const int half = words.width / 2;
    Put("match", "Match", {words.x, words.y, half, words.height}, sizes, Align::Left);
    Put("percent", PercentText(), {words.x + half, words.y, words.width - half, words.height}, sizes,
        Align::Right);
    layout_.bar = bar;
  }

  /// The images' shapes beside each other.
  std::vector<cv::Rect> HalvesIn(const cv::Rect& place) const {
    const size_t count = std::max<size_t>(1, picture_.cameras.size());
    const int gap = count > 1 ? std::max(2, margin_ / 3) : 0;
    const int width = (place.width - gap * static_cast<int>(count - 1)) / static_cast<int>(count);
    std::vector<cv::Rect> halves;
    halves.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      const cv::Rect half(place.x + static_cast<int>(i) * (width + gap), place.y, width, place.height);
      const bool known = i < picture_.cameras.size() && !picture_.cameras[i].image.empty();
      halves.push_back(PlaceInside(half, known ? picture_.cameras[i].image.size() : cv::Size(4, 3)));
    }
    return halves;
  }

  static int AreaOf(const std::vector<cv::Rect>& halves) {
    int area = 0;
    for (const cv::Rect& half : halves) area += half.area();
    return area;
  }

  /// Closeness, view and precision are right of the images, or above and below them, where the images become
  /// larger.
  void ArrangeImages() {
    const int gap = margin_ / 3;
    const cv::Rect whole(rest_.x + margin_, rest_.y + gap, std::max(1, rest_.width - 2 * margin_),
                         std::max(1, rest_.height - gap));
    cv::Rect beside = whole;
    beside.width = std::max(1, whole.width - whole.width * 23 / 100 - margin_);
    const int bar = Pixels(0.06);
    const cv::Rect between(whole.x, rest_.y + bar, whole.width,
                           std::max(1, rest_.height - bar - Pixels(0.1)));
    std::vector<cv::Rect> halves = HalvesIn(beside);
    if (AreaOf(halves) >= AreaOf(HalvesIn(between))) {
      // As far left as they go: the panel takes the rest.
      const int shift = halves.front().x - whole.x;
      for (cv::Rect& half : halves) half.x -= shift;
      const int from = halves.back().br().x + margin_;
      layout_.side = {from, whole.y, whole.br().x - from, whole.height};
      images_ = {whole.x, whole.y, from - margin_ - whole.x, whole.height};
      column_ = true;
    } else {
      ArrangeBarAcross(CutFromTop(bar));
      halves = HalvesIn(between);
      layout_.side = {whole.x, between.br().y, whole.width, rest_.br().y - between.br().y};
      images_ = between;
    }
    layout_.halves = std::move(halves);
  }

  std::string ViewText() const {
    if (picture_.view < 1) return "";
    const std::string view = "View " + std::to_string(picture_.view);
    return picture_.goal > 0 ? view + " of " + std::to_string(picture_.goal) : view;
  }

  void ArrangeSide() {
    if (column_) {
      ArrangeColumn();
    } else {
      ArrangeRow();
    }
  }

  bool HasSteps() const { return picture_.view > 0 && picture_.goal > 0 && picture_.goal <= 60; }

  /// Less where the column is low, so that a map still has some room below.
  int ColumnPixels(double share) const {
    constexpr double ENOUGH = 0.66;
    return cvRound(share * std::min(Height(1.0), images_.height / ENOUGH));
  }

  void ArrangeColumn() {
    ArrangeBarAbovePanel();
    cv::Rect column = layout_.side;
    const auto cut = [&](double share) {
      const int height = std::min(column.height, ColumnPixels(share));
      const cv::Rect box(column.x, column.y, column.width, height);
      column = {column.x, column.y + height, column.width, column.height - height};
      return box;
    };
    Put("view", ViewText(), cut(0.11), {Height(0.06), Height(0.02), Height(0.02)}, Align::Left);
    const cv::Rect steps = cut(0.035);
    if (HasSteps()) layout_.steps = steps;
    cut(0.02);
    // Each part of it has a line of its own here.
    std::string precision = picture_.precision;
    for (size_t at = 0; (at = precision.find(", ", at)) != std::string::npos;) precision[at + 1] = '\n';
    Put("precision", precision, cut(0.14), {Height(0.04), Height(0.025), Height(0.025)}, Align::Left);
    cut(0.02);
    free_ = column;
  }

  void ArrangeRow() {
    const cv::Rect row = layout_.side;
    const cv::Rect left(row.x, row.y, row.width * 2 / 5, row.height);
    const cv::Rect right(row.x + row.width / 2, row.y, row.width - row.width / 2, row.height);
    const int below = HasSteps() ? row.height * 3 / 10 : 0;
    const LetterSizes sizes{Height(0.05), Height(0.025), Height(0.02)};
    Put("view", ViewText(), {left.x, left.y, left.width, left.height - below}, sizes, Align::Left);
    if (HasSteps()) layout_.steps = {left.x, left.br().y - below, left.width, below * 3 / 4};
    Put("precision", picture_.precision, right, sizes, Align::Right);
  }

  void ArrangeMap() {
    if (picture_.map.empty() || picture_.mapPlace == MapPlace::None) return;
    if (picture_.mapPlace == MapPlace::Whole) {
      layout_.halves.clear();
      layout_.map = PlaceInside(images_, picture_.map.size());
    } else if (column_) {
      layout_.map = PlaceInside(free_, picture_.map.size());
    } else {
      const cv::Size size(images_.width * 23 / 100, images_.height * 2 / 5);
      const cv::Rect place = PlaceInside({cv::Point(), size}, picture_.map.size());
      layout_.map = place + (images_.br() - place.br());
    }
  }

  /// What is written in the images: names at their upper edges, the message at the lower edge of all.
  void ArrangeLabels() {
    for (size_t i = 0; i < layout_.halves.size() && i < picture_.cameras.size(); ++i) {
      const CameraPicture& camera = picture_.cameras[i];
      std::string label = camera.name;
      if (camera.undistorted) label += label.empty() ? "without distortion" : ", without distortion";
      if (camera.image.empty()) label += label.empty() ? "no picture yet" : ": no picture yet";
      const cv::Rect half = Shrunk(layout_.halves[i], margin_ / 2 + 2);
      const cv::Rect box(half.x, half.y, half.width, std::min(half.height / 4, Pixels(0.06)));
      Put("label", label, box, {Height(0.032), 0.0, 0.0}, Align::Left);
    }
    if (!(picture_.messageStrength > 0.0)) return;
    const int height = std::min(images_.height / 3, Pixels(0.12));
    const int aside = images_.width * 26 / 100;
    const cv::Rect box(images_.x + aside, images_.br().y - height - margin_, images_.width - 2 * aside,
                       height);
    Put("message", picture_.message, box, {Height(0.05), Height(0.035), Height(0.03)}, Align::Centre);
  }

  const Picture& picture_;
  PictureLayout layout_;
  cv::Rect rest_;    ///< what is not given away yet
  cv::Rect images_;  ///< what the images have
  cv::Rect free_;    ///< of the column, below its texts
  bool column_ = false;
  int margin_ = 0;
};

}  // namespace

PictureLayout LayoutOf(const Picture& picture) {
  return Arranging(picture).Arrange();
}

}  // namespace guided
