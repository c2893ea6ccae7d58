/// A pushed frame, from Base64 text to annotated JPEG and status, beside the bare library calls; the codec
/// alone.
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"
#include "base64.h"
#include "imaging/Overlay.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);
constexpr std::int64_t FRAME_BYTES = 100'000;
constexpr std::int64_t MANY_BYTES = 10'000'000;

std::vector<unsigned char> Jpeg(const cv::Mat& image, int quality) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, quality});
  return bytes;
}

/// Decoding, search, drawing and encoding as calls of the library, on the JPEG's bytes themselves: neither
/// Base64 nor the status is part of it.
std::vector<unsigned char> BareRoad(const std::vector<unsigned char>& jpeg,
                                    const std::vector<OverlayText>& texts) {
  cv::Mat frame = cv::imdecode(jpeg, cv::IMREAD_COLOR);
  std::vector<cv::Point2d> points;
  cv::findCirclesGrid(frame, GRID, points, cv::CALIB_CB_ASYMMETRIC_GRID,
                      cv::SimpleBlobDetector::create(cv::SimpleBlobDetector::Params()));
  if (!points.empty()) {
    cv::drawChessboardCorners(frame, GRID, cv::Mat(std::vector<cv::Point2f>(points.begin(), points.end())),
                              true);
  }
  for (const OverlayText& text : texts) {
    cv::putText(frame, text.text, text.origin, cv::FONT_HERSHEY_DUPLEX, 0.5, text.colour, 1, cv::LINE_AA,
                false);
  }
  return Jpeg(frame, 70);
}

void PushedFrame(benchmark::State& state, const cv::Mat& source) {
  const std::vector<unsigned char> jpeg = Jpeg(source, 90);
  const std::string text = base64_encode(jpeg.data(), static_cast<unsigned>(jpeg.size()));
  const auto texts = OverlayTexts({0, -1, PROCESSING, Calibrator::STATUS_NOT_READY, 0.03});
  Calibrator calibrator(GRID, 0.02F, Calibrator::MONOCULAR, PROCESSING.width, PROCESSING.height);
  size_t received = 0;
  calibrator.SetFrameListener(
      [&](const std::vector<unsigned char>& answer, const std::string&) { received += answer.size(); });
  bench::Ratio().Run(
      state,
      [&] {
        std::string pushed = text;
        calibrator.NextFrameJpegB64(pushed, 0, nullptr, false);
      },
      [&] { benchmark::DoNotOptimize(BareRoad(jpeg, texts)); });
  if (received == 0) state.SkipWithError("nothing was handed out");
}

std::string SomeBytes(std::int64_t count) {
  std::string bytes(static_cast<size_t>(count), '\0');
  cv::RNG random(5);
  for (char& byte : bytes) byte = static_cast<char>(static_cast<unsigned char>(random.next()));
  return bytes;
}

/// Both count the bytes, not the characters of the text.
void Base64Encode(benchmark::State& state) {
  const std::string bytes = SomeBytes(state.range(0));
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  for (auto iteration : state) {
    static_cast<void>(iteration);
    benchmark::DoNotOptimize(base64_encode(data, static_cast<unsigned>(bytes.size())));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Base64Decode(benchmark::State& state) {
  const std::string bytes = SomeBytes(state.range(0));
  const std::string text = base64_encode(reinterpret_cast<const unsigned char*>(bytes.data()),
                                         static_cast<unsigned>(bytes.size()));
  for (auto iteration : state) {
    static_cast<void>(iteration);
    benchmark::DoNotOptimize(base64_decode(text));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK_CAPTURE(PushedFrame, grid_640x480, bench::GridFrame(PROCESSING))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PushedFrame, empty_640x480, bench::EmptyFrame(PROCESSING))
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Base64Encode)->Arg(FRAME_BYTES)->Arg(MANY_BYTES)->Unit(benchmark::kMillisecond);
BENCHMARK(Base64Decode)->Arg(FRAME_BYTES)->Arg(MANY_BYTES)->Unit(benchmark::kMillisecond);
