# autools_add_suite(name SOURCES a.cpp ... [LIBS lib ...] [INTERNAL | BARE] [LARGE pattern]): one test program
# `<name>_tests` and one test.
# It links the DLL, as users do; an INTERNAL suite links the library's objects instead and may test internal rules; a BARE
# suite links neither and names the few sources it tests itself. The cases of the pattern are a test of their own,
# `<name>_large`, without heap checks: with many thousand objects around, those take many times longer than the case.
function(autools_add_suite name)
  cmake_parse_arguments(ARG "INTERNAL;BARE" "LARGE" "SOURCES;LIBS" ${ARGN})
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
  if(ARG_INTERNAL OR ARG_BARE)
    autools_watch(${target}) # the others get the guard with the library
  endif()
  target_link_libraries(${target} PRIVATE autools_test_support autools_build_settings ${ARG_LIBS})
  # The suites write the machine's registry and folders: they run in a Windows prefix of their own or not at all.
  if(CMAKE_CROSSCOMPILING)
    set(tests ${name})
    set(filter)
    if(ARG_LARGE)
      set(filter --gtest_filter=-${ARG_LARGE})
      list(APPEND tests ${name}_large)
      add_test(NAME ${name}_large
        COMMAND ${AUTOOLS_SUITE_RUNNER} ${name}_large $<TARGET_FILE:${target}> --gtest_filter=${ARG_LARGE})
      set_tests_properties(${name}_large PROPERTIES ENVIRONMENT AUTOOLS_HEAP_CHECKS=0)
    endif()
    add_test(NAME ${name} COMMAND ${AUTOOLS_SUITE_RUNNER} ${name} $<TARGET_FILE:${target}> ${filter})
    set_tests_properties(${tests} PROPERTIES TIMEOUT ${AUTOOLS_TEST_TIMEOUT})
  endif()
endfunction()
