# With TVUTIL2_BY_FOLDER, the sources of a folder are compiled as one unit: most of the time of a checked
# build goes into headers, which are read once a folder then. A folder rather than a number of sources, so
# that what meets in a unit doesn't change with every new file; in one folder, the names that a source keeps
# for itself differ from those of the others.
function(tvutil2_build_by_folder target)
  if(NOT TVUTIL2_BY_FOLDER)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    file(REAL_PATH ${source} path)
    file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR} ${path})
    get_filename_component(folder ${path} DIRECTORY)
    string(REPLACE / _ group "${folder}")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${group}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
endfunction()
