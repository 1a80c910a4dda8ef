# What is installed, and the packages made of it.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake)

# kv_install_package(NAME): a library with its CMake package; its targets are in the namespace of its name.
function(kv_install_package name)
  install(TARGETS ${name} EXPORT ${name}Targets)
  install(EXPORT ${name}Targets NAMESPACE ${name}:: DESTINATION ${package_folder}/${name})
  configure_package_config_file(cmake/${name}Config.cmake.in ${CMAKE_BINARY_DIR}/${name}Config.cmake
    INSTALL_DESTINATION ${package_folder}/${name})
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/${name}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/${name}Config.cmake ${CMAKE_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${package_folder}/${name})
endfunction()

kv_install_package(KvReflashLib)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvReflashLib)
if(KV_PLATFORM STREQUAL "emulated")
  kv_install_package(KvPlatform)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvPlatform)
  install(FILES ${PROJECT_SOURCE_DIR}/platform/emulation/KvEmulation.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvPlatform)
endif()
if(NOT WIN32)
  # The package finds itself wherever it is unpacked.
  file(RELATIVE_PATH KV_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  configure_file(cmake/KvReflashLib.pc.in ${CMAKE_BINARY_DIR}/KvReflashLib.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/KvReflashLib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

install(TARGETS kvreflash)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/client/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/client)
if(WIN32)
  install(FILES ${KV_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(CPACK_PACKAGE_NAME kvreflash)
set(CPACK_PACKAGE_VENDOR Korvel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()
include(CPack)
