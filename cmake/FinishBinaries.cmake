# Runs while a package is installed. Debug symbols leave each of our programs and libraries for <file>.debug, which a
# debugger finds through the link that is left behind; then the file is signed, where the packager has a way to.
#
# `OBJCOPY` empty: the toolchain keeps its symbols elsewhere, nothing is split. `SIGN_COMMAND`: program and arguments that
# sign the file named last, in place; empty for none. The environment variable AUTOOLS_SIGN_COMMAND wins, so that nothing
# about a key need stand in a build tree. A failure of either ends the installation.

function(autools_write_symbols objcopy built symbols)
  execute_process(COMMAND ${objcopy} --only-keep-debug ${built} ${symbols} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The link holds the name of the symbols and their checksum, so they must be at hand.
function(autools_finish_binary installed built objcopy signCommand)
  if(objcopy)
    get_filename_component(name ${built} NAME)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/symbols)
    file(MAKE_DIRECTORY ${folder})
    autools_write_symbols(${objcopy} ${built} ${folder}/${name}.debug)
    execute_process(COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${name}.debug ${installed}
      WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
  endif()
  if(DEFINED ENV{AUTOOLS_SIGN_COMMAND})
    set(signCommand $ENV{AUTOOLS_SIGN_COMMAND})
  endif()
  if(NOT "${signCommand}" STREQUAL "") # a command may be called `false`
    message(STATUS "Signing: ${installed}")
    execute_process(COMMAND ${signCommand} ${installed} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()
