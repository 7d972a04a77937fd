// The version records, and the seven bodies of each function that hands them out. They need no
// instructions of their build, and every library holds all of them, however few builds it was made
// with: they tell which build the processor earns.
#include "frame/dispatch.h"
#include "frame/enabled.h"

namespace orb {

namespace {

constexpr OrbLibraryVersion record(const char (&build)[3], const char* name) {
  return {9,
          0,
          0,
          -1,
          {build[0], build[1], '\0', '\0'},
          name,
          "9.0 Legacy (r48491) (-)",
          "Oct 14 2015"};
}

}  // namespace

#define ORB_VERSION_BODIES(build, instructions)                \
  namespace build {                                            \
  decltype(::legacy90orbdcGetLibVersion) orbdcGetLibVersion;   \
  decltype(::legacy90orbjGetLibVersion) orbjGetLibVersion;     \
  const OrbLibraryVersion* ORB_CALL orbdcGetLibVersion() {     \
    static constexpr OrbLibraryVersion kRecord =               \
        record(#build, "orbDC " instructions " (" #build ")"); \
    return &kRecord;                                           \
  }                                                            \
  const OrbLibraryVersion* ORB_CALL orbjGetLibVersion() {      \
    static constexpr OrbLibraryVersion kRecord =               \
        record(#build, "orbJP " instructions " (" #build ")"); \
    return &kRecord;                                           \
  }                                                            \
  }

ORB_VERSION_BODIES(px, "PX")
ORB_VERSION_BODIES(w7, "SSE2")
ORB_VERSION_BODIES(v8, "SSSE3")
ORB_VERSION_BODIES(s8, "Brio")
ORB_VERSION_BODIES(g9, "AVX")
ORB_VERSION_BODIES(h9, "AVX2")

// The one record that depends on more than the build: a plus where SSE4.2 is there too.
namespace p8 {
decltype(::legacy90orbdcGetLibVersion) orbdcGetLibVersion;
decltype(::legacy90orbjGetLibVersion) orbjGetLibVersion;

const OrbLibraryVersion* ORB_CALL orbdcGetLibVersion() {
  static constexpr OrbLibraryVersion kWithout = record("p8", "orbDC SSE4.1/4.2 (p8)");
  static constexpr OrbLibraryVersion kWith = record("p8", "orbDC SSE4.1/4.2 (p8)+");
  return orbIsFeatureEnabled(kSse42, 0) ? &kWith : &kWithout;
}
const OrbLibraryVersion* ORB_CALL orbjGetLibVersion() {
  static constexpr OrbLibraryVersion kWithout = record("p8", "orbJP SSE4.1/4.2 (p8)");
  static constexpr OrbLibraryVersion kWith = record("p8", "orbJP SSE4.1/4.2 (p8)+");
  return orbIsFeatureEnabled(kSse42, 0) ? &kWith : &kWithout;
}
}  // namespace p8

}  // namespace orb
