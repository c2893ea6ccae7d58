# Sets VELMORA_HAS_JNI when the Java half is to be built and the JDK's headers are there.
set(VELMORA_HAS_JNI OFF)
if(VELMORA_JNI)
  find_package(Java QUIET COMPONENTS Development)
  if(Java_JAVAC_EXECUTABLE AND NOT DEFINED JAVA_HOME AND NOT DEFINED ENV{JAVA_HOME})
    # The JDK whose compiler is on the path, wherever it was installed.
    get_filename_component(JAVA_HOME "${Java_JAVAC_EXECUTABLE}" REALPATH)
    get_filename_component(JAVA_HOME "${JAVA_HOME}/../.." ABSOLUTE)
  endif()
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
