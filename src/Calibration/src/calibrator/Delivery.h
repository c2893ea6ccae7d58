/// What a calibrator keeps for frames that are pushed in and annotated frames that are handed out.
#pragma once

#include <atomic>
#include <opencv2/core.hpp>
#include <string>

#include "Calibrator.h"
#include "calibrator/FrameListeners.h"
#include "capture/LatestFrameGrabber.h"

struct Calibrator::Delivery {
  explicit Delivery(Calibrator& calibrator)
      : jpegGrabber([&calibrator] { calibrator.jpegB64grabber(); }),
        rgbGrabber([&calibrator] { calibrator.RGBgrabber(); }) {}

  std::atomic<bool> bypass{false};
  std::atomic<bool> jpegBusy{false};
  std::atomic<bool> rgbBusy{false};
  std::atomic<JavaVM*> javaMachine{nullptr};
  velmora::FrameListeners listeners;
  // Last, so that their threads end before what they use.
  velmora::LatestFrameGrabber<std::string> jpegGrabber;
  velmora::LatestFrameGrabber<cv::Mat> rgbGrabber;
};
