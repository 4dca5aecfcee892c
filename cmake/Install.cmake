# Installs the shared library, the public header, a pkg-config file and a CMake
# package so that hosts can use find_package(zelengine) or pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS zelengine EXPORT zelengineTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT zelengineTargets NAMESPACE zelengine::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelengine)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/zelengineConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zelengineConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelengine)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zelengineConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelengineConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/zelengineConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zelengine)

configure_file(${CMAKE_CURRENT_LIST_DIR}/zelengine.pc.in
  ${CMAKE_CURRENT_BINARY_DIR}/zelengine.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zelengine.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
