/* Sample types, geometry and the calling convention. */
#ifndef ORB90LEGACY_TYPES_H
#define ORB90LEGACY_TYPES_H

#include <stdint.h>

/* On 32-bit Windows every function pops its own arguments. */
#if defined(_WIN32) && !defined(_WIN64)
#define ORB_CALL __stdcall
#else
#define ORB_CALL
#endif

#if defined(_WIN32)
#if defined(ORB_STATIC)
#define ORB_API
#else
#define ORB_API __declspec(dllimport)
#endif
#else
#define ORB_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t Orb8u;
typedef int8_t Orb8s;
typedef uint16_t Orb16u;
typedef int16_t Orb16s;
typedef uint32_t Orb32u;
typedef int32_t Orb32s;
typedef float Orb32f;
typedef double Orb64f;

/* The size of a region, in samples or pixels. Passed by value. */
typedef struct OrbiSize {
  Orb32s width;
  Orb32s height;
} OrbiSize;

/* A region by its first column and row and its size. */
typedef struct OrbiRect {
  Orb32s x;
  Orb32s y;
  Orb32s width;
  Orb32s height;
} OrbiRect;

#ifdef __cplusplus
}
#endif

#endif
