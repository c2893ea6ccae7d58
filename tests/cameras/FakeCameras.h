/// Cameras of the machine that show what a test gives them.
#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "TemporaryFolder.h"
#include "unit/Scopes.h"

namespace cameras {

/// The machine's only cameras, as long as the object lives.
class FakeCameras {
 public:
  FakeCameras();

  /// Adds a size to a camera (and the camera, if need be), with the images that it then plays over and
  /// over; the size is that of the first one. The camera delivers a size that it is asked for, otherwise the
  /// last by name.
  void Provide(int camera, const std::vector<cv::Mat>& images);
  /// Provides a camera whose images have other sizes than it says.
  void Provide(int camera, const cv::Size& size, const std::vector<cv::Mat>& images);
  /// "silent", "empty" (buffers) or "gone"; an empty text makes it well again.
  void Behave(int camera, const std::string& behaviour);

 private:
  std::string FolderOf(int camera) const;

  support::TemporaryFolder folder_;
  unit::ScopedVariable variable_;
};

/// Tests of a calibrator with cameras.
class CameraTest : public testing::Test {
 protected:
  /// Failures are printed where the output is captured.
  void TearDown() override {
    if (HasFailure()) std::cerr << Printed();
  }

  /// True when the text has been printed since the test's start.
  bool EventuallyPrinted(const std::string& text) {
    return unit::Eventually([&] { return Printed().find(text) != std::string::npos; });
  }
  std::string Printed() const { return output_.Text(); }
  int CountOf(const std::string& text) const;

  /// An image that shows something, but no grid.
  static cv::Mat Blank(const cv::Size& size) { return {size, CV_8UC3, cv::Scalar(90, 120, 150)}; }

  FakeCameras cameras_;
  support::CapturedStdout output_;
};

}  // namespace cameras
