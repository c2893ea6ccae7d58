# What an installation consists of, as components: library, tools, development, java; and the packages made of them.
include(CMakePackageConfigHelpers)

install(TARGETS Calibration EXPORT VelmoraTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development)
if(TARGET velmora-window-probe)
  # The library looks for it there.
  install(TARGETS velmora-window-probe RUNTIME DESTINATION "${CMAKE_INSTALL_LIBDIR}/velmora" COMPONENT library)
endif()
install(FILES share/velmora/poses-4x11.json share/velmora/poses-4x11.txt
  DESTINATION "${CMAKE_INSTALL_DATADIR}/velmora" COMPONENT library)

set(programs Velmora)
if(VELMORA_TOOLS)
  list(APPEND programs velmora-batch velmora-guided velmora-render velmora-poses velmora-compare)
endif()
install(TARGETS ${programs} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
foreach(program ${programs})
  install(FILES "docs/man/${program}.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
endforeach()

install(DIRECTORY src/Calibration/include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/velmora" COMPONENT development)
install(EXPORT VelmoraTargets NAMESPACE Velmora:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Velmora"
  COMPONENT development)
configure_package_config_file(cmake/VelmoraConfig.cmake.in "${PROJECT_BINARY_DIR}/VelmoraConfig.cmake"
  INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Velmora")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
# Relative, so that an installation may be moved.
file(RELATIVE_PATH VELMORA_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/velmora.pc.in velmora.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/VelmoraConfig.cmake" "${PROJECT_BINARY_DIR}/VelmoraConfigVersion.cmake"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/Velmora" COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/velmora.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# One Debian package for each component: cpack -G DEB.
set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_CONTACT "The Velmora developers <velmora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL library tools development)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvelmora${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME velmora)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelmora-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libopencv-dev, nlohmann-json3-dev")
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The calibration engine and its pose model")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Calibrates cameras live and from pictures")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers of the calibration engine")
if(VELMORA_HAS_JAVA)
  list(APPEND CPACK_COMPONENTS_ALL java)
  set(CPACK_DEBIAN_JAVA_PACKAGE_NAME libvelmora-java)
  set(CPACK_DEBIAN_JAVA_PACKAGE_SECTION java)
  set(CPACK_DEBIAN_JAVA_PACKAGE_DEPENDS "libgoogle-gson-java")
  set(CPACK_COMPONENT_JAVA_DEPENDS library)
  set(CPACK_COMPONENT_JAVA_DESCRIPTION "The calibration engine for Java programs")
endif()
include(CPack)
