# Run when documents are installed: what they link to in the project and the packages do not hold is named without a link.
file(GLOB_RECURSE documents "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/doc/kvreflash/*.md")
foreach(document IN LISTS documents)
  file(READ "${document}" text)
  string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./)?(include|tests|bench)/[^)]*\\)" "\\1" text "${text}")
  file(WRITE "${document}" "${text}")
endforeach()
