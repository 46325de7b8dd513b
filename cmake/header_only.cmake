# Header-only libraries that the tool, the simulator and the tests use. They come from the system's
# packages; their folders are linked one by one, because a cross build cannot take the system's whole
# include folder.
add_library(zem_header_only INTERFACE)
set(zem_header_only_folder ${CMAKE_BINARY_DIR}/header_only)
foreach(header nlohmann/json.hpp CLI/CLI.hpp)
  cmake_path(GET header PARENT_PATH library)
  find_path(zem_${library}_root ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH)
  file(MAKE_DIRECTORY ${zem_header_only_folder})
  file(CREATE_LINK ${zem_${library}_root}/${library} ${zem_header_only_folder}/${library} SYMBOLIC)
endforeach()
target_include_directories(zem_header_only SYSTEM INTERFACE ${zem_header_only_folder})
# The MinGW runtime of the Windows build lacks what std::filesystem needs to convert narrow paths.
target_compile_definitions(zem_header_only INTERFACE
  CLI11_HAS_FILESYSTEM=0 JSON_HAS_FILESYSTEM=0 JSON_HAS_EXPERIMENTAL_FILESYSTEM=0)
