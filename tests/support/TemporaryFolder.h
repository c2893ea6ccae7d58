/// A folder of its own for a test.
#pragma once

#include <string>

namespace support {

/// A fresh, empty folder that is removed with its contents on destruction.
class TemporaryFolder {
 public:
  /// Throws std::runtime_error when no folder can be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// Without a slash at the end.
  const std::string& Path() const { return path_; }
  /// The path of a file or folder in it.
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

/// The content of a file. Throws std::runtime_error when it cannot be read.
std::string ReadText(const std::string& path);

/// Writes a file anew. Throws std::runtime_error when it cannot be written.
void WriteText(const std::string& path, const std::string& text);

}  // namespace support
