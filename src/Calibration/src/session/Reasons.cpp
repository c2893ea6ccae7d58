/// Says in plain English why a file could not be written or read.
#include "session/Reasons.h"

#include <cctype>
#include <map>
#include <stdexcept>

namespace velmora {

std::string ReasonOf(const std::error_code& error) {
  static const std::map<int, const char*> REASONS = {
      {EACCES, "permission is denied"},       {EDQUOT, "the disk space that this user may take is full"},
      {EEXIST, "it exists already"},          {EFBIG, "a file would become larger than is allowed"},
      {EIO, "the disk reports an error"},     {EMFILE, "this program has too many files open"},
      {ENAMETOOLONG, "its name is too long"}, {ENOENT, "there is no such file or folder"},
      {ENOSPC, "the disk is full"},           {ENOTDIR, "a part of its path is no folder"},
      {EPERM, "permission is denied"},        {EROFS, "the disk can only be read"},
  };
  const auto known = REASONS.find(error.value());
  if (known != REASONS.end()) return known->second;
  std::string text = error.message();
  if (text.empty()) return "the system does not say why";
  text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
  return text;
}

void Refuse(const std::string& what, const std::error_code& error) {
  throw std::runtime_error(what + ": " + ReasonOf(error) + ".");
}

}  // namespace velmora
