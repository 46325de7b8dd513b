# find_package(ZemUVCExtApi): the targets ZemUVCExtApi::ZemUVCExtApi and ZemUVCExtApi::ZemSimulator.
include(${CMAKE_CURRENT_LIST_DIR}/ZemUVCExtApiTargets.cmake)
if(WIN32 AND NOT MINGW)
  # Microsoft's linker has import libraries of its own.
  foreach(zem_library IN ITEMS ZemUVCExtApi ZemSimulator)
    get_target_property(zem_configurations ZemUVCExtApi::${zem_library} IMPORTED_CONFIGURATIONS)
    foreach(zem_configuration IN LISTS zem_configurations)
      set_target_properties(ZemUVCExtApi::${zem_library} PROPERTIES
        IMPORTED_IMPLIB_${zem_configuration} ${CMAKE_CURRENT_LIST_DIR}/../../${zem_library}.lib)
    endforeach()
  endforeach()
endif()
