/// A connection to an X server, to find out whether one answers.
#include "foundation/XServer.h"

#include <dlfcn.h>

#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace velmora {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds RETRY_TIME{1000};
constexpr std::chrono::milliseconds RETRY_PAUSE{50};
constexpr std::chrono::milliseconds READING_TIME{1000};  ///< of a small file, with much to spare

/// The functions of the X library, which is loaded at run time: the engine needs it for nothing else. It is
/// the one that never ends the process, whatever becomes of a connection. It stays loaded.
struct XLibrary {
  using Connect = void* (*)(const char*, int*);
  using HasError = int (*)(void*);
  using Disconnect = void (*)(void*);

  XLibrary() {
    void* const library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return;
    connect = reinterpret_cast<Connect>(dlsym(library, "xcb_connect"));
    hasError = reinterpret_cast<HasError>(dlsym(library, "xcb_connection_has_error"));
    disconnect = reinterpret_cast<Disconnect>(dlsym(library, "xcb_disconnect"));
  }
  bool Loaded() const { return connect != nullptr && hasError != nullptr && disconnect != nullptr; }

  Connect connect = nullptr;
  HasError hasError = nullptr;
  Disconnect disconnect = nullptr;
};

/// Never destroyed: a thread that asks a silent server may outlive everything else.
const XLibrary& Library() {
  static const auto* const library = new XLibrary;
  return *library;
}

/// The latest connection; the one before it ends when it is there.
void Keep(void* connection) {
  static auto* const lock = new std::mutex;
  static void* kept = nullptr;
  const std::lock_guard<std::mutex> locked(*lock);
  std::swap(kept, connection);
  if (connection != nullptr) Library().disconnect(connection);
}

/// One connection at a time: the library reads the file of the display's keys into memory that all threads
/// share. It does so before it speaks to the server, so that whoever has not had its turn by then may go on
/// beside one that waits for a silent server.
class Turn {
 public:
  /// Waits for it, but not longer than the reading of a file takes.
  Turn() {
    std::unique_lock<std::mutex> locked(Shared().lock);
    mine_ = Shared().free.wait_for(locked, READING_TIME, [] { return !Shared().taken; });
    if (mine_) Shared().taken = true;
  }
  ~Turn() {
    if (!mine_) return;
    const std::lock_guard<std::mutex> locked(Shared().lock);
    Shared().taken = false;
    Shared().free.notify_one();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  struct State {
    std::mutex lock;
    std::condition_variable free;
    bool taken = false;
  };
  /// Never destroyed, as the library.
  static State& Shared() {
    static auto* const state = new State;
    return *state;
  }

  bool mine_ = false;
};

void* Connect(const std::string& display) {
  const Turn turn;
  return Library().connect(display.c_str(), nullptr);
}

/// Null when it is refused.
void* ConnectOnce(const std::string& display) {
  void* const connection = Connect(display);  // never null, but may be in error
  if (Library().hasError(connection) == 0) return connection;
  Library().disconnect(connection);
  return nullptr;
}

bool ConnectAndKeep(const std::string& display) {
  if (!Library().Loaded()) return false;
  const auto end = Clock::now() + RETRY_TIME;
  void* connection = ConnectOnce(display);
  while (connection == nullptr && Clock::now() < end) {
    std::this_thread::sleep_for(RETRY_PAUSE);
    connection = ConnectOnce(display);
  }
  Keep(connection);
  return connection != nullptr;
}

}  // namespace

bool XServerAnswers(const std::string& display, std::chrono::milliseconds patience) {
  // A server that accepts but never answers would block for ever, so the question is put on a thread that is
  // left behind when time runs out.
  auto answer = std::make_shared<std::promise<bool>>();
  auto result = answer->get_future();
  std::thread([answer, display] { answer->set_value(ConnectAndKeep(display)); }).detach();
  return result.wait_for(patience) == std::future_status::ready && result.get();
}

}  // namespace velmora
