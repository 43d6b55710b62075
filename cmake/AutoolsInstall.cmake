# What `cmake --install` lays out: a tree that another project uses with
#
#     find_package(7xAutoUpdateTools CONFIG REQUIRED)
#     target_link_libraries(program PRIVATE 7xAutoUpdateTools::7xAutoUpdateTools)
#
# or through pkg-config. `--component NAME` lays out a part: runtime, development, tools, symbols (debug symbols, split off)
# and debugging (what makes a debugger show the library's classes).
include(CMakePackageConfigHelpers)

# A command that signs the file given as its last argument, in place; program and arguments as a list. Empty: nothing is signed.
set(AUTOOLS_SIGN_COMMAND "" CACHE STRING "Command that signs each installed program and library of ours")
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/7xAutoUpdateTools)

# Installs the finished program or library of a target, and its symbols.
function(autools_install_binary target component)
  set(variables "
    include(\"${PROJECT_SOURCE_DIR}/cmake/FinishBinaries.cmake\")
    set(CMAKE_CURRENT_BINARY_DIR \"${PROJECT_BINARY_DIR}\")
    set(built \"$<TARGET_FILE:${target}>\")
    set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(name \"$<TARGET_FILE_NAME:${target}>\")")
  install(CODE "${variables}
    autools_finish_binary(\"\${bin}/\${name}\" \"\${built}\" \"${AUTOOLS_OBJCOPY}\" \"${AUTOOLS_SIGN_COMMAND}\")"
    COMPONENT ${component})
  if(AUTOOLS_OBJCOPY)
    install(CODE "${variables}
      file(MAKE_DIRECTORY \"\${bin}\")
      autools_write_symbols(\"${AUTOOLS_OBJCOPY}\" \"\${built}\" \"\${bin}/\${name}.debug\")"
      COMPONENT symbols)
  elseif(MSVC)
    install(FILES $<TARGET_PDB_FILE:${target}> DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT symbols OPTIONAL)
  endif()
endfunction()

# `bin` is complete: the library, the download library it loads by name, and the C++ runtime they share with the program.
install(TARGETS 7xAutoUpdateTools EXPORT 7xAutoUpdateToolsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(TARGETS 7xFileTransfer LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES ${AUTOOLS_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
autools_install_binary(7xAutoUpdateTools runtime)
autools_install_binary(7xFileTransfer runtime)
if(TARGET autool)
  autools_install_binary(autool tools)
endif()
if(MSVC)
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_DESTINATION ${CMAKE_INSTALL_BINDIR})
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_COMPONENT runtime)
  include(InstallRequiredSystemLibraries)
endif()

get_property(headers GLOBAL PROPERTY AUTOOLS_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR}/src ${header})
  cmake_path(GET name PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development)
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/debugging/7xAutoUpdateTools.natvis ${PROJECT_SOURCE_DIR}/debugging/gdb/autools_printers.py
  DESTINATION ${CMAKE_INSTALL_DATADIR}/7xAutoUpdateTools COMPONENT debugging)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/7xAutoUpdateToolsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfig.cmake
  INSTALL_DESTINATION ${packageDir} PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(EXPORT 7xAutoUpdateToolsTargets NAMESPACE 7xAutoUpdateTools:: DESTINATION ${packageDir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfig.cmake
  ${PROJECT_BINARY_DIR}/7xAutoUpdateToolsConfigVersion.cmake DESTINATION ${packageDir} COMPONENT development)

# The file finds everything from its own place, so that the tree can be moved.
file(RELATIVE_PATH AUTOOLS_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/7xAutoUpdateTools.pc.in ${PROJECT_BINARY_DIR}/7xAutoUpdateTools.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/7xAutoUpdateTools.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
