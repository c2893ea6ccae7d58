/// Renders images: sheet coordinates of all pixel corners, coverage of edge pixels, blur, light and noise.
#include "Renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "Background.h"
#include "RayMap.h"
#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t NOISE_SEQUENCE = 0x6e6f6973;

/// Side of the blocks that are looked at as a whole first, pixels.
constexpr int BLOCK = 16;

/// Perspective keeps a block within the hull of its corners, distortion bends its sides out a little.
constexpr double BULGE = 1.05;
constexpr double FISHEYE_BULGE = 1.2;

/// How far the corners of a block are from its middle on the sheet. NaN when one has no place there.
double Footprint(const cv::Vec2d& a, const cv::Vec2d& b, const cv::Vec2d& c, const cv::Vec2d& d) {
  const cv::Vec2d middle = (a + b + c + d) * 0.25;
  double farthest = 0.0;
  for (const cv::Vec2d& corner : {a, b, c, d}) {
    const double x = corner[0] - middle[0];
    const double y = corner[1] - middle[1];
    const double square = x * x + y * y;
    if (std::isnan(square)) return square;
    farthest = std::max(farthest, square);
  }
  return std::sqrt(farthest);
}

bool IsLevel(int level) {
  return level >= 0 && level <= 255;
}

void Check(const Scene& scene) {
  if (scene.camera.size.width < 1 || scene.camera.size.height < 1) {
    throw std::invalid_argument("a scene needs a camera with a positive image size");
  }
  if (!(scene.blur >= 0.0) || !(scene.noise >= 0.0) || !(scene.light >= 0.0) || !(scene.light <= 1.0)) {
    throw std::invalid_argument("blur and noise are not negative, light is between 0 and 1");
  }
  if (!IsLevel(scene.backgroundLevel) || !IsLevel(scene.paperLevel) || !IsLevel(scene.inkLevel)) {
    throw std::invalid_argument("grey levels are between 0 and 255");
  }
  if (scene.clutter < 0 || scene.supersampling < 1 || scene.supersampling > 64) {
    throw std::invalid_argument("clutter is not negative, supersampling between 1 and 64");
  }
}

}  // namespace

Renderer::Renderer(const Scene& scene)
    : scene_(scene), bulge_(scene.camera.lens.IsFisheye() ? FISHEYE_BULGE : BULGE) {
  Check(scene_);
  rays_ = MakeRayMap(scene_.camera);
  MakeBackground(scene_.camera.size, scene_.backgroundLevel, scene_.clutter, scene_.seed)
      .convertTo(background_, CV_32FC3);
  if (scene_.light > 0.0) {
    cv::cvtColor(MakeLight(scene_.camera.size, scene_.light, scene_.seed), light_, cv::COLOR_GRAY2BGR);
  }
  corners_.create(rays_.size(), CV_64FC2);
}

void Renderer::MapCorners(const Pose& pose) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  const double unit = scene_.sheet.Unit();
  // From steps on the sheet to directions, and back. A negative third component stands for a place that the
  // direction leads away from.
  const cv::Matx33d H(unit * R(0, 0), unit * R(0, 1), pose.tvec[0], unit * R(1, 0), unit * R(1, 1),
                      pose.tvec[1], unit * R(2, 0), unit * R(2, 1), pose.tvec[2]);
  const double none = std::numeric_limits<double>::quiet_NaN();
  const bool edgeOn = !(std::abs(cv::determinant(H)) > 1e-15 * unit * unit);
  const cv::Matx33d G = edgeOn ? cv::Matx33d::zeros() : H.inv();
  for (int row = 0; row < rays_.rows; ++row) {
    const cv::Vec3d* ray = rays_.ptr<cv::Vec3d>(row);
    cv::Vec2d* out = corners_.ptr<cv::Vec2d>(row);
    for (int column = 0; column < rays_.cols; ++column) {
      const double x = ray[column][0];
      const double y = ray[column][1];
      const double z = ray[column][2];
      const double w = G(2, 0) * x + G(2, 1) * y + G(2, 2) * z;
      if (w > 0.0) {
        const double scale = 1.0 / w;
        out[column] = cv::Vec2d((G(0, 0) * x + G(0, 1) * y + G(0, 2) * z) * scale,
                                (G(1, 0) * x + G(1, 1) * y + G(1, 2) * z) * scale);
      } else {
        out[column] = cv::Vec2d(none, none);
      }
    }
  }
}

cv::Vec3f Renderer::Mixed(const Quad& quad, const cv::Vec3f& behind) const {
  const int n = scene_.supersampling;
  std::array<int, 3> counts = {0, 0, 0};
  const cv::Vec2d leftEdge = quad.bottomLeft - quad.topLeft;
  const cv::Vec2d rightEdge = quad.bottomRight - quad.topRight;
  for (int row = 0; row < n; ++row) {
    const double v = (row + 0.5) / n;
    const cv::Vec2d left = quad.topLeft + leftEdge * v;
    const cv::Vec2d across = quad.topRight + rightEdge * v - left;
    for (int column = 0; column < n; ++column) {
      const double u = (column + 0.5) / n;
      const cv::Point2d at(left[0] + across[0] * u, left[1] + across[1] * u);
      ++counts[static_cast<std::size_t>(scene_.sheet.At(at))];
    }
  }
  const float share = 1.0F / static_cast<float>(n * n);
  const float sheet = static_cast<float>(counts[1]) * paper_ + static_cast<float>(counts[2]) * ink_;
  return behind * (share * static_cast<float>(counts[0])) + cv::Vec3f::all(share * sheet);
}

void Renderer::Fill(const cv::Rect& block, Surface surface) {
  const cv::Vec3f level = cv::Vec3f::all(surface == Surface::Ink ? ink_ : paper_);
  for (int row = block.y; row < block.y + block.height; ++row) {
    cv::Vec3f* out = image_.ptr<cv::Vec3f>(row) + block.x;
    if (surface == Surface::Background) {
      const cv::Vec3f* behind = background_.ptr<cv::Vec3f>(row) + block.x;
      std::copy(behind, behind + block.width, out);
    } else {
      std::fill(out, out + block.width, level);
    }
  }
}

void Renderer::ComposeBlock(const cv::Rect& block) {
  const cv::Vec2d* above = corners_.ptr<cv::Vec2d>(block.y) + block.x;
  const cv::Vec2d* below = corners_.ptr<cv::Vec2d>(block.y + block.height) + block.x;
  const Quad quad = {above[0], above[block.width], below[0], below[block.width]};
  const bool pixel = block.area() == 1;
  const double footprint = bulge_ * Footprint(quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight);
  const bool placed = footprint < std::numeric_limits<double>::max();
  if (placed) {
    const cv::Vec2d middle = (quad.topLeft + quad.topRight + quad.bottomLeft + quad.bottomRight) * 0.25;
    const SurfaceSample sample = scene_.sheet.Sample({middle[0], middle[1]});
    if (sample.clearance > footprint) {
      Fill(block, sample.surface);
      return;
    }
  }
  if (pixel) {
    const cv::Vec3f behind = background_.at<cv::Vec3f>(block.y, block.x);
    image_.at<cv::Vec3f>(block.y, block.x) = placed ? Mixed(quad, behind) : behind;
    return;
  }
  const int left = (block.width + 1) / 2;
  const int top = (block.height + 1) / 2;
  for (const int y : {0, top}) {
    for (const int x : {0, left}) {
      const cv::Size size(x == 0 ? left : block.width - left, y == 0 ? top : block.height - top);
      if (size.width > 0 && size.height > 0) ComposeBlock({block.tl() + cv::Point(x, y), size});
    }
  }
}

void Renderer::Compose(const Pose& pose) {
  MapCorners(pose);
  paper_ = static_cast<float>(scene_.paperLevel);
  ink_ = FacesCamera(pose) ? static_cast<float>(scene_.inkLevel) : paper_;
  image_.create(scene_.camera.size, CV_32FC3);
  const cv::Rect image({0, 0}, scene_.camera.size);
  for (int y = 0; y < image.height; y += BLOCK) {
    for (int x = 0; x < image.width; x += BLOCK) ComposeBlock(cv::Rect(x, y, BLOCK, BLOCK) & image);
  }
}

cv::Mat Renderer::Finish(cv::Mat& image, std::uint64_t frameNumber) {
  if (!light_.empty()) cv::multiply(image, light_, image);
  if (scene_.blur > 0.0) {
    cv::GaussianBlur(image, image, cv::Size(), scene_.blur, scene_.blur, cv::BORDER_REPLICATE);
  }
  if (scene_.noise > 0.0) {
    cv::RNG random(MixSeeds(MixSeeds(scene_.seed, NOISE_SEQUENCE), frameNumber));
    cv::Mat noise(image.size(), image.type());
    random.fill(noise, cv::RNG::NORMAL, 0.0, scene_.noise);
    image += noise;
  }
  cv::Mat bytes;
  image.convertTo(bytes, CV_8UC3);
  return bytes;
}

cv::Mat Renderer::Render(const Pose& pose, std::uint64_t frameNumber) {
  Compose(pose);
  return Finish(image_, frameNumber);
}

cv::Mat Renderer::RenderEmpty(std::uint64_t frameNumber) {
  background_.copyTo(image_);
  return Finish(image_, frameNumber);
}

}  // namespace world
