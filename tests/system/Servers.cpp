/// Servers on the loopback interface that the system tests read from.
#include "Servers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "VirtualDisplay.h"

namespace system_test {

namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

/// A port of the loopback interface that nobody listens on.
std::string FreePort() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Loopback(0);
  socklen_t length = sizeof(address);
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  const bool bound = bind(listener, plain, length) == 0 && getsockname(listener, plain, &length) == 0;
  close(listener);
  if (!bound) {
    throw std::runtime_error("no free port");
  }
  return std::to_string(ntohs(address.sin_port));
}

bool Answers(const std::string& port) {
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Loopback(std::stoi(port));
  const bool connected = connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  close(client);
  return connected;
}

void AwaitAnswer(support::Process& program, const std::string& port) {
  if (!WaitUntil([&] { return Answers(port) || !program.Running(); }) || !program.Running()) {
    throw std::runtime_error("a server does not start: " + program.Errors());
  }
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

}  // namespace

StreamServer::StreamServer(const std::string& source, const std::string& coding)
    : port_(FreePort()),
      program_(Words("gst-launch-1.0 -q " + source + " ! " + coding +
                     " ! tcpserversink host=127.0.0.1 sync=false port=" + port_)) {
  AwaitAnswer(program_, port_);
}

std::string PicturesInALoop(const std::string& path, int perSecond) {
  return "multifilesrc loop=true location=" + path +
         " caps=image/jpeg,framerate=" + std::to_string(perSecond) +
         "/1 ! jpegdec ! videorate ! videoconvert ! video/x-raw,format=I420,framerate=30/1 ! identity "
         "sync=true";
}

WebServer::WebServer(const std::string& folder)
    : httpPort_(FreePort()),
      rtmpPort_(FreePort()),
      program_({VELMORA_NGINX, "-p", state_.Path(), "-e", state_.File("errors"), "-g", "daemon off;", "-c",
                Configuration(folder)}) {
  AwaitAnswer(program_, httpPort_);
  AwaitAnswer(program_, rtmpPort_);
}

/// Writes it; its path.
std::string WebServer::Configuration(const std::string& folder) const {
  std::ostringstream text;
  text << "load_module " << VELMORA_NGINX_RTMP << ";\n"
       << "master_process off;\npid " << state_.File("pid") << ";\nevents {}\n"
       << "rtmp { server { listen 127.0.0.1:" << rtmpPort_ << "; application live { live on; } } }\n"
       << "http { access_log off;\n";
  for (const char* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    text << kind << "_temp_path " << state_.File(kind) << ";\n";
  }
  text << "server { listen 127.0.0.1:" << httpPort_ << "; root " << folder << "; } }\n";
  support::WriteText(state_.File("configuration"), text.str());
  return state_.File("configuration");
}

std::string WebServer::Http(const std::string& name) const {
  return "http://127.0.0.1:" + httpPort_ + "/" + name;
}

std::string WebServer::Rtmp(const std::string& name) const {
  return "rtmp://127.0.0.1:" + rtmpPort_ + "/live/" + name;
}

VideoSender::VideoSender(const std::string& path, const std::string& address)
    : program_(Words("ffmpeg -nostdin -loglevel error -re -stream_loop -1 -i " + path +
                     " -c:v libx264 -tune zerolatency -g 15 -pix_fmt yuv420p -f flv " + address)) {
}

}  // namespace system_test
