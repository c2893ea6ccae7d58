# Sets VELMORA_HAS_JNI when the Java half is to be built and the JDK's headers are there.
set(VELMORA_HAS_JNI OFF)
if(VELMORA_JNI)
  find_package(JNI QUIET)
  # The headers suffice: the virtual machine loads the engine, the engine links to no part of it.
  if(JAVA_INCLUDE_PATH AND JAVA_INCLUDE_PATH2)
    set(VELMORA_HAS_JNI ON)
  elseif(NOT VELMORA_JNI STREQUAL "AUTO")
    message(FATAL_ERROR "VELMORA_JNI is on, but no JDK was found")
  else()
    message(STATUS "No Java half: no JDK was found")
  endif()
endif()
