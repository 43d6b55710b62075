# The project's own build helpers.

# The warnings that everything here must be free of.
add_library(autools_warnings INTERFACE)
if(MSVC)
  target_compile_options(autools_warnings INTERFACE /W4 /WX /permissive- /utf-8 /EHsc)
else()
  target_compile_options(autools_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
endif()

# Warnings, definitions and include folder that every target of this project is built with.
add_library(autools_build_settings INTERFACE)
target_link_libraries(autools_build_settings INTERFACE autools_warnings)
target_compile_features(autools_build_settings INTERFACE cxx_std_17)
target_compile_definitions(autools_build_settings INTERFACE
  NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601 WINVER=0x0601 _CRT_SECURE_NO_WARNINGS)
target_include_directories(autools_build_settings INTERFACE ${PROJECT_SOURCE_DIR}/src)
if(NOT MSVC)
  target_compile_options(autools_build_settings INTERFACE $<$<CONFIG:Debug>:-Og -g1 -D_GLIBCXX_ASSERTIONS>)
endif()

# The same sources give the same bytes, wherever they are built and whenever: no folder and no time in what is released.
# Its debug symbols are split off when it is installed.
if(MSVC)
  target_compile_options(autools_build_settings INTERFACE $<$<NOT:$<CONFIG:Debug>>:/Brepro /Zi>)
  target_link_options(autools_build_settings INTERFACE $<$<NOT:$<CONFIG:Debug>>:/Brepro /DEBUG /OPT:REF /OPT:ICF>)
else()
  # Of two that fit, the one given last counts.
  target_compile_options(autools_build_settings INTERFACE $<$<NOT:$<CONFIG:Debug>>:-g
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
  target_link_options(autools_build_settings INTERFACE $<$<NOT:$<CONFIG:Debug>>:LINKER:--no-insert-timestamp>)
endif()

# autools_sources(SOURCES a.cpp ... PUBLIC_HEADERS a.h ...): adds one folder's part of the library.
function(autools_sources)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_HEADERS" ${ARGN})
  foreach(source IN LISTS ARG_SOURCES)
    target_sources(autools_objects PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${source})
  endforeach()
  foreach(header IN LISTS ARG_PUBLIC_HEADERS)
    set_property(GLOBAL APPEND PROPERTY AUTOOLS_PUBLIC_HEADERS ${CMAKE_CURRENT_SOURCE_DIR}/${header})
  endforeach()
endfunction()

# The shared C++ runtime. The toolchain file names it when cross-building; a MinGW compiler on Windows has it beside itself.
if(MINGW AND NOT AUTOOLS_RUNTIME_DLLS)
  cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH compilerFolder)
  file(GLOB AUTOOLS_RUNTIME_DLLS
    ${compilerFolder}/libstdc++-6.dll ${compilerFolder}/libgcc_s_seh-1.dll ${compilerFolder}/libwinpthread-1.dll
    ${compilerFolder}/libc++.dll ${compilerFolder}/libunwind.dll)
endif()

# What a compiler brings carries its debug symbols, of ten times the size of the rest: those stay with the compiler. Each
# program that loads the runtime would read them too where the system does not load files page by page.
if(MINGW)
  find_program(AUTOOLS_OBJCOPY NAMES x86_64-w64-mingw32-objcopy objcopy)
endif()
if(AUTOOLS_OBJCOPY)
  set(runtimeFolder ${PROJECT_BINARY_DIR}/runtime)
  file(MAKE_DIRECTORY ${runtimeFolder})
  set(compilersOwn ${AUTOOLS_RUNTIME_DLLS})
  set(AUTOOLS_RUNTIME_DLLS "")
  foreach(dll IN LISTS compilersOwn)
    get_filename_component(name ${dll} NAME)
    # With its dates: the same bytes, whenever it is done.
    execute_process(COMMAND ${AUTOOLS_OBJCOPY} --strip-all --preserve-dates ${dll} ${runtimeFolder}/${name}
      COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND AUTOOLS_RUNTIME_DLLS ${runtimeFolder}/${name})
  endforeach()
endif()

# autools_deploy_runtime(target): puts the shared C++ runtime beside the programs (once for the folder `bin`).
function(autools_deploy_runtime)
  foreach(dll IN LISTS AUTOOLS_RUNTIME_DLLS)
    get_filename_component(name ${dll} NAME)
    configure_file(${dll} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name} COPYONLY)
  endforeach()
endfunction()
