# As a part of another project this one leaves that project's cache alone but for its own options,
# VORNATH_DATA_*, and what project() sets for this project and for the languages. What finding a
# dependency puts there is found again when CMake runs again.

# WHEN is before_project or before_options.
macro(vornath_remember_cache WHEN)
  get_cmake_property(vornath_cache_${WHEN} CACHE_VARIABLES)
endmacro()

# At the end of the project.
function(vornath_leave_cache_alone)
  if(PROJECT_IS_TOP_LEVEL)
    return()
  endif()
  get_cmake_property(names CACHE_VARIABLES)
  # The version of a top-level project that tells none would be this one's.
  set(version_names ${names})
  list(FILTER version_names INCLUDE REGEX "^CMAKE_PROJECT_VERSION")
  list(REMOVE_ITEM version_names ${vornath_cache_before_project})
  list(REMOVE_ITEM names ${vornath_cache_before_options})
  list(FILTER names EXCLUDE REGEX "^VORNATH_DATA_")
  foreach(name IN LISTS names version_names)
    unset(${name} CACHE)
  endforeach()
endfunction()
