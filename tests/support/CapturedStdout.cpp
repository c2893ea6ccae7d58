/// Redirects file descriptor 1 to a file and back.
#include "CapturedStdout.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace support {

namespace {

void FlushAll() {
  std::cout.flush();
  std::fflush(stdout);
}

}  // namespace

CapturedStdout::CapturedStdout() : path_(folder_.File("stdout")), kept_(-1) {
  FlushAll();
  const int file = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
  kept_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  const bool redirected = file >= 0 && kept_ >= 0 && dup2(file, STDOUT_FILENO) >= 0;
  if (file >= 0) close(file);
  if (!redirected) {
    if (kept_ >= 0) close(kept_);
    throw std::runtime_error("cannot redirect standard output");
  }
}

CapturedStdout::~CapturedStdout() {
  FlushAll();
  dup2(kept_, STDOUT_FILENO);
  close(kept_);
}

std::string CapturedStdout::Text() const {
  FlushAll();
  return ReadText(path_);
}

}  // namespace support
