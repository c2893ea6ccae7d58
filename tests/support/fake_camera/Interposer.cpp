/// Answers the calls that programs make of /dev/video0, /dev/video1, ... in place of the operating system.
///
/// To be preloaded (LD_PRELOAD). VELMORA_FAKE_CAMERAS names a folder whose folders "0", "1", ... are
/// the devices (see FakeDevice); it is looked at with each opening. All other calls go to the system.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/timerfd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "FakeDevice.h"

namespace fake_camera {

namespace {

constexpr char PREFIX[] = "/dev/video";

/// The devices that are open, by file descriptor. Never destroyed: programs close files while they exit.
struct Table {
  std::mutex lock;
  std::map<int, std::shared_ptr<FakeDevice>> devices;
};

Table& Devices() {
  static Table* const table = new Table;
  return *table;
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::shared_ptr<FakeDevice> DeviceOf(int descriptor) {
  Table& table = Devices();
  const std::lock_guard<std::mutex> lock(table.lock);
  const auto found = table.devices.find(descriptor);
  return found == table.devices.end() ? nullptr : found->second;
}

int OpenDevice(const std::string& number) {
  const char* cameras = std::getenv("VELMORA_FAKE_CAMERAS");
  const std::string folder = std::string(cameras == nullptr ? "/nonexistent" : cameras) + "/" + number;
  if (!FakeDevice::Exists(folder)) {
    errno = ENOENT;
    return -1;
  }
  if (!FakeDevice::MayBeOpened(folder)) {
    errno = EACCES;
    return -1;
  }
  const int descriptor = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  if (descriptor < 0) return descriptor;
  Table& table = Devices();
  const std::lock_guard<std::mutex> lock(table.lock);
  table.devices[descriptor] = std::make_shared<FakeDevice>(folder, descriptor);
  return descriptor;
}

bool IsDevice(const char* path) {
  return path != nullptr && std::strncmp(path, PREFIX, sizeof(PREFIX) - 1) == 0;
}

}  // namespace

void* AnonymousMemory(std::size_t length) {
  using Map = void* (*)(void*, std::size_t, int, int, int, off_t);
  static const auto next = Next<Map>("mmap");
  return next(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

}  // namespace fake_camera

using namespace fake_camera;  // NOLINT

extern "C" {

int open(const char* path, int flags, ...) {
  if (IsDevice(path)) return OpenDevice(path + sizeof(PREFIX) - 1);
  static const auto next = Next<int (*)(const char*, int, ...)>("open");
  if ((flags & (O_CREAT | O_TMPFILE)) == 0) return next(path, flags);
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  return next(path, flags, mode);
}

int close(int descriptor) {
  static const auto next = Next<int (*)(int)>("close");
  {
    Table& table = Devices();
    const std::lock_guard<std::mutex> lock(table.lock);
    table.devices.erase(descriptor);
  }
  return next(descriptor);
}

int ioctl(int descriptor, unsigned long request, ...) {
  std::va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  const auto device = DeviceOf(descriptor);
  if (device == nullptr) {
    static const auto next = Next<int (*)(int, unsigned long, ...)>("ioctl");
    return next(descriptor, request, argument);
  }
  const int fault = device->Control(request, argument);
  if (fault == 0) return 0;
  errno = fault;
  return -1;
}

void* mmap(void* address, std::size_t length, int protection, int flags, int descriptor, off_t offset) {
  const auto device = descriptor < 0 ? nullptr : DeviceOf(descriptor);
  if (device == nullptr) {
    using Map = void* (*)(void*, std::size_t, int, int, int, off_t);
    static const auto next = Next<Map>("mmap");
    return next(address, length, protection, flags, descriptor, offset);
  }
  void* const memory = device->Map(length, offset);
  if (memory != nullptr) return memory;
  errno = EINVAL;
  return MAP_FAILED;
}

}  // extern "C"
