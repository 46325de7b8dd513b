# Cross build for Windows x86-64 against the Universal C Runtime, with Debian's MinGW-w64 compiler
# of the win32 thread model (the one of the posix model does not link that way).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(zem_tools x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${zem_tools}-gcc-win32)
set(CMAKE_CXX_COMPILER ${zem_tools}-g++-win32)
set(CMAKE_RC_COMPILER ${zem_tools}-windres)

# The compiler's own specs name the old runtime; these name the new one.
set(zem_specs "${CMAKE_BINARY_DIR}/ucrt.specs")
if(NOT EXISTS "${zem_specs}")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpspecs
    OUTPUT_VARIABLE zem_spec_text COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "-lmsvcrt" "-lucrt" zem_spec_text "${zem_spec_text}")
  file(WRITE "${zem_specs}" "${zem_spec_text}")
endif()

set(CMAKE_C_FLAGS_INIT "\"-specs=${zem_specs}\" -D_UCRT")
set(CMAKE_CXX_FLAGS_INIT "\"-specs=${zem_specs}\" -D_UCRT")

# -static: no libgcc, libstdc++ or winpthread beside what is built. No time stamp: the same sources
# give the same bytes. The debugging data is only the runtime's, and names the folders of this system.
set(zem_link_flags
  "-static -Wl,--no-insert-timestamp,--strip-debug,--dynamicbase,--nxcompat,--high-entropy-va")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${zem_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${zem_link_flags}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${zem_link_flags}")

set(CMAKE_FIND_ROOT_PATH /usr/${zem_tools})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
