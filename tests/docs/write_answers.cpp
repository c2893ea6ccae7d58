/// Writes what the page on formats shows, as the engine gives it: write_answers IMAGES..., into the current
/// folder.
///
/// Status answers before and after a calibration, answers of the operations by number, a recorded pose model,
/// a calibration session.
#include <fstream>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "Calibration.h"
#include "Calibrator.h"
#include "velmora/Session.h"

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

/// Of two snapshots, one of which is excluded and one removed.
void WriteSession(Calibrator& calibrator, char** images) {
  velmora::SessionSettings settings;
  settings.grid = {4, 11};
  settings.unit = 0.02;
  settings.imageSizes = {{640, 480}};
  settings.lensModel = "auto";
  settings.finder = "standard";
  settings.solver = "sparse";
  settings.discRadius = 0.0075;
  settings.sheetShape = "flat";
  settings.source = "views";
  const auto session = velmora::Session::Create("session.velmora", settings);
  for (int i = 0; i < 2; ++i) {
    velmora::SessionSnapshot snapshot;
    const cv::Mat image = cv::imread(images[i]);
    cv::Mat searched = image.clone();
    snapshot.observations.resize(1);
    calibrator.DetectPoints(searched, snapshot.observations[0].centres, false);
    snapshot.observations[0].weights.assign(snapshot.observations[0].centres.size(), 1.0);
    snapshot.images.resize(1);
    snapshot.images[0].pixels = image;
    snapshot.name = images[i];
    snapshot.origins = {velmora::Session::ContentKey(images[i])};
    snapshot.score = 0.5;
    session->Add(snapshot);
  }
  session->Exclude({2});
  session->Remove({1});
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

  WriteSession(calibrator, argv + 1);

  const int id = Calibration::NewCalibrator(4, 11, 0.02F, Calibrator::MONOCULAR, 640, 480);
  Write("answer.json", Calibration::AddPicture_QVX(id));
  Write("answer_unknown.json", Calibration::AddPicture_QVX(id + 1));
  Calibration::DeleteCalibrator(id);
  return 0;
}
