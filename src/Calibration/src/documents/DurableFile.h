/// Writes files so that they outlast an end of the process, and a loss of power, once a function has
/// returned.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace velmora {

/// Writes all of it. False, with errno set, when the system refuses some.
bool WriteAll(int descriptor, std::string_view bytes);

/// Writes a file that does not exist yet, and waits until the disk has its content. Its name outlasts a loss
/// of power only after SyncFolder. After an error there is no such file, unless there was one before.
std::error_code WriteNewFile(const std::string& path, std::string_view bytes);

/// Writes ".new-NAME" beside the file, replaces the file by it, and waits until the disk has content and
/// name. After an error the earlier file is as it was; only when the folder could not be brought to the disk
/// it may be either. The file must not be written by two at once.
std::error_code ReplaceFile(const std::string& path, std::string_view bytes);

/// Waits until the disk has the names in the folder.
std::error_code SyncFolder(const std::string& path);

}  // namespace velmora
