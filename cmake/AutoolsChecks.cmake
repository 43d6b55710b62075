# Builds that watch themselves while the tests run (presets mingw-guard, mingw-ubsan and mingw-coverage). They are for the
# tests only: nothing of it belongs into a library that is given away.
#
#   guard      every block of memory ends at a no-access page and stays out of reach once freed (tests/support/guard)
#   undefined  undefined behaviour in the library ends the program at the spot
#   coverage   counts the lines and branches of src/ that run (tests/coverage.sh)
set(AUTOOLS_CHECKS "" CACHE STRING "How a test build watches itself: a list of guard, undefined, coverage; empty for not at all")
# Watched programs are slow; tests/torture/checked.sh gives the runner as much.
set(AUTOOLS_TEST_TIMEOUT 300)
if(AUTOOLS_CHECKS)
  set(AUTOOLS_TEST_TIMEOUT 1800)
endif()
if(AUTOOLS_CHECKS AND NOT MINGW)
  message(FATAL_ERROR "AUTOOLS_CHECKS is for MinGW compilers")
endif()

# autools_watch(target): a program or library whose memory is to be guarded. What the library's clients are made of is
# watched with it: the import of the library alone brings the guard into their process.
function(autools_watch target)
  if("guard" IN_LIST AUTOOLS_CHECKS)
    # By its file, as no package is to know of it. A program must import it although it need not call it.
    add_dependencies(${target} autools_guard)
    target_link_options(${target} PRIVATE -Wl,--undefined=autoolsGuardFigures $<TARGET_LINKER_FILE:autools_guard>)
    # Some programs lie in a folder of their own.
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
      COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:autools_guard> $<TARGET_FILE_DIR:${target}>)
  endif()
endfunction()

# autools_instrument(target [COUNTED]): code whose behaviour is checked, and whose lines and branches are counted.
function(autools_instrument target)
  cmake_parse_arguments(ARG "COUNTED" "" "" ${ARGN})
  if("undefined" IN_LIST AUTOOLS_CHECKS)
    target_compile_options(${target} PRIVATE -Wno-error) # the checks' own code confuses the compiler's warnings
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      target_compile_options(${target} PRIVATE -fsanitize=undefined -fsanitize-trap=all)
    else()
      target_compile_options(${target} PRIVATE -fsanitize=undefined -fsanitize-undefined-trap-on-error)
    endif()
  endif()
  if("undefined" IN_LIST AUTOOLS_CHECKS AND "guard" IN_LIST AUTOOLS_CHECKS)
    # Guarded blocks of an odd size are deliberately not aligned.
    target_compile_options(${target} PRIVATE -fno-sanitize=alignment)
  endif()
  if(ARG_COUNTED AND "coverage" IN_LIST AUTOOLS_CHECKS)
    # Unoptimised, so that a branch of the source is a branch of the machine.
    target_compile_options(${target} PRIVATE --coverage -O0)
    target_link_options(${target} PUBLIC --coverage)
  endif()
endfunction()
