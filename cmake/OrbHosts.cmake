# Whether the program orb can be built here, and whether it gets PNG: a libpng for another target does
# not count, so it is linked on trial.
include(CheckCXXSourceCompiles)

find_package(CLI11 QUIET)
option(ORB_HOSTS "Build the program orb (CLI11, libpng)" ${CLI11_FOUND})
if(NOT ORB_HOSTS)
  message(STATUS "orb is not built: it needs CLI11 (Debian: libcli11-dev)")
  return()
endif()

find_package(PNG QUIET)
if(PNG_FOUND)
  set(CMAKE_REQUIRED_LIBRARIES PNG::PNG)
  set(CMAKE_REQUIRED_QUIET ON)
  check_cxx_source_compiles(
      "#include <png.h>\nint main() { return png_access_version_number() == 0; }" ORB_PNG_LINKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  unset(CMAKE_REQUIRED_QUIET)
endif()
if(NOT ORB_PNG_LINKS)
  message(STATUS "orb is built without PNG: there is no libpng for this target (Debian: libpng-dev)")
endif()

# The captions of the gallery's sheet.
find_package(Freetype QUIET)
if(FREETYPE_FOUND)
  set(CMAKE_REQUIRED_LIBRARIES Freetype::Freetype)
  set(CMAKE_REQUIRED_QUIET ON)
  check_cxx_source_compiles(
      "#include <ft2build.h>
       #include FT_FREETYPE_H
       int main() { FT_Library library; return FT_Init_FreeType(&library); }" ORB_FREETYPE_LINKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  unset(CMAKE_REQUIRED_QUIET)
endif()
if(NOT ORB_FREETYPE_LINKS)
  message(STATUS "The sheet of orb image gallery is without captions: there is no FreeType for this "
                 "target (Debian: libfreetype-dev)")
endif()
