/// Decides from the settings alone what is to be opened, and how.
#include "common/Sources.h"

namespace common {

namespace {

CaptureRequest GStreamerRequest(const SourceSettings& settings) {
  const std::string& host = *settings.gstreamerHost;
  const std::string decoding =
      settings.codec == "mjpeg"
          ? " ! multipartdemux ! image/jpeg, framerate=30/1  ! jpegparse ! jpegdec ! videoconvert  ! appsink "
            "sync=false"
          : " ! gdpdepay !  rtph264depay ! avdec_h264 ! videoconvert ! appsink sync=false";
  return {"tcpclientsrc host=" + host + " port=" + settings.port + decoding,
          cv::CAP_ANY,
          {},
          "GStreamer stream of host '" + host + "', port '" + settings.port + "'"};
}

CaptureRequest RtmpRequest(const std::string& url) {
  return {"rtmpsrc location=" + url + " ! decodebin ! videoconvert ! appsink sync=false",
          cv::CAP_GSTREAMER,
          {},
          "RTMP stream '" + url + "'"};
}

CaptureRequest VideoRequest(const std::string& path) {
  return {path, cv::CAP_ANY, {{cv::CAP_PROP_POS_FRAMES, 0.0}}, "video '" + path + "'"};
}

CaptureRequest WebcamRequest(int index, const SourceSettings& settings) {
  return {index,
          cv::CAP_ANY,
          {{cv::CAP_PROP_FRAME_WIDTH, settings.width},
           {cv::CAP_PROP_FRAME_HEIGHT, settings.height},
           {cv::CAP_PROP_FPS, settings.fps}},
          "webcam " + std::to_string(index)};
}

}  // namespace

SourcePlan PlanSources(const SourceSettings& settings) {
  const bool whole = settings.split == Split::None;
  SourcePlan plan;
  if (settings.gstreamerHost) {
    plan.captures.push_back(GStreamerRequest(settings));
  } else if (settings.rtmp) {
    plan.captures.push_back(RtmpRequest(*settings.rtmp));
  } else if (settings.webcam) {
    plan.captures.push_back(WebcamRequest(*settings.webcam, settings));
    if (whole && settings.webcamRight) {
      plan.captures.push_back(WebcamRequest(*settings.webcamRight, settings));
    }
  } else if (settings.video) {
    plan.videoFile = true;
    plan.captures.push_back(VideoRequest(*settings.video));
    if (whole && settings.videoRight) plan.captures.push_back(VideoRequest(*settings.videoRight));
  }
  plan.stereo = !whole || plan.captures.size() == 2;
  return plan;
}

}  // namespace common
