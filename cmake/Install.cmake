# Installs the shared library, its public headers, a CMake package
# (find_package(ZORModelIo) -> ZORModelIo::ZORModelIo) and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The public headers use string_view: a host linking the target gets C++17 at least.
target_compile_features(ZORModelIo PUBLIC cxx_std_17)

install(TARGETS ZORModelIo EXPORT ZORModelIoTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(header ${ZOR_PUBLIC_HEADERS})
  if(header)
    get_filename_component(dir "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/src/${header}" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZORModelIo/${dir})
  endif()
endforeach()
# The host includes ZORModelIo.h directly from the include folder.
install(FILES "${PROJECT_SOURCE_DIR}/src/module/ZORModelIo.h" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ZORModelIo)

install(EXPORT ZORModelIoTargets NAMESPACE ZORModelIo:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZORModelIo)
configure_package_config_file(cmake/ZORModelIoConfig.cmake.in ${PROJECT_BINARY_DIR}/ZORModelIoConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZORModelIo)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZORModelIoConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZORModelIoConfig.cmake ${PROJECT_BINARY_DIR}/ZORModelIoConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZORModelIo)

configure_file(cmake/ZORModelIo.pc.in ${PROJECT_BINARY_DIR}/ZORModelIo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZORModelIo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
