# Whether the program orb can be built here, and whether it gets PNG and WAV: a libpng or libsndfile
# for another target does not count, so they are linked on trial.
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

set(CMAKE_REQUIRED_LIBRARIES sndfile)
set(CMAKE_REQUIRED_QUIET ON)
check_cxx_source_compiles(
    "#include <sndfile.h>\nint main() { return sf_version_string() == nullptr; }" ORB_SNDFILE_LINKS)
unset(CMAKE_REQUIRED_LIBRARIES)
unset(CMAKE_REQUIRED_QUIET)
if(NOT ORB_SNDFILE_LINKS)
  message(STATUS "orb is built without WAV: there is no libsndfile for this target "
                 "(Debian: libsndfile1-dev)")
endif()
