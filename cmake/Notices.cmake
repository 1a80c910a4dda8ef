# KV_NOTICES: a file with the notices of whatever other works are in the libraries and the tool, or beside them.
set(notices Boost CLI11 RapidJSON)
if(MINGW)
  list(APPEND notices MinGW-w64 GCC-runtime libgcrypt)
endif()

set(text "KvReflash contains parts of other works, or comes with them. These are their notices and licences.\n")
foreach(name ${notices})
  file(READ ${PROJECT_SOURCE_DIR}/notices/${name}.txt notice)
  string(APPEND text "\n\n${notice}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/notices/${name}.txt)
endforeach()
set(KV_NOTICES ${CMAKE_BINARY_DIR}/THIRD-PARTY-NOTICES.txt)
file(CONFIGURE OUTPUT ${KV_NOTICES} CONTENT "${text}" @ONLY)
