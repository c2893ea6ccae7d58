# How test programs are compiled: most of their text runs once, so that compiling it quickly counts for more than speed.

option(VELMORA_PCH "Compile the headers that tests share once. Off in the presets that prove every file to include what it uses" ON)

# Gives a test program its options and, from the one target that holds them, the compiled headers.
function(velmora_test_program name)
  # Behind -O3 of a release build, of which the last word counts.
  target_compile_options(${name} PRIVATE "$<$<CONFIG:Release>:-O1>")
  if(NOT VELMORA_PCH)
    return()
  endif()
  if(NOT TARGET velmora_test_headers)
    # An executable, since its code is placed as that of the tests is, which compiled headers have to share.
    file(WRITE "${CMAKE_BINARY_DIR}/test_headers/main.cpp" "int main() { return 0; }\n")
    add_executable(velmora_test_headers "${CMAKE_BINARY_DIR}/test_headers/main.cpp")
    target_compile_options(velmora_test_headers PRIVATE "$<$<CONFIG:Release>:-O1>")
    target_link_libraries(velmora_test_headers PRIVATE velmora_test_support GTest::gtest velmora_warnings)
    target_precompile_headers(velmora_test_headers PRIVATE <gtest/gtest.h> <nlohmann/json.hpp> <opencv2/core.hpp>)
  endif()
  target_precompile_headers(${name} REUSE_FROM velmora_test_headers)
endfunction()
