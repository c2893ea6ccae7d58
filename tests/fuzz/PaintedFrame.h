/// Frames painted by a program of a few bytes: whatever may keep a search busy.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace fuzz {

/// Hands out bytes; zeros after the last.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool Empty() const { return next_ == end_; }
  int Next() { return Empty() ? 0 : *next_++; }
  /// From `low` to `high`, in 256 equal steps.
  double Between(double low, double high) { return low + (high - low) * Next() / 255.0; }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

inline void PaintNoise(cv::Mat& frame, Bytes& bytes) {
  cv::Mat noise(frame.size(), CV_16SC1);
  cv::RNG random(static_cast<unsigned>(bytes.Next() + 1));
  random.fill(noise, cv::RNG::NORMAL, 0.0, bytes.Between(0.0, 120.0));
  const double blur = bytes.Between(0.0, 8.0);
  if (blur > 0.3) cv::GaussianBlur(noise, noise, cv::Size(), blur);
  // Blur makes noise faint: what is left of it is brought out again.
  noise *= std::min(20.0, 1.0 + 3.0 * blur);
  cv::add(frame, noise, frame, cv::noArray(), CV_8U);
}

/// Dots on a lattice of any two steps, shaken.
inline void PaintLattice(cv::Mat& frame, Bytes& bytes) {
  cv::RNG random(static_cast<unsigned>(bytes.Next() + 1));
  const double length = bytes.Between(3.0, 70.0);
  const double angle = bytes.Between(0.0, CV_PI);
  const cv::Point2d first(length * std::cos(angle), length * std::sin(angle));
  const double across = angle + bytes.Between(0.3, 2.8);
  const double otherLength = length * bytes.Between(0.5, 2.0);
  const cv::Point2d second(otherLength * std::cos(across), otherLength * std::sin(across));
  const double radius = length * bytes.Between(0.1, 0.6);
  const double shake = length * bytes.Between(0.0, 0.4);
  const int kept = bytes.Next();
  const cv::Scalar ink(bytes.Next());
  const int reach = 3 + static_cast<int>(bytes.Between(0.0, 250.0));
  const cv::Point2d middle(frame.cols * 0.5, frame.rows * 0.5);
  for (int i = -reach; i <= reach; ++i) {
    for (int j = -reach; j <= reach; ++j) {
      const cv::Point2d at = middle + first * i + second * j;
      if (at.x < 0.0 || at.y < 0.0 || at.x >= frame.cols || at.y >= frame.rows) continue;
      if (random.uniform(0, 256) > kept) continue;
      const cv::Point2d off(random.uniform(-shake, shake + 1e-9), random.uniform(-shake, shake + 1e-9));
      const cv::Point2d sixteenths = 16.0 * (at + off);
      cv::circle(frame, sixteenths, cvRound(16.0 * radius), ink, cv::FILLED, cv::LINE_AA, 4);
    }
  }
}

/// Discs strewn at random.
inline void PaintDiscs(cv::Mat& frame, Bytes& bytes) {
  cv::RNG random(static_cast<unsigned>(bytes.Next() + 1));
  const int count = 12 * bytes.Next();
  const int smallest = 1 + bytes.Next() / 32;
  const int largest = smallest + 1 + bytes.Next() / 16;
  const int ink = bytes.Next();
  for (int k = 0; k < count; ++k) {
    const cv::Point at(random.uniform(0, frame.cols), random.uniform(0, frame.rows));
    cv::circle(frame, at, random.uniform(smallest, largest), cv::Scalar(ink), cv::FILLED, cv::LINE_AA);
  }
}

/// Waves in both directions: gratings, or rows of soft spots.
inline void PaintWaves(cv::Mat& frame, Bytes& bytes) {
  const double alongX = bytes.Between(0.0, CV_PI);
  const double alongY = bytes.Between(0.0, CV_PI);
  const double bend = bytes.Between(0.0, 0.003);
  const double strength = bytes.Between(0.0, 127.0);
  for (int y = 0; y < frame.rows; ++y) {
    unsigned char* pixels = frame.ptr(y);
    for (int x = 0; x < frame.cols; ++x) {
      const double wave = std::sin(alongX * x + bend * x * y) * std::cos(alongY * y);
      pixels[x] = cv::saturate_cast<unsigned char>(pixels[x] + strength * wave);
    }
  }
}

/// A frame painted by as many strokes as there are bytes for, sixteen at most.
inline cv::Mat PaintedFrame(const std::uint8_t* data, std::size_t size, const cv::Size& frameSize) {
  Bytes bytes(data, size);
  cv::Mat frame(frameSize, CV_8UC1, cv::Scalar(bytes.Next()));
  for (int stroke = 0; stroke < 16 && !bytes.Empty(); ++stroke) {
    switch (bytes.Next() % 6) {
      case 0:
        PaintNoise(frame, bytes);
        break;
      case 1:
        PaintLattice(frame, bytes);
        break;
      case 2:
        PaintDiscs(frame, bytes);
        break;
      case 3:
        PaintWaves(frame, bytes);
        break;
      case 4:
        cv::normalize(frame, frame, 0.0, 255.0, cv::NORM_MINMAX);
        break;
      default:
        cv::GaussianBlur(frame, frame, cv::Size(), bytes.Between(0.4, 6.0));
        break;
    }
  }
  return frame;
}

}  // namespace fuzz
