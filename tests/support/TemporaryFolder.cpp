/// Makes and removes temporary folders; reads and writes small files.
#include "TemporaryFolder.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace support {

TemporaryFolder::TemporaryFolder() {
  path_ = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
  if (mkdtemp(&path_[0]) == nullptr) throw std::runtime_error("cannot make a temporary folder");
}

TemporaryFolder::~TemporaryFolder() {
  namespace fs = std::filesystem;
  std::error_code ignored;
  // Folders without write permission would keep their contents.
  for (fs::recursive_directory_iterator entry(path_, ignored), end; !ignored && entry != end;
       entry.increment(ignored)) {
    std::error_code failure;
    if (entry->is_directory(failure) && !entry->is_symlink(failure)) {
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, failure);
    }
  }
  fs::remove_all(path_, ignored);
}

std::string ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file) text << file.rdbuf();
  if (!file) throw std::runtime_error("cannot read \"" + path + "\"");
  return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write \"" + path + "\"");
}

}  // namespace support
