# Whether the program orb can be built here, and which of the libraries that it can do without it gets:
# one for another target does not count, so each is linked on trial.
include(CheckCXXSourceCompiles)

find_package(CLI11 QUIET)
option(ORB_HOSTS "Build the program orb (CLI11, libpng)" ${CLI11_FOUND})
if(NOT ORB_HOSTS)
  message(STATUS "orb is not built: it needs CLI11 (Debian: libcli11-dev)")
  return()
endif()

# Sets `result` to whether a program links with a library; if not, says what orb is without.
function(orb_try_library result library source without)
  set(CMAKE_REQUIRED_LIBRARIES ${library})
  set(CMAKE_REQUIRED_QUIET ON)
  if(TARGET ${library} OR NOT library MATCHES "::")
    check_cxx_source_compiles("${source}" ${result})
  endif()
  if(NOT ${result})
    message(STATUS "${without}, as none for this target is found")
  endif()
endfunction()

find_package(PNG QUIET)
orb_try_library(ORB_PNG_LINKS PNG::PNG
    "#include <png.h>
     int main() { return png_access_version_number() == 0; }"
    "orb is built without PNG: it needs libpng (Debian: libpng-dev)")

# The captions of the gallery's sheet.
find_package(Freetype QUIET)
orb_try_library(ORB_FREETYPE_LINKS Freetype::Freetype
    "#include <ft2build.h>
     #include FT_FREETYPE_H
     int main() { FT_Library library; return FT_Init_FreeType(&library); }"
    "The sheet of orb image gallery is without captions: they need FreeType (Debian: libfreetype-dev)")

orb_try_library(ORB_SNDFILE_LINKS sndfile
    "#include <sndfile.h>
     int main() { return sf_version_string() == nullptr; }"
    "orb is built without WAV: it needs libsndfile (Debian: libsndfile1-dev)")
