# The compiler's runtime DLLs, which lie beside what we build and are shipped with it, so that strings, arrays and
# exceptions cross from library to library on one runtime. KV_RUNTIME_DLLS: their paths.
set(KV_RUNTIME_DLLS "")
foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE path
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT IS_ABSOLUTE "${path}")
    find_file(KV_DLL_${name} ${name} PATHS /usr/x86_64-w64-mingw32/lib NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(path ${KV_DLL_${name}})
  endif()
  list(APPEND KV_RUNTIME_DLLS ${path})
  file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endforeach()
