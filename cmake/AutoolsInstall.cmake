# What `cmake --install` lays out: a tree that another project uses with
#
#     find_package(7xAutoUpdateTools CONFIG REQUIRED)
#     target_link_libraries(program PRIVATE 7xAutoUpdateTools::7xAutoUpdateTools)
include(CMakePackageConfigHelpers)

# `bin` is complete: the library, the download library it loads by name, and the C++ runtime they share with the program.
install(TARGETS 7xAutoUpdateTools EXPORT 7xAutoUpdateToolsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS 7xFileTransfer LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${AUTOOLS_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
if(MSVC)
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_DESTINATION ${CMAKE_INSTALL_BINDIR})
  include(InstallRequiredSystemLibraries)
endif()

get_property(headers GLOBAL PROPERTY AUTOOLS_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR}/src ${header})
  cmake_path(GET name PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/7xAutoUpdateTools)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/7xAutoUpdateToolsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfig.cmake
  INSTALL_DESTINATION ${packageDir} PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(EXPORT 7xAutoUpdateToolsTargets NAMESPACE 7xAutoUpdateTools:: DESTINATION ${packageDir})
install(FILES ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfig.cmake
  ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfigVersion.cmake DESTINATION ${packageDir})
