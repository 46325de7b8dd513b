# What every target of the project is compiled with.
function(zem_compile_options target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
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
  get_target_property(is_plain ${target} ZEM_UNSANITIZED)
  if(ZEM_SANITIZERS AND NOT is_plain)
    target_compile_options(${target} PRIVATE -fsanitize=${ZEM_SANITIZERS} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZEM_SANITIZERS})
  endif()
endfunction()

# For what is part of the library besides.
function(zem_library_options target)
  zem_compile_options(${target})
  # No exception crosses an export, and none is thrown behind one.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-fno-exceptions>)
  target_compile_definitions(${target} PRIVATE
    ZEM_BUILDING_LIBRARY ZEM_DEFAULT_VENDOR_ID=${ZEM_DEFAULT_VENDOR_ID})
endfunction()

# For what is part of the shared library of Linux: nothing is seen from outside that is not named, and
# what nobody calls is left out.
function(zem_shared_objects target)
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections)
endfunction()

# For what nobody waits for when it runs, but everybody when it is built: the tool, the tests, and the
# simulator, unless it is measured against.
function(zem_quick_to_build target)
  if(NOT MSVC AND NOT ZEM_BENCHMARKS)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O1>)
  endif()
endfunction()
