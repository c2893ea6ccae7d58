/// Writes what the page on formats shows, as the engine gives it: write_answers IMAGES..., into the current
/// folder.
///
/// Status answers before and after a calibration, answers of the operations by number, a recorded pose model.
#include <fstream>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "Calibration.h"
#include "Calibrator.h"

namespace {

void Write(const char* name, const std::string& text) {
  std::ofstream file(name);
  file << text << "\n";
}

void Collect(Calibrator& calibrator, int count, char** images) {
  for (int i = 0; i < count; ++i) {
    cv::Mat image = cv::imread(images[i]);
    std::vector<cv::Point2d> points;
    if (calibrator.DetectPoints(image, points, false)) calibrator.AddPoints();
  }
}

}  // namespace

int main(int argc, char** argv) {
  Calibration::SetLogLevel(0);
  Calibrator calibrator({4, 11}, 0.02F, Calibrator::MONOCULAR, 640, 480);
  Write("status_before.json", calibrator.GetStatus_QVX());
  calibrator.StartModelRecording();
  Collect(calibrator, argc - 1, argv + 1);
  calibrator.StopModelRecording();
  if (calibrator.ComputeCalibration(Calibrator::MODEL_CLASSIC) < 0.0F) return 1;
  Write("status_after.json", calibrator.GetStatus_QVX());

  const int id = Calibration::NewCalibrator(4, 11, 0.02F, Calibrator::MONOCULAR, 640, 480);
  Write("answer.json", Calibration::AddPicture_QVX(id));
  Write("answer_unknown.json", Calibration::AddPicture_QVX(id + 1));
  Calibration::DeleteCalibrator(id);
  return 0;
}
