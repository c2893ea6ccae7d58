# The warnings that every target of the project is built with.
add_library(velmora_warnings INTERFACE)
target_compile_options(velmora_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
  -Woverloaded-virtual -Wconversion -Wformat=2 -Wundef)
if(VELMORA_WERROR)
  target_compile_options(velmora_warnings INTERFACE -Werror)
endif()
