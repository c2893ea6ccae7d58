/// Which cameras the machine has, for those whose camera does not open.
#include "guided/Cameras.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <vector>

namespace guided {

namespace {

/// The numbers of the devices, ascending.
std::vector<int> DevicesIn(const std::string& folder) {
  const std::string start = "video";
  constexpr size_t MOST_DIGITS = 6;
  std::vector<int> numbers;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.rfind(start, 0) != 0) continue;
    const std::string digits = name.substr(start.size());
    const bool number =
        !digits.empty() && digits.size() <= MOST_DIGITS &&
        std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
    if (number) numbers.push_back(std::stoi(digits));
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

}  // namespace

std::string CamerasText(const std::string& folder, int wanted) {
  const std::string device = folder + "/video" + std::to_string(wanted);
  const std::vector<int> numbers = DevicesIn(folder);
  if (numbers.empty()) return "  There is no camera: no " + folder + "/video* exists.\n";
  if (std::find(numbers.begin(), numbers.end(), wanted) != numbers.end()) {
    return access(device.c_str(), R_OK | W_OK) == 0
               ? "  " + device + " is there: another program may be using it, or it is no camera.\n"
               : "  You have no permission to use " + device + ".\n";
  }
  std::string list;
  for (const int number : numbers) {
    list += (list.empty() ? "" : ", ") + folder + "/video" + std::to_string(number);
  }
  return "  There is no " + device + "; there " + (numbers.size() == 1 ? "is " : "are ") + list + ".\n";
}

}  // namespace guided
