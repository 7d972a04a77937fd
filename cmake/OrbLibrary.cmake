# The library: the frame and the constant tables once, the entry files once for each build.

set(ORB_FRAME_SOURCES
    compress/tables/crc32.cpp
    compress/tables/deflate.cpp
    compress/tables/hash_mix.cpp
    compress/tables/inflate.cpp
    dv/tables/dct248.cpp
    frame/cpu.cpp
    frame/dispatch.cpp
    frame/library.cpp
    frame/memory.cpp
    frame/stubs.S
    frame/version.cpp
    image/tables/lanczos.cpp
    jpeg/tables/color.cpp
    jpeg/tables/huffman.cpp
    jpeg/tables/zigzag.cpp
    jpeg2k/tables/contexts.cpp
    jpeg2k/tables/distortion.cpp
    jpeg2k/tables/mq.cpp
    jpegxr/tables/run_level.cpp
    jpegxr/tables/scan.cpp
    jpegxr/tables/vlc.cpp)

set(ORB_ENTRY_SOURCES
    compress/bwt.cpp
    compress/git_coder.cpp
    compress/huffman.cpp
    compress/inflate_blocks.cpp
    compress/inflate_pairs.cpp
    compress/inflate_state.cpp
    compress/lz77_block.cpp
    compress/lz77_match.cpp
    compress/lz77_state.cpp
    compress/move_to_front.cpp
    compress/run_length.cpp
    dv/macroblock.cpp
    dv/segment.cpp
    dv/transform.cpp
    image/filter.cpp
    image/morphology.cpp
    image/resize.cpp
    image/resize_yuv422.cpp
    image/rotate.cpp
    image/warp.cpp
    jpeg/color.cpp
    jpeg/dct.cpp
    jpeg/huffman_lossless.cpp
    jpeg/huffman_progressive.cpp
    jpeg/huffman_sequential.cpp
    jpeg/huffman_tables.cpp
    jpeg/lossless.cpp
    jpeg/mcu.cpp
    jpeg/quant.cpp
    jpeg/sampling.cpp
    jpeg2k/codeblock_decoder.cpp
    jpeg2k/codeblock_encoder.cpp
    jpeg2k/codeblock_progressive.cpp
    jpeg2k/components.cpp
    jpeg2k/wavelet_image.cpp
    jpeg2k/wavelet_lifting.cpp
    jpegxr/coefficient_coding.cpp
    jpegxr/core_transform.cpp
    jpegxr/fixed_length.cpp
    jpegxr/vlc_state.cpp
    side/lu.cpp
    side/samples.cpp
    side/tiff.cpp
    side/video.cpp)

function(orb_object_library name)
  add_library(${name} OBJECT ${ARGN})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_compile_definitions(${name} PRIVATE ORB_STATIC)
  target_compile_options(${name} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:${ORB_LIBRARY_FLAGS} ${ORB_LIBRARY_CXX_FLAGS}>)
endfunction()

if(NOT "px" IN_LIST ORB_BUILDS)
  message(FATAL_ERROR "ORB_BUILDS is ${ORB_BUILDS}: px must be one of them")
endif()

set(ORB_OBJECTS $<TARGET_OBJECTS:orb_frame>)
orb_object_library(orb_frame ${ORB_FRAME_SOURCES})
target_compile_options(orb_frame PRIVATE $<$<COMPILE_LANGUAGE:CXX>:${ORB_FLAGS_px}>)

set(serving px)
foreach(build px w7 v8 s8 p8 g9 h9)
  if(build IN_LIST ORB_BUILDS)
    set(serving ${build})
    orb_object_library(orb_${build} ${ORB_ENTRY_SOURCES})
    target_compile_options(orb_${build} PRIVATE ${ORB_FLAGS_${build}})
    target_compile_definitions(orb_${build} PRIVATE ORB_BUILD=${build})
    list(APPEND ORB_OBJECTS $<TARGET_OBJECTS:orb_${build}>)
  endif()
  target_compile_definitions(orb_frame PRIVATE ORB_BODIES_${build}=${serving})
endforeach()

# Linked by the C compiler, so that the C++ runtime is not even offered.
add_library(orb90legacy SHARED ${ORB_OBJECTS})
set_target_properties(orb90legacy PROPERTIES LINKER_LANGUAGE C VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
target_include_directories(orb90legacy
                           INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
if(WIN32)
  include(OrbWindows)
else()
  target_link_libraries(orb90legacy PRIVATE m)
  target_link_options(orb90legacy PRIVATE -Wl,-z,relro,-z,now -Wl,--as-needed -Wl,--exclude-libs,ALL)
  if(NOT ORB_SANITIZE)
    target_link_options(orb90legacy PRIVATE -Wl,-z,defs)
  endif()
endif()

# The same objects without the door, for tests and benchmarks that reach behind it.
add_library(orb90legacy_inside INTERFACE)
target_sources(orb90legacy_inside INTERFACE ${ORB_OBJECTS})
target_include_directories(orb90legacy_inside INTERFACE ${PROJECT_SOURCE_DIR}
                                                        ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(orb90legacy_inside INTERFACE ORB_STATIC)
target_link_libraries(orb90legacy_inside INTERFACE m)
