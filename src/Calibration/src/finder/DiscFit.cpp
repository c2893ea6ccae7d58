/// The centre of one disc, by fitting what a camera would see of it to the pixels.
#include "finder/DiscFit.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>
#include <algorithm>
#include <array>
#include <cmath>

#include "finder/DiscModel.h"
#include "finder/DiscNoise.h"
#include "finder/DiscPixels.h"

namespace velmora::finder {

namespace {

using Unknowns = DiscModel::Unknowns;
using Normal = Eigen::Matrix<double, DiscModel::UNKNOWNS, DiscModel::UNKNOWNS>;
constexpr int REST = DiscModel::REST;

constexpr size_t FEWEST_PIXELS = 48;
constexpr double FIRST_BLUR = 1.0;
constexpr double LEAST_BLUR = 0.25;
constexpr double MOST_BLUR = 8.0;

/// The damping of the first stage.
constexpr double DAMPING = 1e-3;
constexpr double LEAST_AFTER_REFUSAL = 0.01;
constexpr double HARDER = 8.0;
constexpr double EASIER = 0.1;
constexpr int MOST_ROUNDS = 20;
/// A stage ends with a step that changes less than this: the square of its length in standard deviations.
constexpr double NEAR = 12.0;
constexpr double ARRIVED = 0.02;

/// The least variance of a pixel, that of rounding.
constexpr double ROUNDING = 1.0 / 12.0;

/// What a fit that holds does not exceed.
constexpr double LEAST_CONTRAST = 4.0;
constexpr double MOVE_RADII = 0.25;
constexpr double MOVE = 1.0;
constexpr double FORM_CHANGE = 0.15;
constexpr double FORM_CHANGE_PIXELS = 0.7;
constexpr double MOST_SLOPE = 2.0;
constexpr double MOST_DEVIATION = 0.1;
constexpr double MOST_DEVIATION_RADII = 0.01;

/// Adds the products of all pairs of columns, the lower half of them.
void AddProducts(const DiscModel::Equations& equations, Eigen::Matrix<double, REST + 1, REST + 1>& sums) {
  using Quad = Eigen::Array<float, 4, 1>;
  constexpr int TOGETHER = 4;
  for (int column = 0; column <= REST; ++column) {
    for (int first = column; first <= REST; first += TOGETHER) {
      // The last ones are done twice rather than one by one.
      const int row = std::max(0, std::min(first, REST + 1 - TOGETHER));
      Quad a = Quad::Zero();
      Quad b = Quad::Zero();
      Quad c = Quad::Zero();
      Quad d = Quad::Zero();
      for (int k = 0; k < DiscModel::CHUNK; k += 4) {
        const Quad common = equations.col(column).segment<4>(k);
        a += common * equations.col(row).segment<4>(k);
        b += common * equations.col(row + 1).segment<4>(k);
        c += common * equations.col(row + 2).segment<4>(k);
        d += common * equations.col(row + 3).segment<4>(k);
      }
      const Eigen::Vector4d products(a.sum(), b.sum(), c.sum(), d.sum());
      const int done = first - row;
      sums.col(column).segment(first, TOGETHER - done) += products.tail(TOGETHER - done);
    }
  }
}

class DiscFitter {
 public:
  DiscFitter(const cv::Mat& grey, const FoundDisc& found)
      : grey_(grey),
        found_(found),
        origin_(cvRound(found.centre.x), cvRound(found.centre.y)),
        form_(found.outline.t() * found.outline),
        radius_(1.0 / std::sqrt(std::abs(cv::determinant(found.outline)))),
        model_(radius_) {}

  FittedDisc Run() {
    FittedDisc fitted;
    if (!Start() || !Approach() || !Refine() || !noise_.IsNoise(pixels_, Contrast()) || !IsPlausible())
      return fitted;
    fitted.centre = Middle();
    fitted.blur = unknowns_(DiscModel::BLUR);
    const Normal inverse =
        noise_.Excess(pixels_, DiscModel::UNKNOWNS) * normal_.llt().solve(Normal::Identity());
    constexpr std::array<DiscModel::Unknown, 6> KEPT = {DiscModel::CENTRE_X, DiscModel::CENTRE_Y,
                                                        DiscModel::INK_X,    DiscModel::INK_Y,
                                                        DiscModel::PAPER_X,  DiscModel::PAPER_Y};
    // The light is kept by pixel, not by radius.
    const auto unit = [this](size_t k) { return k < 2 ? 1.0 : 1.0 / radius_; };
    for (size_t i = 0; i < KEPT.size(); ++i) {
      if (i >= 2) fitted.light[static_cast<int>(i) - 2] = unknowns_(KEPT[i]) * unit(i);
      for (size_t k = 0; k < KEPT.size(); ++k) {
        fitted.covariance(static_cast<int>(i), static_cast<int>(k)) =
            unit(i) * unit(k) * inverse(KEPT[i], KEPT[k]);
      }
    }
    fitted.deviation = std::sqrt(0.5 * (fitted.covariance(0, 0) + fitted.covariance(1, 1)));
    // A disc of which much is hidden looks like one with a very ragged rim.
    fitted.holds = fitted.deviation < MOST_DEVIATION + MOST_DEVIATION_RADII * radius_;
    return fitted.holds ? fitted : FittedDisc();
  }

 private:
  cv::Point2d Middle() const {
    return cv::Point2d(origin_) + cv::Point2d(unknowns_(DiscModel::CENTRE_X), unknowns_(DiscModel::CENTRE_Y));
  }

  double Contrast() const { return std::abs(unknowns_(DiscModel::INK) - unknowns_(DiscModel::PAPER)); }

  /// The outline as found, and the planes that go best with it.
  bool Start() {
    if (!IsInside()) return false;
    // The symmetric root of the form: of two by two its trace and determinant say it all.
    const double root = std::sqrt(cv::determinant(form_));
    const double scale = radius_ * radius_ / std::sqrt(cv::trace(form_) + 2.0 * root);
    unknowns_.setZero();
    unknowns_(DiscModel::CENTRE_X) = found_.centre.x - origin_.x;
    unknowns_(DiscModel::CENTRE_Y) = found_.centre.y - origin_.y;
    unknowns_(DiscModel::XX) = scale * (form_(0, 0) + root);
    unknowns_(DiscModel::YY) = scale * (form_(1, 1) + root);
    unknowns_(DiscModel::XY) = scale * form_(0, 1);
    unknowns_(DiscModel::BLUR) = FIRST_BLUR;
    if (!Take(DiscPixels::Choice::Few)) return false;
    Sum(Weighting::None);
    constexpr int PLANES = 6;
    normal_.diagonal().tail<PLANES>().array() += 1e-6 * static_cast<double>(pixels_.Count());
    unknowns_.tail<PLANES>() =
        normal_.bottomRightCorner<PLANES, PLANES>().llt().solve(gradient_.tail<PLANES>());
    return unknowns_.allFinite();
  }

  /// Whether all of the outline is in the image.
  bool IsInside() const {
    const double area = cv::determinant(form_);
    if (!(area > 0.0) || !std::isfinite(area)) return false;
    const double wide = std::sqrt(form_(1, 1) / area);
    const double high = std::sqrt(form_(0, 0) / area);
    return found_.centre.x >= wide && found_.centre.x <= grey_.cols - 1 - wide && found_.centre.y >= high &&
           found_.centre.y <= grey_.rows - 1 - high;
  }

  /// False when they are too few.
  bool Take(DiscPixels::Choice choice) {
    pixels_ = DiscPixels(grey_, found_, origin_, unknowns_, radius_, choice);
    noise_.Begin(pixels_.Chunks().size());
    return pixels_.Count() >= FEWEST_PIXELS;
  }

  void Evaluate(size_t chunk) {
    model_.Evaluate(unknowns_, pixels_.Chunks()[chunk], equations_, noise_.Shares(chunk));
  }

  enum class Weighting { None, ByNoise };

  /// The normal equations around the unknowns.
  void Sum(Weighting weighting) {
    Eigen::Matrix<double, REST + 1, REST + 1> sums;
    sums.setZero();
    for (size_t chunk = 0; chunk < pixels_.Chunks().size(); ++chunk) {
      Evaluate(chunk);
      if (weighting == Weighting::ByNoise) {
        noise_.Keep(chunk, equations_);
        equations_.colwise() *= noise_.RootWeights(chunk);
      }
      equations_.bottomRows(DiscModel::CHUNK - pixels_.CountIn(chunk)).setZero();
      AddProducts(equations_, sums);
    }
    normal_ = sums.topLeftCorner<REST, REST>().selfadjointView<Eigen::Lower>();
    gradient_ = sums.row(REST).head<REST>();
    cost_ = sums(REST, REST);
  }

  /// Least squares, to about where the unknowns belong.
  bool Approach() {
    double damping = DAMPING;
    Sum(Weighting::None);
    while (++rounds_ < MOST_ROUNDS) {
      const auto count = static_cast<double>(pixels_.Count());
      const double variance = std::max(cost_ / count, ROUNDING);
      Normal damped = normal_;
      damped.diagonal() *= 1.0 + damping;
      const Unknowns step = Limited(damped.llt().solve(gradient_));
      const double length = step.dot(normal_ * step) / variance;
      const Unknowns before = unknowns_;
      if (!Go(step)) return false;
      // What is left after that is the next stage's.
      if (length < NEAR) return true;
      const Normal normal = normal_;
      const Unknowns gradient = gradient_;
      const double cost = cost_;
      Sum(Weighting::None);
      if (cost_ < cost) {
        damping *= EASIER;
        continue;
      }
      unknowns_ = before;
      normal_ = normal;
      gradient_ = gradient;
      cost_ = cost;
      damping = std::max(LEAST_AFTER_REFUSAL, damping * HARDER);
    }
    return false;
  }

  /// Goes a step further; false when that leads away from the disc.
  bool Go(const Unknowns& step) {
    unknowns_ += step;
    return unknowns_.allFinite() && cv::norm(Middle() - found_.centre) < radius_;
  }

  /// A step that the blur survives.
  Unknowns Limited(Unknowns step) const {
    const double blur = unknowns_(DiscModel::BLUR);
    const double most = std::min(1.6 * blur, MOST_BLUR);
    const double least = std::max(0.5 * blur, LEAST_BLUR);
    step(DiscModel::BLUR) = std::min(most, std::max(least, blur + step(DiscModel::BLUR))) - blur;
    return step;
  }

  /// All pixels by their noise, which is seldom that of ink and paper alike; gross ones have no weight.
  bool Refine() {
    if (!Take(DiscPixels::Choice::All)) return false;
    for (size_t chunk = 0; chunk < pixels_.Chunks().size(); ++chunk) {
      Evaluate(chunk);
      noise_.Keep(chunk, equations_);
    }
    noise_.Estimate(pixels_);
    for (bool first = true; ++rounds_ < MOST_ROUNDS; first = false) {
      Sum(Weighting::ByNoise);
      const Unknowns step = Limited(normal_.llt().solve(gradient_));
      if (!Go(step)) return false;
      if (!first && step.dot(normal_ * step) < ARRIVED) return true;
      if (first) noise_.Estimate(pixels_);
    }
    return false;
  }

  bool IsPlausible() const {
    const double slope = std::max(unknowns_.segment<2>(DiscModel::INK_X).norm(),
                                  unknowns_.segment<2>(DiscModel::PAPER_X).norm());
    const double blur = unknowns_(DiscModel::BLUR);
    return Contrast() > LEAST_CONTRAST && slope < MOST_SLOPE * Contrast() &&
           cv::norm(Middle() - found_.centre) < MOVE_RADII * radius_ + MOVE && blur > LEAST_BLUR &&
           blur < MOST_BLUR && HasTheForm();
  }

  /// Whether the outline is about the one that was expected, in every direction.
  bool HasTheForm() const {
    Eigen::Matrix2d found;
    found << found_.outline(0, 0), found_.outline(0, 1), found_.outline(1, 0), found_.outline(1, 1);
    Eigen::Matrix2d fitted;
    fitted << unknowns_(DiscModel::XX), unknowns_(DiscModel::XY), unknowns_(DiscModel::XY),
        unknowns_(DiscModel::YY);
    const Eigen::Matrix2d change = fitted / (radius_ * radius_) * found.inverse();
    // The squares of what it makes of a circle's radius at most and at least.
    const double half = 0.5 * change.squaredNorm();
    const double most = half + std::sqrt(std::max(0.0, half * half - std::pow(change.determinant(), 2.0)));
    const double least = 2.0 * half - most;
    const double allowed = 1.0 + FORM_CHANGE + FORM_CHANGE_PIXELS / radius_;
    return most < allowed * allowed && least * allowed * allowed > 1.0;
  }

  const cv::Mat& grey_;
  const FoundDisc& found_;
  const cv::Point origin_;
  const cv::Matx22d form_;
  const double radius_;
  const DiscModel model_;
  DiscPixels pixels_;
  DiscNoise noise_;
  DiscModel::Equations equations_;
  Unknowns unknowns_;
  Unknowns gradient_;
  Normal normal_;
  double cost_ = 0.0;
  int rounds_ = 0;
};

}  // namespace

FittedDisc FitDisc(const cv::Mat& grey, const FoundDisc& found) {
  return DiscFitter(grey, found).Run();
}

}  // namespace velmora::finder
