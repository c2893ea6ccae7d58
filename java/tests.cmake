# Tests in a real virtual machine that checks each native call, on pictures that are rendered first.
find_file(VELMORA_JUNIT_JAR junit-platform-console-standalone.jar PATHS /usr/share/java)
if(NOT VELMORA_JUNIT_JAR OR NOT VELMORA_TOOLS OR VELMORA_SANITIZE MATCHES "thread")
  # Under the thread sanitizer the virtual machine itself is what is reported.
  message(STATUS "No tests of the Java classes: JUnit 5 or the tools are missing, or the thread sanitizer is in use")
  return()
endif()
set(preload "")
set(test_environment)
if(VELMORA_SANITIZE)
  # The machine is not instrumented: what the sanitizer needs has to be there before it. Its own use of
  # segmentation faults is left alone, and so is what it never frees.
  foreach(library libasan.so libstdc++.so.6)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    string(APPEND preload "${path}:")
  endforeach()
  set(test_environment "ASAN_OPTIONS=detect_leaks=0:handle_segv=0")
endif()
file(GLOB VELMORA_JUNIT_API_JARS /usr/share/java/junit-jupiter-api.jar /usr/share/java/junit-jupiter-params.jar
  /usr/share/java/junit-jupiter-engine.jar /usr/share/java/junit-platform-commons.jar
  /usr/share/java/apiguardian-api.jar /usr/share/java/opentest4j.jar)
set(VELMORA_JUNIT_API_JARS "${VELMORA_JUNIT_API_JARS}" CACHE INTERNAL "What tests of JUnit 5 are compiled with")
set(tests src/test/java/com/velotrix/quiverleaf/sdk)
set(test_classes ArgumentsTest AwaitResultTest CalibratorTest GuidedTest ListenerTest NativeLibraryTest NativeMethodsTest
  PushedFramesTest ResultCheckTest ResultComparisonTest ResultsTest SessionTest SnapshotsTest SoakTest SolvingTest TextTest)
set(camera_test_classes CaptureTest PairTest)
set(test_helpers Cameras Footage Lenses LoadProgram PlantedFault RawFrames Recorder Soak Usage Views)
if(VELMORA_SANITIZE)
  list(REMOVE_ITEM test_classes SoakTest)  # what the sanitizer keeps back is no leak
endif()
# Excerpts of the later ones are on a page.
set(test_sources ${tests}/SoakTest.java ${tests}/SessionTest.java ${tests}/ResultCheckTest.java)
foreach(class ${test_classes} ${camera_test_classes} ${test_helpers})
  list(APPEND test_sources ${tests}/${class}.java)
endforeach()
list(REMOVE_DUPLICATES test_sources)
get_target_property(velmora_jar velmora_java JAR_FILE)
set(CMAKE_JAVA_COMPILE_FLAGS -encoding UTF-8)
add_jar(velmora_java_tests SOURCES ${test_sources}
  INCLUDE_JARS velmora_java "${VELMORA_GSON_JAR}" ${VELMORA_JUNIT_API_JARS})
get_target_property(tests_jar velmora_java_tests JAR_FILE)

set(VELMORA_JAVA_FOOTAGE "${CMAKE_CURRENT_BINARY_DIR}/footage" CACHE INTERNAL "Pictures that the tests in Java work on")
set(footage "${CMAKE_CURRENT_BINARY_DIR}/footage")
set(poses "${PROJECT_SOURCE_DIR}/share/velmora/poses-4x11.json")
add_custom_command(OUTPUT "${footage}/rendered"
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${footage}"
  COMMAND velmora-render --views 8 --spread --output "${footage}/views" --noise 2 --dist=-0.25,0.08,0,0,0
  COMMAND velmora-render --rig --views 8 --spread --output "${footage}/pairs" --noise 2 --dist=-0.1,0.02,0,0,0
  COMMAND velmora-render --video "${footage}/poses.avi" --follow "${poses}" --seconds 22 --fps 12 --fov 68
    --dist=-0.25,0.07,0,0,0 --noise 2
  COMMAND "${CMAKE_COMMAND}" -E touch "${footage}/rendered"
  DEPENDS velmora-render "${poses}" VERBATIM)
add_custom_target(velmora_java_footage ALL DEPENDS "${footage}/rendered")

set(java_test_options -Xcheck:jni -Djava.awt.headless=true "-Dvelmora.test.footage=${footage}"
  "-Dvelmora.test.poses=${poses}" "-Dvelmora.test.library=$<TARGET_FILE:Calibration>"
  "-Dvelmora.test.jar=${velmora_jar}" -cp "${VELMORA_JUNIT_JAR}:${velmora_jar}:${tests_jar}")
# Fails for what the machine finds in native code of ours.
set(VELMORA_RUN_CHECKED "${CMAKE_CURRENT_SOURCE_DIR}/run_checked.sh" CACHE INTERNAL "Judges what a machine prints")
function(add_junit_test class preloaded)
  add_test(NAME "java.${class}" COMMAND "${VELMORA_RUN_CHECKED}" "${Java_JAVA_EXECUTABLE}" ${java_test_options}
    org.junit.platform.console.ConsoleLauncher --select-class=com.velotrix.quiverleaf.sdk.${class}
    --fail-if-no-tests --disable-banner --details=tree)
  set_tests_properties("java.${class}" PROPERTIES LABELS java TIMEOUT 300
    ENVIRONMENT "LD_PRELOAD=${preload}${preloaded};VELMORA_FAKE_CAMERAS=${CMAKE_CURRENT_BINARY_DIR}/cameras/${class};${test_environment}")
endfunction()
foreach(class ${test_classes})
  add_junit_test(${class} "")
endforeach()
# These see cameras that a preloaded library plays from a folder.
foreach(class ${camera_test_classes})
  add_junit_test(${class} "$<TARGET_FILE:velmora_fake_camera>")
endforeach()

# The check itself: with faults that are planted in native code.
add_library(velmora_planted_fault MODULE src/test/native/planted_fault.cpp)
target_include_directories(velmora_planted_fault SYSTEM PRIVATE ${JAVA_INCLUDE_PATH} ${JAVA_INCLUDE_PATH2})
target_link_libraries(velmora_planted_fault PRIVATE velmora_warnings)
add_test(NAME java.FaultsOfNativeCodeAreFound COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/run_checked_tests.sh"
  "${VELMORA_RUN_CHECKED}" "${CMAKE_CURRENT_SOURCE_DIR}/src/test/fixtures"
  "${Java_JAVA_EXECUTABLE}" -Xcheck:jni -XX:-CreateCoredumpOnCrash
  "-Dvelmora.test.planted=$<TARGET_FILE:velmora_planted_fault>"
  -cp "${tests_jar}" com.velotrix.quiverleaf.sdk.PlantedFault)
set_tests_properties(java.FaultsOfNativeCodeAreFound PROPERTIES LABELS java TIMEOUT 300
  ENVIRONMENT "LD_PRELOAD=${preload};${test_environment}")

add_test(NAME java.DocumentedExample COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/documented_example.sh"
  "${PROJECT_SOURCE_DIR}/examples/java/GuidedCamera.java" "${velmora_jar}" "${footage}/poses.avi" "${poses}")
set_tests_properties(java.DocumentedExample PROPERTIES LABELS java TIMEOUT 300
  ENVIRONMENT "LD_PRELOAD=${preload};${test_environment}")

# Takes minutes, so it is run by hand and not by the tests.
add_custom_target(velmora_java_soak
  COMMAND "${Java_JAVA_EXECUTABLE}" ${java_test_options} com.velotrix.quiverleaf.sdk.Soak 20000
  DEPENDS velmora_java_tests velmora_java_footage Calibration USES_TERMINAL VERBATIM)
