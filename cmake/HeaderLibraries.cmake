# Libraries that are used as headers alone: KV_BOOST_INCLUDE, KV_CLI11_INCLUDE, KV_RAPIDJSON_INCLUDE. For another
# system than this one they are reached through links of their own, since the folder that they lie in holds this system's
# headers too.
function(kv_header_library variable header folder)
  find_path(${variable}_HOST ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH)
  if(NOT CMAKE_CROSSCOMPILING)
    set(${variable} ${${variable}_HOST} PARENT_SCOPE)
    return()
  endif()
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
  file(CREATE_LINK ${${variable}_HOST}/${folder} ${CMAKE_BINARY_DIR}/headers/${folder} SYMBOLIC)
  set(${variable} ${CMAKE_BINARY_DIR}/headers PARENT_SCOPE)
endfunction()

kv_header_library(KV_BOOST_INCLUDE boost/json/src.hpp boost)
kv_header_library(KV_CLI11_INCLUDE CLI/CLI.hpp CLI)
kv_header_library(KV_RAPIDJSON_INCLUDE rapidjson/reader.h rapidjson)
