# What is installed, and the packages made of it.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake)
set(document_folder share/doc/kvreflash)

# kv_install_package(NAME DESCRIPTION): a library with its CMake package, whose targets are in the namespace of its name,
# and what pkg-config knows of it.
function(kv_install_package name description)
  install(TARGETS ${name} EXPORT ${name}Targets)
  install(EXPORT ${name}Targets NAMESPACE ${name}:: DESTINATION ${package_folder}/${name})
  configure_package_config_file(cmake/${name}Config.cmake.in ${CMAKE_BINARY_DIR}/${name}Config.cmake
    INSTALL_DESTINATION ${package_folder}/${name})
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/${name}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/${name}Config.cmake ${CMAKE_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${package_folder}/${name})
  if(NOT WIN32)
    # The package finds itself wherever it is unpacked.
    file(RELATIVE_PATH KV_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    configure_file(cmake/Library.pc.in ${CMAKE_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  endif()
endfunction()

kv_install_package(KvReflashLib "${PROJECT_DESCRIPTION}")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvReflashLib)
if(KV_PLATFORM STREQUAL "emulated")
  kv_install_package(KvPlatform "Emulated device access service")
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvPlatform)
  install(FILES ${PROJECT_SOURCE_DIR}/platform/emulation/control/KvEmulation.h
    ${PROJECT_SOURCE_DIR}/platform/emulation/control/kvreflash_emulation.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KvPlatform)
endif()

install(TARGETS kvreflash)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${KV_NOTICES} DESTINATION ${document_folder})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${document_folder}/docs PATTERN api EXCLUDE)
install(SCRIPT cmake/PackagedLinks.cmake)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/c ${PROJECT_SOURCE_DIR}/examples/client
  ${PROJECT_SOURCE_DIR}/examples/csharp ${PROJECT_SOURCE_DIR}/examples/python ${PROJECT_SOURCE_DIR}/examples/rack
  ${PROJECT_BINARY_DIR}/examples/archive DESTINATION ${document_folder}/examples PATTERN state EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/examples/make_archive.py DESTINATION ${document_folder}/examples)
# Not into the archive itself, whose description does not name them.
install(FILES ${PROJECT_SOURCE_DIR}/examples/archive/archive.json ${PROJECT_SOURCE_DIR}/examples/archive/recipes.json
  DESTINATION ${document_folder}/examples/archive-source)
if(WIN32)
  install(FILES ${KV_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
else()
  install(FILES ${PROJECT_SOURCE_DIR}/notices/copyright DESTINATION ${document_folder})
endif()

# The package for Python finds the libraries where the system has them.
if(NOT WIN32)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/bindings/python/src/kvreflash DESTINATION lib/python3/dist-packages
    COMPONENT python PATTERN __pycache__ EXCLUDE PATTERN lib EXCLUDE)
endif()

set(CPACK_PACKAGE_NAME kvreflash)
set(CPACK_PACKAGE_VENDOR Korvel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DESCRIPTION "kvreflash reads a firmware archive, scans a target, finds out which of its
boards need an update, and installs it phase by phase. The library
KvReflashLib does the same for other programs. Emulated targets come along,
on which an archive can be rehearsed.")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER Korvel)
  set(CPACK_DEBIAN_PACKAGE_SECTION devel)
  # What the package depends on is read off its programs; the libraries that it brings along are no such thing.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  # Two packages: python3-kvreflash beside everything else.
  set(CPACK_DEB_COMPONENT_INSTALL ON)
  set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME kvreflash)
  set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Firmware update of networked real-time targets, for Python
The package kvreflash for Python calls the library of the Debian package
kvreflash: update sessions, archives, saved plans and the journal of runs.")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kvreflash)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), kvreflash (= ${PROJECT_VERSION})")
endif()
include(CPack)
