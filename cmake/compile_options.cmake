# What every target of the project is compiled with.
function(zem_compile_options target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /WX /utf-8 /permissive-)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow -Werror
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlaps in std::string's own operator+ (its bug 105329).
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(WIN32)
    target_compile_definitions(${target} PRIVATE UNICODE _UNICODE)
  endif()
  if(ZEM_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${ZEM_SANITIZERS} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZEM_SANITIZERS})
  endif()
endfunction()
