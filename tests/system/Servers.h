/// Servers on the loopback interface that the system tests read from.
#pragma once

#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFolder.h"

namespace system_test {

/// Codings of a stream over TCP, as pipelines.
constexpr char H264[] = "x264enc tune=zerolatency key-int-max=15 ! rtph264pay config-interval=1 ! gdppay";
constexpr char MJPEG[] = "jpegenc quality=95 ! multipartmux";

/// Serves what a GStreamer pipeline produces over TCP. Throws std::runtime_error when it does not come up.
class StreamServer {
 public:
  /// `source` produces raw pictures, `coding` encodes and packs them.
  StreamServer(const std::string& source, const std::string& coding);

  const std::string& Port() const { return port_; }
  support::Process& Program() { return program_; }

 private:
  std::string port_;
  support::Process program_;
};

/// A pipeline that produces the numbered JPEG pictures of the path ("%03d" in it) over and over, a second
/// has `perSecond` of them.
std::string PicturesInALoop(const std::string& path, int perSecond);

/// A web server that hands out the files of a folder and relays RTMP streams. Throws std::runtime_error when
/// it does not come up.
class WebServer {
 public:
  explicit WebServer(const std::string& folder);

  /// The address of a file.
  std::string Http(const std::string& name) const;
  /// The address of a stream, to be sent to and to be read from.
  std::string Rtmp(const std::string& name) const;

 private:
  std::string Configuration(const std::string& folder) const;

  support::TemporaryFolder state_;
  std::string httpPort_;
  std::string rtmpPort_;
  support::Process program_;
};

/// Sends a video to an RTMP address in real time, over and over.
class VideoSender {
 public:
  VideoSender(const std::string& path, const std::string& address);

  support::Process& Program() { return program_; }

 private:
  support::Process program_;
};

}  // namespace system_test
