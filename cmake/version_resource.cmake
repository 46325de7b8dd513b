# What Windows shows of a file's version: the project's.

# zem_version_resource(TARGET DESCRIPTION NAME FILE TYPE): TYPE is VFT_DLL or VFT_APP.
function(zem_version_resource target description name file type)
  enable_language(RC)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
endfunction()
