# The engine's rooms: folders of one subject each, on floors. A room sees the floors below its own and nothing else, so
# that an include against that order does not compile.

set(VELMORA_FLOORS
  "foundation"
  "documents model"
  "imaging finder solver capture jni"
  "quality assistant"
  "calibrator"
  "session"
  "binding")

# Sets `below` to the rooms of the floors below that of the room.
function(velmora_rooms_below room below)
  set(rooms)
  foreach(floor ${VELMORA_FLOORS})
    string(REPLACE " " ";" here "${floor}")
    if("${room}" IN_LIST here)
      set(${below} ${rooms} PARENT_SCOPE)
      return()
    endif()
    list(APPEND rooms ${here})
  endforeach()
  message(FATAL_ERROR "${room} is on no floor")
endfunction()

# velmora_room(NAME [HEADERS public headers...] SOURCES files...): the room as an object library, velmora_NAME. Others
# write an include as "NAME/File.h", or as "File.h" when it is one of the public headers, which all lie in include/. Both
# are found through a folder of links that shows this room and no other.
function(velmora_room room)
  cmake_parse_arguments(ROOM "" "" "HEADERS;SOURCES" ${ARGN})
  set(door "${PROJECT_BINARY_DIR}/rooms/${room}")
  file(MAKE_DIRECTORY "${door}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/src/${room}" "${door}/${room}" SYMBOLIC)
  foreach(header ${ROOM_HEADERS})
    get_filename_component(folder "${door}/${header}" DIRECTORY)
    file(MAKE_DIRECTORY "${folder}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/include/${header}" "${door}/${header}" SYMBOLIC)
  endforeach()
  list(TRANSFORM ROOM_SOURCES PREPEND "src/${room}/")
  add_library(velmora_${room} OBJECT ${ROOM_SOURCES})
  set_target_properties(velmora_${room} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(velmora_${room} PRIVATE "${door}")
  velmora_rooms_below(${room} below)
  foreach(lower ${below})
    target_include_directories(velmora_${room} PRIVATE "${PROJECT_BINARY_DIR}/rooms/${lower}")
  endforeach()
  target_include_directories(velmora_${room} SYSTEM PRIVATE ${OpenCV_INCLUDE_DIRS})
  # Eigen is the rooms' own: no public header includes it, and whoever links the library does without.
  target_link_libraries(velmora_${room}
    PRIVATE Eigen3::Eigen nlohmann_json::nlohmann_json Threads::Threads velmora_warnings)
  # Fused multiply-adds would make numbers depend on the processor.
  target_compile_options(velmora_${room} PRIVATE -ffp-contract=off)
  set_property(GLOBAL APPEND PROPERTY VELMORA_ROOMS ${room})
endfunction()
