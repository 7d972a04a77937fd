# The DLL's face: a .def made from exports.inc, with undecorated names on 32 bits too, and an import
# library by which programs with decorated names find them.

file(STRINGS ${PROJECT_SOURCE_DIR}/frame/exports.inc export_lines REGEX "^ORB_[A-Z_]*EXPORT\\(")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/frame/exports.inc)
set(def "LIBRARY orb90legacy.dll\nEXPORTS\n")
foreach(line IN LISTS export_lines)
  string(REGEX REPLACE "^.*[(, ]([0-9]+), ([A-Za-z0-9_]+)\\)$" "\\1;\\2" parts "${line}")
  list(GET parts 0 bytes)
  list(GET parts 1 name)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    string(APPEND def "  legacy90${name}@${bytes}\n")
  else()
    string(APPEND def "  legacy90${name}\n")
  endif()
endforeach()
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/orb90legacy.def CONTENT "${def}")

target_sources(orb90legacy PRIVATE ${CMAKE_BINARY_DIR}/orb90legacy.def)
set_target_properties(orb90legacy PROPERTIES PREFIX "")
target_link_options(orb90legacy PRIVATE -static-libgcc -Wl,--kill-at)
add_custom_command(
  TARGET orb90legacy POST_BUILD
  COMMAND ${CMAKE_DLLTOOL} --kill-at --input-def ${CMAKE_BINARY_DIR}/orb90legacy.def
          --output-lib ${CMAKE_BINARY_DIR}/liborb90legacy.dll.a
  VERBATIM)
