/// The entry point of the interactive application.
#include <iostream>

#include "velmora/Application.h"

int main(int argc, char** argv) {
  return app::RunApplication(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), std::cout,
                             std::cerr);
}
