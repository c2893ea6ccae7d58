/// Local sockets that stand in for the servers of window systems.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>

namespace unit {

/// A local socket that accepts connections into its queue and never answers.
class LocalServer {
 public:
  /// A name that starts with a zero byte is one outside the file system.
  explicit LocalServer(const std::string& name) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), length) != 0 || listen(socket_, 8) != 0) {
      close(socket_);
      throw std::runtime_error("cannot listen");
    }
  }
  ~LocalServer() { close(socket_); }
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  /// The next connection; it is the caller's to close.
  int Accept() const { return accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC); }

 private:
  int socket_;
};

/// The name under which an X server of that number is found first.
inline std::string XSocketName(int number) {
  return std::string(1, '\0') + "/tmp/.X11-unix/X" + std::to_string(number);
}

}  // namespace unit
