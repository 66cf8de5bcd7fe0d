# As a subproject, this project leaves nothing in the cache of the parent project except its own options,
# VORNATH_DATA_*, and the variables that project() sets for this project and for the languages. Variables
# that find_package() stores there are removed; the next run of CMake finds the dependencies again.

# Records which variables the cache contains. WHEN is before_project or before_options.
macro(vornath_remember_cache WHEN)
  get_cmake_property(vornath_cache_${WHEN} CACHE_VARIABLES)
endmacro()

# Removes the other variables from the cache. Call it at the end of the project.
function(vornath_leave_cache_alone)
  if(PROJECT_IS_TOP_LEVEL)
    return()
  endif()
  get_cmake_property(names CACHE_VARIABLES)
  # A top-level project without a version would otherwise get the version of this one.
  set(version_names ${names})
  list(FILTER version_names INCLUDE REGEX "^CMAKE_PROJECT_VERSION")
  list(REMOVE_ITEM version_names ${vornath_cache_before_project})
  list(REMOVE_ITEM names ${vornath_cache_before_options})
  list(FILTER names EXCLUDE REGEX "^VORNATH_DATA_")
  foreach(name IN LISTS names version_names)
    unset(${name} CACHE)
  endforeach()
endfunction()
