# What `cmake --install` puts under the prefix: the shared and static
# libraries, the public headers, the zestra tool, the CMake package
# (find_package(Zestra) -> Zestra::zestra, Zestra::zestra_static) and
# zestra.pc for pkg-config. Both package descriptions find the prefix
# relative to where they are installed, so `cmake --install --prefix DIR`
# may choose any place.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZESTRA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Zestra)

install(TARGETS zestra zestra_static
  EXPORT ZestraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zestra DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET zestra_tool)
  install(TARGETS zestra_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT ZestraTargets NAMESPACE Zestra:: DESTINATION ${ZESTRA_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZestraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZestraConfig.cmake
  INSTALL_DESTINATION ${ZESTRA_CMAKE_DIR})
# Versions 0.x promise nothing across minor versions.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZestraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZestraConfig.cmake ${PROJECT_BINARY_DIR}/ZestraConfigVersion.cmake
  DESTINATION ${ZESTRA_CMAKE_DIR})

file(RELATIVE_PATH ZESTRA_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" ZESTRA_PC_PREFIX "${ZESTRA_PC_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/zestra.pc.in ${PROJECT_BINARY_DIR}/zestra.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zestra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
