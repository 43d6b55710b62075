# Cross-building for 64-bit Windows with Debian's MinGW-w64 (posix threads).
# AUTOOLS_COMPILER selects the compiler: gcc (default) or clang.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(AUTOOLS_COMPILER "gcc" CACHE STRING "gcc or clang, both for MinGW-w64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES AUTOOLS_COMPILER)

set(_triple x86_64-w64-mingw32)
set(CMAKE_RC_COMPILER ${_triple}-windres)
file(GLOB _gccDirs /usr/lib/gcc/${_triple}/*-posix)
list(GET _gccDirs 0 AUTOOLS_GCC_DIR)

if(AUTOOLS_COMPILER STREQUAL "clang")
  find_program(_clang NAMES clang++-14 clang++ REQUIRED)
  set(CMAKE_CXX_COMPILER ${_clang})
  set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)
  # GoogleTest's own build file asks for a C compiler.
  find_program(_clangC NAMES clang-14 clang REQUIRED)
  set(CMAKE_C_COMPILER ${_clangC})
  set(CMAKE_C_COMPILER_TARGET x86_64-w64-windows-gnu)
  set(CMAKE_AR ${_triple}-ar CACHE FILEPATH "")
  set(CMAKE_RANLIB ${_triple}-ranlib CACHE FILEPATH "")
  set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${AUTOOLS_GCC_DIR}/include/c++ -isystem ${AUTOOLS_GCC_DIR}/include/c++/${_triple} -isystem ${AUTOOLS_GCC_DIR}/include/c++/backward")
  # The C++ runtime is GCC's, with POSIX threads, which only GCC itself adds to every link.
  foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -L${AUTOOLS_GCC_DIR} -lpthread")
  endforeach()
else()
  set(CMAKE_CXX_COMPILER ${_triple}-g++-posix)
  set(CMAKE_C_COMPILER ${_triple}-gcc-posix) # GoogleTest's own build file asks for one
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# The three shared runtime libraries that every program of this library needs beside it.
set(AUTOOLS_RUNTIME_DLLS
  ${AUTOOLS_GCC_DIR}/libstdc++-6.dll
  ${AUTOOLS_GCC_DIR}/libgcc_s_seh-1.dll
  /usr/${_triple}/lib/libwinpthread-1.dll)

find_program(_ccache ccache)
if(_ccache)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${_ccache})
endif()
