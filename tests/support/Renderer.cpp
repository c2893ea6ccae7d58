/// Renders pictures: sheet coordinates of all pixel corners, coverage of edge pixels, blur, light and noise.
#include "Renderer.h"

#include <algorithm>
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

double Length(const cv::Vec2d& v) {
  return std::sqrt(v[0] * v[0] + v[1] * v[1]);
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

Renderer::Renderer(const Scene& scene) : scene_(scene) {
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
  // From steps on the sheet to rays, and back. A positive third component stands for "before the camera".
  const cv::Matx33d H(unit * R(0, 0), unit * R(0, 1), pose.tvec[0], unit * R(1, 0), unit * R(1, 1),
                      pose.tvec[1], unit * R(2, 0), unit * R(2, 1), pose.tvec[2]);
  const double none = std::numeric_limits<double>::quiet_NaN();
  const bool edgeOn = !(std::abs(cv::determinant(H)) > 1e-15 * unit * unit);
  const cv::Matx33d G = edgeOn ? cv::Matx33d::zeros() : H.inv();
  for (int row = 0; row < rays_.rows; ++row) {
    const cv::Vec2d* ray = rays_.ptr<cv::Vec2d>(row);
    cv::Vec2d* out = corners_.ptr<cv::Vec2d>(row);
    for (int column = 0; column < rays_.cols; ++column) {
      const double x = ray[column][0];
      const double y = ray[column][1];
      const double w = G(2, 0) * x + G(2, 1) * y + G(2, 2);
      if (w > 0.0) {
        const double scale = 1.0 / w;
        out[column] = cv::Vec2d((G(0, 0) * x + G(0, 1) * y + G(0, 2)) * scale,
                                (G(1, 0) * x + G(1, 1) * y + G(1, 2)) * scale);
      } else {
        out[column] = cv::Vec2d(none, none);
      }
    }
  }
}

Renderer::Cover Renderer::CoverOf(const cv::Vec2d& g00, const cv::Vec2d& g10, const cv::Vec2d& g01,
                                  const cv::Vec2d& g11) const {
  const cv::Vec2d middle = (g00 + g10 + g01 + g11) * 0.25;
  const double footprint = 0.51 * std::max(Length(g11 - g00), Length(g10 - g01));
  Cover cover = {0.0F, 0.0F, 0.0F};
  // Corners without a place on the sheet make the footprint NaN.
  if (!(footprint < std::numeric_limits<double>::max())) {
    cover[0] = 1.0F;
    return cover;
  }
  const SurfaceSample sample = scene_.sheet.Sample({middle[0], middle[1]});
  if (sample.clearance > footprint) {
    cover[static_cast<std::size_t>(sample.surface)] = 1.0F;
    return cover;
  }
  const int n = scene_.supersampling;
  const float share = 1.0F / static_cast<float>(n * n);
  for (int row = 0; row < n; ++row) {
    const double v = (row + 0.5) / n;
    const cv::Vec2d left = g00 + (g01 - g00) * v;
    const cv::Vec2d right = g10 + (g11 - g10) * v;
    for (int column = 0; column < n; ++column) {
      const cv::Vec2d at = left + (right - left) * ((column + 0.5) / n);
      cover[static_cast<std::size_t>(scene_.sheet.Sample({at[0], at[1]}).surface)] += share;
    }
  }
  return cover;
}

void Renderer::Compose(const Pose& pose) {
  MapCorners(pose);
  const float paper = static_cast<float>(scene_.paperLevel);
  const float ink = FacesCamera(pose) ? static_cast<float>(scene_.inkLevel) : paper;
  picture_.create(scene_.camera.size, CV_32FC3);
  for (int row = 0; row < picture_.rows; ++row) {
    const cv::Vec2d* above = corners_.ptr<cv::Vec2d>(row);
    const cv::Vec2d* below = corners_.ptr<cv::Vec2d>(row + 1);
    const cv::Vec3f* behind = background_.ptr<cv::Vec3f>(row);
    cv::Vec3f* out = picture_.ptr<cv::Vec3f>(row);
    for (int column = 0; column < picture_.cols; ++column) {
      const Cover cover = CoverOf(above[column], above[column + 1], below[column], below[column + 1]);
      const float sheet = cover[1] * paper + cover[2] * ink;
      out[column] = behind[column] * cover[0] + cv::Vec3f::all(sheet);
    }
  }
}

cv::Mat Renderer::Finish(cv::Mat& picture, std::uint64_t frameNumber) {
  if (!light_.empty()) cv::multiply(picture, light_, picture);
  if (scene_.blur > 0.0) {
    cv::GaussianBlur(picture, picture, cv::Size(), scene_.blur, scene_.blur, cv::BORDER_REPLICATE);
  }
  if (scene_.noise > 0.0) {
    cv::RNG random(MixSeeds(MixSeeds(scene_.seed, NOISE_SEQUENCE), frameNumber));
    cv::Mat noise(picture.size(), picture.type());
    random.fill(noise, cv::RNG::NORMAL, 0.0, scene_.noise);
    picture += noise;
  }
  cv::Mat bytes;
  picture.convertTo(bytes, CV_8UC3);
  return bytes;
}

cv::Mat Renderer::Render(const Pose& pose, std::uint64_t frameNumber) {
  Compose(pose);
  return Finish(picture_, frameNumber);
}

cv::Mat Renderer::RenderEmpty(std::uint64_t frameNumber) {
  background_.copyTo(picture_);
  return Finish(picture_, frameNumber);
}

}  // namespace world
