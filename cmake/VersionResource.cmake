# kv_add_version_resource(TARGET DLL|APP DESCRIPTION): the project's version as the target's version resource. Other
# systems have no such thing.
function(kv_add_version_resource target kind description)
  if(NOT WIN32)
    return()
  endif()
  enable_language(RC)
  set(KV_FILE_TYPE VFT_${kind})
  set(KV_FILE_DESCRIPTION ${description})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${CMAKE_BINARY_DIR}/${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_BINARY_DIR}/${target}.rc)
endfunction()
