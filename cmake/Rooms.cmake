# Rooms: folders of sources that are libraries of their own. scripts/check_house.py reads their calls and holds the
# includes of each folder against them.

# kv_add_room(FOLDER [OBJECTS] [SOURCES file...] [LIBRARIES target...]): the folder, below the current one, as the
# library kv_FOLDER, with "_" for "/" and KV_ROOM_PREFIX before FOLDER. What its files include, and the rooms whose
# operations they call, are its LIBRARIES. A room without sources has headers alone; OBJECTS leaves it to another library
# to take what the sources compile to.
function(kv_add_room folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OBJECTS" "" "SOURCES;LIBRARIES")
  string(REPLACE "/" "_" room kv_${KV_ROOM_PREFIX}${folder})
  if(NOT arg_SOURCES)
    add_library(${room} INTERFACE)
    target_include_directories(${room} INTERFACE ${folder})
    target_link_libraries(${room} INTERFACE ${arg_LIBRARIES})
    return()
  endif()
  set(kind STATIC)
  if(arg_OBJECTS)
    set(kind OBJECT)
    set_property(DIRECTORY APPEND PROPERTY KV_ROOM_OBJECTS $<TARGET_OBJECTS:${room}>)
  endif()
  list(TRANSFORM arg_SOURCES PREPEND ${folder}/)
  add_library(${room} ${kind} ${arg_SOURCES})
  target_include_directories(${room} PUBLIC ${folder})
  target_link_libraries(${room} PUBLIC ${arg_LIBRARIES} PRIVATE kv_flags)
  target_precompile_headers(${room} REUSE_FROM kv_standard_headers)
endfunction()
