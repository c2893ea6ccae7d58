# Instruments every target when VELMORA_SANITIZE names sanitizers.
if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()

# The library's code is watched by the fuzzer; the targets link it themselves.
if(VELMORA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "VELMORA_FUZZ needs clang: use the preset fuzz")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
