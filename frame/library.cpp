// The exports that the frame answers itself.
#include "frame/dispatch.h"
#include "frame/enabled.h"

namespace orb {

int32_t orbIsFeatureEnabled(uint32_t low, uint32_t high) {
  return orbIsFeatureEnabled(orbFrameState, low, high);
}

namespace {

constexpr int32_t kCompressionGroup = 3;
constexpr int32_t kJpegGroup = 5;

OrbStatus storeNumThreads(Orb32s* pNumThreads) {
  if (!pNumThreads) return orbStsNullPtrErr;
  *pNumThreads = 1;
  return orbStsNoOperation;
}

}  // namespace
}  // namespace orb

OrbStatus ORB_CALL legacy90orbdcInit() {
  return orbInitGroup(orb::kCompressionGroup);
}
OrbStatus ORB_CALL legacy90orbjInit() {
  return orbInitGroup(orb::kJpegGroup);
}

OrbStatus ORB_CALL legacy90orbdcSetNumThreads(Orb32s) {
  return orbStsNoOperation;
}
OrbStatus ORB_CALL legacy90orbjSetNumThreads(Orb32s) {
  return orbStsNoOperation;
}

OrbStatus ORB_CALL legacy90orbdcGetNumThreads(Orb32s* pNumThreads) {
  return orb::storeNumThreads(pNumThreads);
}
OrbStatus ORB_CALL legacy90orbjGetNumThreads(Orb32s* pNumThreads) {
  return orb::storeNumThreads(pNumThreads);
}
