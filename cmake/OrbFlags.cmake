# Compiler flags: what all code shares, what the library's code adds, and what each build may use.

set(ORB_WARNINGS -Wall -Wextra -Wshadow)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  list(APPEND ORB_WARNINGS -Wno-unknown-attributes)
endif()
if(ORB_WERROR)
  list(APPEND ORB_WARNINGS -Werror)
endif()
if(ORB_SANITIZE)
  add_compile_options(-fsanitize=${ORB_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORB_SANITIZE})
endif()

# No contraction of multiply and add: it changes results between builds. Integers wrap. The C runtime
# and its mathematics are all that the library may need, so nothing of the C++ runtime is used.
set(ORB_LIBRARY_FLAGS
    ${ORB_WARNINGS} -Wmissing-declarations -fvisibility=hidden -fwrapv -ffp-contract=off
    -fno-math-errno -fno-trapping-math)
set(ORB_LIBRARY_CXX_FLAGS -fno-exceptions -fno-rtti -fno-threadsafe-statics)

# On 32 bits the frame and px run on an i686: no SSE, and floats in the x87 unit. Hosts there may hand
# over a stack that is aligned to 4 bytes only.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  list(APPEND ORB_LIBRARY_FLAGS -march=i686 -mstackrealign)
  set(ORB_FLAGS_px -mno-mmx -mno-sse -mfpmath=387)
  set(ORB_SIMD_FLAGS -mfpmath=sse)
endif()
set(ORB_FLAGS_w7 ${ORB_SIMD_FLAGS} -msse2)
set(ORB_FLAGS_v8 ${ORB_SIMD_FLAGS} -mssse3)
set(ORB_FLAGS_s8 ${ORB_SIMD_FLAGS} -mssse3 -mmovbe -mtune=bonnell)
set(ORB_FLAGS_p8 ${ORB_SIMD_FLAGS} -msse4.1)
set(ORB_FLAGS_g9 ${ORB_SIMD_FLAGS} -mavx)
set(ORB_FLAGS_h9 ${ORB_SIMD_FLAGS} -mavx2 -mfma -mbmi -mbmi2)
