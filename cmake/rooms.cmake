# Sources by room. Where CMAKE_UNITY_BUILD is on (the presets say so), the files of a room are one
# translation unit: most of what a file costs is its headers. So a name in an anonymous namespace is
# used once in a room. A file with compile options of its own stays alone.

# zem_room(TARGET ROOM FILE...): files of this folder.
function(zem_room target room)
  target_sources(${target} PRIVATE ${ARGN})
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP ${room})
endfunction()

# zem_library_room(ROOM FILE...): the same for each build of the library.
function(zem_library_room room)
  foreach(library IN LISTS ZEM_LIBRARIES)
    zem_room(${library} ${room} ${ARGN})
  endforeach()
endfunction()

# zem_platform(TARGET FILE...): an implementation of the platform wall, for the library or for a program
# that is linked with it. Objects, since the library and its platform need each other.
function(zem_platform target)
  add_library(${target} OBJECT)
  zem_library_options(${target})
  zem_room(${target} platform ${ARGN})
endfunction()
