/// Has a program see the fake capture device.
#pragma once

namespace cameras {

/// To be called first in main. The loader takes in what is to be preloaded when a program starts, so this
/// starts the program once more, unless that has been done.
void PreloadFakeDevice(char** argv);

}  // namespace cameras
