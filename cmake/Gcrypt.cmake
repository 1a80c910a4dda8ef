# libgcrypt, which verifies signatures: KV_GCRYPT_INCLUDE, KV_GCRYPT_LIBRARY, and for Windows KV_RUNTIME_DLLS with its
# DLLs added, which are shipped like those of the compiler.
find_path(KV_GCRYPT_INCLUDE gcrypt.h REQUIRED)
find_library(KV_GCRYPT_LIBRARY gcrypt REQUIRED)
if(WIN32)
  foreach(name libgcrypt-20.dll libgpg-error-0.dll)
    find_file(KV_DLL_${name} ${name} PATHS /usr/x86_64-w64-mingw32/lib /usr/x86_64-w64-mingw32/bin NO_DEFAULT_PATH
              NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    list(APPEND KV_RUNTIME_DLLS ${KV_DLL_${name}})
    file(COPY ${KV_DLL_${name}} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  endforeach()
endif()
