# The platform as an installed package, in place of the emulation that is built here: KvPlatform, and KvEmulationHeaders
# when the package says that it can emulate. Tests need that.
find_package(KvPlatform REQUIRED)
set_target_properties(KvPlatform::KvPlatform PROPERTIES IMPORTED_GLOBAL ON)
add_library(KvPlatform ALIAS KvPlatform::KvPlatform)
if(KvPlatform_EMULATION)
  add_library(KvEmulationHeaders INTERFACE)
else()
  set(KV_TESTS OFF)
endif()
