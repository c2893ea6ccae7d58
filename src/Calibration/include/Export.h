/// Marks what the library offers; everything else in it is hidden.
#pragma once

#if defined(__GNUC__)
#define VELMORA_API __attribute__((visibility("default")))
#else
#define VELMORA_API
#endif
