/// Large, outlined text that fits its room.
#include "guided/Lettering.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace guided {

namespace {

constexpr int FONT = cv::FONT_HERSHEY_SIMPLEX;
constexpr double CAPITAL = 21.0;  ///< height of the font's capital letters at scale 1, pixels
constexpr double ABOVE = 0.27;    ///< room above the first line for brackets, in heights of capital letters
constexpr double BLOCK = 1.75;    ///< height of one line with what is above and below its letters
constexpr int SPARE = 2;  ///< pixels at all sides: letters begin between pixels, and their edges are soft
constexpr double STEP = 0.97;       ///< from one size that is tried to the next
constexpr double SMALLEST = 0.5;    ///< pixels; smaller ones are no text any more
constexpr double SPACE_LESS = 6.0;  ///< by which spaces are narrower than the font has them, at scale 1
constexpr double LARGE = 40.0;      ///< pixels; larger letters have bolder strokes
constexpr double BOLD_SHARE = 7.0;
constexpr double STROKE_SHARE = 10.5;  ///< by which the strokes are thinner than the letters are high
constexpr double RIM_SHARE = 10.0;

int StrokeOf(double size) {
  return std::max(1, cvRound(size / (size < LARGE ? STROKE_SHARE : BOLD_SHARE)));
}

int RimOf(double size) {
  return std::max(1, cvRound(size / RIM_SHARE));
}

/// From the text's left edge to where a letter after it begins.
double Advance(const std::string& text, double size) {
  int below = 0;
  const int width = cv::getTextSize(text, FONT, size / CAPITAL, 0, &below).width;
  const auto spaces = static_cast<double>(std::count(text.begin(), text.end(), ' '));
  return width - spaces * SPACE_LESS * size / CAPITAL;
}

int WidthOf(const std::string& line, double size) {
  return static_cast<int>(std::ceil(Advance(line, size))) + StrokeOf(size) + 2 * (RimOf(size) + SPARE);
}

cv::Size ExtentOf(const std::vector<std::string>& lines, double size, double pitch) {
  int width = 0;
  for (const std::string& line : lines) width = std::max(width, WidthOf(line, size));
  const double height = (pitch * static_cast<double>(lines.size() - 1) + BLOCK) * size;
  return {width, static_cast<int>(std::ceil(height)) + 2 * (RimOf(size) + SPARE)};
}

bool Fits(const std::vector<std::string>& lines, double size, double pitch, const cv::Size& room) {
  const cv::Size extent = ExtentOf(lines, size, pitch);
  return extent.width <= room.width && extent.height <= room.height;
}

/// What the font can write: one question mark for each character that it cannot.
std::vector<std::string> Paragraphs(const std::string& text) {
  std::vector<std::string> paragraphs(1);
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (character == '\n') {
      paragraphs.emplace_back();
    } else if (code == '\t') {
      paragraphs.back() += ' ';
    } else if (code >= 32 && code < 127) {
      paragraphs.back() += character;
    } else if ((code & 0xC0U) != 0x80U) {  // no further byte of a character that has begun
      paragraphs.back() += '?';
    }
  }
  return paragraphs;
}

/// A unit stays with its number.
bool Belongs(const std::string& word, const std::string& before) {
  const char last = before.empty() ? ' ' : before.back();
  return last >= '0' && last <= '9' && (word.compare(0, 2, "px") == 0 || word.front() == '%' || word == "s");
}

std::vector<std::string> WordsOf(const std::string& line) {
  std::vector<std::string> words;
  for (size_t at = 0; at < line.size();) {
    const size_t end = std::min(line.find(' ', at), line.size());
    const std::string word = line.substr(at, end - at);
    if (!word.empty() && !words.empty() && Belongs(word, words.back())) {
      words.back() += " " + word;
    } else if (!word.empty()) {
      words.push_back(word);
    }
    at = end + 1;
  }
  return words;
}

/// Cuts off the front of a word as far as it fits; at least one letter.
std::string TakeFront(std::string& word, double size, int width) {
  size_t count = 1;
  while (count < word.size() && WidthOf(word.substr(0, count + 1), size) <= width) ++count;
  std::string front = word.substr(0, count);
  word.erase(0, count);
  return front;
}

/// Lines of that width, as full as they can be. Words that are wider are broken when they may be.
std::vector<std::string> Broken(const std::string& paragraph, double size, int width, bool breakWords) {
  std::vector<std::string> lines(1);
  for (std::string word : WordsOf(paragraph)) {
    const std::string longer = lines.back().empty() ? word : lines.back() + " " + word;
    if (WidthOf(longer, size) <= width) {
      lines.back() = longer;
      continue;
    }
    if (!lines.back().empty()) lines.emplace_back();
    while (breakWords && word.size() > 1 && WidthOf(word, size) > width) {
      lines.back() = TakeFront(word, size, width);
      lines.emplace_back();
    }
    lines.back() = word;
  }
  return lines;
}

/// The same number of lines, as even as they can be: no single word is left for the last one.
std::vector<std::string> Balanced(const std::string& paragraph, double size, int width, bool breakWords) {
  std::vector<std::string> best = Broken(paragraph, size, width, breakWords);
  if (best.size() < 2) return best;
  int tooNarrow = 0;
  while (width - tooNarrow > 1) {
    const int middle = (tooNarrow + width) / 2;
    std::vector<std::string> lines = Broken(paragraph, size, middle, false);
    const bool even = lines.size() == best.size() && ExtentOf(lines, size, 1.0).width <= middle;
    if (even) {
      best = std::move(lines);
      width = middle;
    } else {
      tooNarrow = middle;
    }
  }
  return best;
}

std::vector<std::string> AllBroken(const std::vector<std::string>& paragraphs, double size, int width,
                                   bool breakWords) {
  std::vector<std::string> lines;
  for (const std::string& paragraph : paragraphs) {
    for (std::string& line : Balanced(paragraph, size, width, breakWords)) lines.push_back(std::move(line));
  }
  return lines;
}

Lettering Set(std::vector<std::string> lines, double size, double pitch, double width = 1.0) {
  Lettering text;
  text.extent = ExtentOf(lines, size, pitch);
  text.extent.width = cvCeil(width * text.extent.width);
  text.lines = std::move(lines);
  text.size = size;
  text.pitch = pitch;
  text.width = width;
  return text;
}

/// The share of its usual width that the text may take in that room.
double ShareOf(const cv::Size& extent, const cv::Size& room) {
  return extent.height > room.height ? 0.0 : std::min(1.0, static_cast<double>(room.width) / extent.width);
}

/// One line, its first letter's foot at that place.
void WriteLine(const std::string& line, double size, const cv::Point& origin, const cv::Scalar& colour,
               int thickness, cv::Mat& picture) {
  // Word by word, since the font's spaces are wide.
  for (size_t at = 0; at < line.size();) {
    const size_t end = std::min(line.find(' ', at), line.size());
    const cv::Point from = origin + cv::Point(cvRound(Advance(line.substr(0, at), size)), 0);
    cv::putText(picture, line.substr(at, end - at), from, FONT, size / CAPITAL, colour, thickness,
                cv::LINE_AA);
    at = end + 1;
  }
}

/// The same in narrow letters, in a box as high as the picture that it is written in.
void WriteNarrowLine(const std::string& line, double size, double width, const cv::Point& origin,
                     const cv::Scalar& colour, int thickness, cv::Mat& picture) {
  const int inset = RimOf(size) + SPARE + StrokeOf(size) / 2;
  const int height = cvCeil(BLOCK * size) + 2 * inset;
  const int foot = inset + cvRound((ABOVE + 1.0) * size);
  cv::Mat letters(height, WidthOf(line, size), CV_8UC1, cv::Scalar(0));
  WriteLine(line, size, {inset, foot}, cv::Scalar(255), thickness, letters);
  const cv::Size narrowed(std::max(1, cvFloor(width * letters.cols)), height);
  cv::resize(letters, letters, narrowed, 0.0, 0.0, cv::INTER_AREA);
  const cv::Rect place(origin - cv::Point(cvRound(width * inset), foot), narrowed);
  const cv::Rect shown = place & cv::Rect(cv::Point(), picture.size());
  if (shown.empty()) return;
  cv::Mat part = picture(shown);
  cv::Mat share;
  cv::cvtColor(letters(shown - place.tl()), share, cv::COLOR_GRAY2BGR);
  const cv::Mat ink(part.size(), part.type(), colour);
  cv::Mat covered;
  cv::Mat left;
  cv::multiply(ink, share, covered, 1.0 / 255.0);
  cv::multiply(part, cv::Scalar::all(255) - share, left, 1.0 / 255.0);
  cv::add(covered, left, part);
}

}  // namespace

Lettering FitText(const std::string& text, const cv::Size& room, const LetterSizes& sizes) {
  if (text.find_first_not_of(" \n\t") == std::string::npos || room.width < 1 || room.height < 1) return {};
  const std::vector<std::string> paragraphs = Paragraphs(text);
  const double least = std::max(sizes.leastInOneLine, SMALLEST);
  for (double size = sizes.largest; size >= least; size *= STEP) {
    if (Fits(paragraphs, size, sizes.pitch, room)) return Set(paragraphs, size, sizes.pitch);
  }
  const double share = ShareOf(ExtentOf(paragraphs, least, sizes.pitch), room);
  if (share >= sizes.narrowest) return Set(paragraphs, least, sizes.pitch, share);
  for (double size = sizes.largest; size > SMALLEST; size *= STEP) {
    const bool breakWords = size < sizes.leastWithWholeWords;
    std::vector<std::string> lines = AllBroken(paragraphs, size, room.width, breakWords);
    if (Fits(lines, size, sizes.pitch, room)) return Set(std::move(lines), size, sizes.pitch);
  }
  return {};
}

cv::Rect TextBox(const Lettering& text, const cv::Rect& box, Align align) {
  const int spare = box.width - text.extent.width;
  const int left = align == Align::Left ? 0 : align == Align::Centre ? spare / 2 : spare;
  return {box.x + left, box.y + (box.height - text.extent.height) / 2, text.extent.width, text.extent.height};
}

void WriteText(const Lettering& text, const cv::Rect& box, Align align, const Ink& ink, cv::Mat& picture) {
  const cv::Rect place = TextBox(text, box, align);
  const int rim = RimOf(text.size);
  const int inset = rim + SPARE;
  const int stroke = StrokeOf(text.size);
  for (size_t i = 0; i < text.lines.size(); ++i) {
    const std::string& line = text.lines[i];
    const cv::Size extent(cvCeil(text.width * WidthOf(line, text.size)), place.height);
    const double down = (text.pitch * static_cast<double>(i) + ABOVE + 1.0) * text.size;
    const int half = stroke / 2;  // whole pixels, as the line is drawn
    const int aside = cvRound(text.width * (inset + half));
    const cv::Point origin(TextBox({{}, 0.0, 0.0, 1.0, extent}, place, align).x + aside,
                           place.y + inset + cvRound(down));
    const auto write = [&](const cv::Scalar& colour, int thickness) {
      if (text.width < 1.0) {
        WriteNarrowLine(line, text.size, text.width, origin, colour, thickness, picture);
      } else {
        WriteLine(line, text.size, origin, colour, thickness, picture);
      }
    };
    write(ink.outline, stroke + 2 * rim);
    write(ink.colour, stroke);
  }
}

}  // namespace guided
