/// Writes down what calibrations of known data come to, so that two builds can be compared:
///   velmora-freeze FILE
/// and, with what another build wrote, tests/frozen/compare.py EARLIER LATER.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "Log.h"
#include "frozen/Cases.h"

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: velmora-freeze FILE\n";
    return 2;
  }
  Log::LOG_LEVEL = 0;
  std::ofstream file(arguments[1]);
  frozen::Writer writer(file);
  frozen::WriteCameras(writer);
  frozen::WritePairs(writer);
  if (std::filesystem::is_directory(VELMORA_SHARED_DATA)) {
    frozen::WritePhotographs(writer, VELMORA_SHARED_DATA);
  } else {
    std::cerr << "no photographs at " << VELMORA_SHARED_DATA << ": left out\n";
  }
  file.close();
  return file.good() ? 0 : 1;
}
