/* The library itself: which build runs, and what it calls itself. */
#ifndef ORB90LEGACY_LIBRARY_H
#define ORB90LEGACY_LIBRARY_H

#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Constant data of the library: never released by the caller. */
typedef struct OrbLibraryVersion {
  Orb32s major;        /* 9 */
  Orb32s minor;        /* 0 */
  Orb32s majorBuild;   /* 0 */
  Orb32s build;        /* -1 */
  char targetCpu[4];   /* the build in two characters, then two zero bytes: px w7 v8 s8 p8 g9 h9 */
  const char* name;    /* the domain, the build's instruction set and the build */
  const char* version; /* version text */
  const char* buildDate; /* date text */
} OrbLibraryVersion;

/* Chooses the build of one dispatch group now, instead of at the first call of one of its
 * functions: orbdcInit that of the compression functions, orbjInit that of the JPEG, JPEG 2000,
 * JPEG XR and TIFF functions. Neither is ever required. Every later call gives the same result.
 *
 * Returns orbStsForeignCpu, a warning, if the processor has no CPUID or is not of the vendor on
 * whose processors the builds are proven; the choice of build depends on the processor's features
 * alone.
 */
ORB_API OrbStatus ORB_CALL legacy90orbdcInit(void);
ORB_API OrbStatus ORB_CALL legacy90orbjInit(void);

/* The library never starts a thread: any number is ignored.
 *
 * Returns orbStsNoOperation.
 */
ORB_API OrbStatus ORB_CALL legacy90orbdcSetNumThreads(Orb32s numThreads);
ORB_API OrbStatus ORB_CALL legacy90orbjSetNumThreads(Orb32s numThreads);

/* Stores the number of threads, which is 1.
 *
 * Returns orbStsNullPtrErr if pNumThreads is null, else orbStsNoOperation (and not orbStsNoErr).
 */
ORB_API OrbStatus ORB_CALL legacy90orbdcGetNumThreads(Orb32s* pNumThreads);
ORB_API OrbStatus ORB_CALL legacy90orbjGetNumThreads(Orb32s* pNumThreads);

/* The version record of the selected build of the compression functions (dc) or of the JPEG family
 * (j). Never null.
 */
ORB_API const OrbLibraryVersion* ORB_CALL legacy90orbdcGetLibVersion(void);
ORB_API const OrbLibraryVersion* ORB_CALL legacy90orbjGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
