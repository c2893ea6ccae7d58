# The programs' parts: folders of programs/, one for each program and one, common/, that all of them use. A program sees
# its own folder, common/ and what is published, and nothing else, so that an include of another program's parts does not
# compile.

# velmora_program_parts(NAME FOLDER files...): the library NAME of files in that folder, which others include as
# "FOLDER/File.h". They are found through a folder of links that shows this folder and no other.
function(velmora_program_parts name folder)
  set(door "${PROJECT_BINARY_DIR}/doors/${folder}")
  file(MAKE_DIRECTORY "${door}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${folder}" "${door}/${folder}" SYMBOLIC)
  set(files ${ARGN})
  list(TRANSFORM files PREPEND "${folder}/")
  add_library(${name} STATIC ${files})
  target_include_directories(${name} PUBLIC "${door}")
  target_link_libraries(${name} PRIVATE velmora_warnings)
endfunction()
