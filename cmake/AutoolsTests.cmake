# autools_add_suite(name SOURCES a.cpp ... [LIBS lib ...] [INTERNAL | BARE]): one test program `<name>_tests` and one test.
# It links the DLL, as users do; an INTERNAL suite links the library's objects instead and may test internal rules; a BARE
# suite links neither and names the few sources it tests itself.
function(autools_add_suite name)
  cmake_parse_arguments(ARG "INTERNAL;BARE" "" "SOURCES;LIBS" ${ARGN})
  set(target ${name}_tests)
  add_executable(${target} ${ARG_SOURCES})
  if(ARG_INTERNAL)
    get_property(systemLibs GLOBAL PROPERTY AUTOOLS_SYSTEM_LIBS)
    target_link_libraries(${target} PRIVATE autools_objects ${systemLibs})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/companions)
  elseif(NOT ARG_BARE)
    target_link_libraries(${target} PRIVATE 7xAutoUpdateTools)
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${target} PRIVATE autools_test_support autools_build_settings ${ARG_LIBS})
  # The suites write the machine's registry and folders: they run in a Windows prefix of their own or not at all.
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${AUTOOLS_SUITE_RUNNER} ${name} $<TARGET_FILE:${target}>)
    set_tests_properties(${name} PROPERTIES TIMEOUT 300)
  endif()
endfunction()
