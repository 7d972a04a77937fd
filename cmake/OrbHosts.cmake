# Whether the program orb can be built here. A library for another target does not count, so libpng
# is linked on trial.
include(CheckCXXSourceCompiles)

find_package(CLI11 QUIET)
find_package(PNG QUIET)
if(CLI11_FOUND AND PNG_FOUND)
  set(CMAKE_REQUIRED_LIBRARIES PNG::PNG)
  set(CMAKE_REQUIRED_QUIET ON)
  check_cxx_source_compiles(
      "#include <png.h>\nint main() { return png_access_version_number() == 0; }" ORB_PNG_LINKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  unset(CMAKE_REQUIRED_QUIET)
endif()
if(ORB_PNG_LINKS)
  set(ORB_HOSTS_DEFAULT ON)
else()
  set(ORB_HOSTS_DEFAULT OFF)
  message(STATUS "orb is not built: it needs CLI11 and libpng (Debian: libcli11-dev, libpng-dev)")
endif()
option(ORB_HOSTS "Build the program orb (CLI11, libpng)" ${ORB_HOSTS_DEFAULT})
