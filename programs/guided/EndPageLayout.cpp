/// Where things are on the page at the end.
#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "guided/EndPage.h"
#include "guided/Residuals.h"
#include "guided/Shapes.h"

namespace guided {

namespace {

/// The heading of a grade.
std::string HeadingOf(const EndPage& page) {
  if (!page.verdict.empty()) return page.verdict;
  CalibrationVerdict verdict;
  verdict.grade = page.grade;
  return "Verdict: " + verdict.ToString();
}

std::string CaptionOf(const WorstView& worst, double zoom) {
  std::ostringstream text;
  text << "Worst view: " << worst.name << ", RMS " << std::fixed << std::setprecision(2) << worst.rms
       << " px\n"
       << "arrows: residuals, " << std::setprecision(0) << zoom << " times as long";
  return text.str();
}

std::string Listed(const std::vector<std::string>& items, const std::string& before) {
  std::string text;
  for (const std::string& item : items) text.append(text.empty() ? "" : "\n").append(before).append(item);
  return text;
}

cv::Size FrameOf(const WorstView& worst) {
  if (!worst.image.empty()) return worst.image.size();
  return worst.frame.empty() ? cv::Size(4, 3) : worst.frame;
}

class Arranging {
 public:
  explicit Arranging(const EndPage& page) : page_(page) {
    layout_.picture = {std::max(160, page.window.width), std::max(120, page.window.height)};
    margin_ = std::max(4, layout_.picture.height / 40);
    largest_ = Height(0.03);
  }

  EndPageLayout Arrange() {
    ArrangeHead();
    const int foot = ArrangeKeys();
    const int top = layout_.head.br().y + margin_ / 2;
    const cv::Rect body(margin_, top, layout_.picture.width - 2 * margin_,
                        std::max(1, layout_.picture.height - foot - margin_ / 2 - top));
    const size_t pictures = page_.maps.size() + page_.worst.size();
    cv::Rect left = body;
    if (pictures > 0) left.width = body.width * (pictures > 2 ? 40 : 48) / 100;
    ArrangeTexts(left);
    ArrangePictures({left.br().x + margin_, body.y, body.br().x - left.br().x - margin_, body.height});
    return std::move(layout_);
  }

 private:
  double Height(double share) const { return share * layout_.picture.height; }

  void Put(const std::string& what, const std::string& text, const cv::Rect& box, const LetterSizes& sizes,
           Align align = Align::Left) {
    Lettering fitted = FitText(text, box.size(), sizes);
    if (fitted.Empty()) return;
    const cv::Rect taken = TextBox(fitted, box, align);
    layout_.texts.push_back({what, std::move(fitted), taken, align});
  }

  void ArrangeHead() {
    const int height = cvRound(Height(0.15));
    layout_.head = {0, 0, layout_.picture.width, height};
    layout_.icon = {margin_, height / 8, height * 3 / 4, height * 3 / 4};
    const int from = layout_.icon.br().x + margin_;
    Put("verdict", HeadingOf(page_), {from, 0, layout_.head.width - from - margin_, height},
        {Height(0.085), Height(0.05), Height(0.04)});
  }

  /// The height that they take.
  int ArrangeKeys() {
    if (page_.keys.empty()) return 0;
    const int height = cvRound(Height(0.065));
    const cv::Rect place(margin_, layout_.picture.height - height, layout_.picture.width - 2 * margin_,
                         height);
    layout_.keys = PlaceKeys(page_.keys, place, std::min(Height(0.026), 26.0));
    return height;
  }

  /// Each block has the height that its lines ask for, all of them in letters of about one size.
  void ArrangeTexts(cv::Rect column) {
    const std::string sentences = Listed(page_.sentences, "- ");
    const std::string files = page_.files.empty() ? "" : "Files written:\n" + Listed(page_.files, "");
    const double letters = column.width / (0.8 * largest_);
    const double linesOfSentences = LinesOf(page_.sentences, letters);
    const double linesOfFiles = files.empty() ? 0.0 : 1.0 + LinesOf(page_.files, letters);
    const double rows = 1.25 * static_cast<double>(page_.numbers.size());
    const double all = linesOfSentences + linesOfFiles + rows;
    if (!(all > 0.0)) return;
    const double perLine = std::min(1.85 * largest_, (column.height - 2.0 * margin_) / all);
    const auto cut = [&](double lines) {
      const cv::Rect box(column.x, column.y, column.width, cvRound(lines * perLine));
      const int below = std::min(column.height, box.height + (lines > 0.0 ? margin_ : 0));
      column = {column.x, column.y + below, column.width, column.height - below};
      return box;
    };
    const LetterSizes sizes{largest_, largest_, 0.6 * largest_, 1.75};
    Put("sentences", sentences, cut(linesOfSentences), sizes);
    ArrangeNumbers(cut(rows));
    Put("files", files, cut(linesOfFiles), sizes);
  }

  static double LinesOf(const std::vector<std::string>& items, double letters) {
    double lines = 0.0;
    for (const std::string& item : items) {
      lines += std::ceil((static_cast<double>(item.size()) + 2.0) / std::max(1.0, letters));
    }
    return lines;
  }

  static int WidthAt(const std::string& text, double size) {
    return FitText(text, {1 << 20, 1 << 20}, {size, size, size}).extent.width;
  }

  /// The widths of the table's columns in letters of that size.
  std::array<int, 3> ColumnsAt(double size) const {
    std::array<int, 3> widths{};
    for (const KnownNumber& number : page_.numbers) {
      widths[0] = std::max(widths[0], WidthAt(number.name, size));
      widths[1] = std::max(widths[1], WidthAt(number.value, size));
      widths[2] = std::max(widths[2], WidthAt(number.deviation, size));
    }
    return widths;
  }

  /// A table: values end below each other, deviations begin below each other.
  void ArrangeNumbers(const cv::Rect& place) {
    if (page_.numbers.empty() || place.empty()) return;
    const double row = static_cast<double>(place.height) / static_cast<double>(page_.numbers.size());
    double size = std::min(largest_, row / 2.0);
    std::array<int, 3> widths = ColumnsAt(size);
    const auto gap = [&] { return cvRound(size); };
    while (size > 1.0 && widths[0] + widths[1] + widths[2] + 2 * gap() > place.width) {
      size *= 0.95;
      widths = ColumnsAt(size);
    }
    for (size_t i = 0; i < page_.numbers.size(); ++i) {
      const int y = place.y + cvRound(row * static_cast<double>(i));
      const int height = cvRound(row * static_cast<double>(i + 1)) - (y - place.y);
      const LetterSizes sizes{size, size, size};
      int x = place.x;
      Put("number", page_.numbers[i].name, {x, y, widths[0], height}, sizes);
      x += widths[0] + gap();
      Put("value", page_.numbers[i].value, {x, y, widths[1], height}, sizes, Align::Right);
      x += widths[1] + gap();
      Put("deviation", page_.numbers[i].deviation, {x, y, widths[2], height}, sizes);
    }
  }

  /// One below the other, those of a pair in two columns.
  void ArrangePictures(const cv::Rect& area) {
    const size_t columns = std::max({page_.maps.size(), page_.worst.size(), size_t{1}});
    const int rows = (page_.maps.empty() ? 0 : 1) + (page_.worst.empty() ? 0 : 1);
    if (rows == 0) return;
    const auto cell = [&](size_t column, int row) {
      const auto count = static_cast<int>(columns);
      const auto at = static_cast<int>(column);
      const int width = (area.width - margin_ * (count - 1)) / count;
      const int height = (area.height - margin_ * (rows - 1)) / rows;
      return cv::Rect(area.x + at * (width + margin_), area.y + row * (height + margin_), width, height);
    };
    for (size_t i = 0; i < page_.maps.size(); ++i) {
      layout_.maps.push_back(PlaceInside(cell(i, 0), page_.maps[i].size()));
    }
    for (size_t i = 0; i < page_.worst.size(); ++i) ArrangeWorst(page_.worst[i], cell(i, rows - 1));
  }

  void ArrangeWorst(const WorstView& worst, cv::Rect cell) {
    const cv::Size frame = FrameOf(worst);
    const double zoom = ResidualZoom(worst.residuals, frame);
    const int words = std::min(cell.height / 3, cvRound(Height(0.075)));
    cell.height -= words;
    const cv::Rect place = PlaceInside(cell, frame);
    layout_.worst.push_back(place);
    layout_.zoom.push_back(zoom);
    Put("worst", CaptionOf(worst, zoom), {cell.x, place.br().y, cell.width, words}, {Height(0.026), 0.0, 0.0},
        Align::Centre);
  }

  const EndPage& page_;
  EndPageLayout layout_;
  int margin_ = 0;
  double largest_ = 0.0;  ///< height of the capital letters of what is no heading
};

}  // namespace

EndPageLayout LayoutOf(const EndPage& page) {
  return Arranging(page).Arrange();
}

}  // namespace guided
