/* orb90legacy: the inside of image and data codecs, as plain functions over plain records.
 *
 * The library turns one block, row, plane or buffer into another and returns a status. It knows no
 * file and no container, starts no thread, keeps no log and needs no call before the first: the
 * fastest build that the processor earns is chosen when a function is first called.
 *
 * Rules that hold for every function, and that the notes of each do not repeat:
 *
 * - The host owns every buffer. Nothing is read or written outside the region that the arguments
 *   describe, unless the function's note says so.
 * - Row steps are signed counts of bytes between the starts of successive rows. They need not be a
 *   multiple of the sample's size, and no pointer needs to be aligned.
 * - Arguments are checked in the stated order, and the first failure is returned. A call that
 *   returns an error (a negative status) has changed nothing, unless its note says so; a warning
 *   (a positive status) comes after the work is done.
 * - Functions without a record may run on any number of threads at once. A record belongs to one
 *   thread at a time.
 *
 * Names: `legacy90`, then `orb`, a domain (`i` image, `s` signal or buffer, `m` matrix, `dc` and
 * `j` the library itself), the operation, the standard, the type of the data (`8u16s`: from
 * unsigned 8-bit to signed 16-bit; `1u`: a bit stream) and its layout: `C1`, `C3`, `C4` interleaved
 * channels, `P3`, `P4` separate planes, `R` a region with row steps, `I` in place.
 */
#ifndef ORB90LEGACY_H
#define ORB90LEGACY_H

#include "orb90legacy/compress.h"
#include "orb90legacy/dv.h"
#include "orb90legacy/image.h"
#include "orb90legacy/image_resize.h"
#include "orb90legacy/jpeg.h"
#include "orb90legacy/jpeg2k.h"
#include "orb90legacy/jpegxr.h"
#include "orb90legacy/library.h"
#include "orb90legacy/side.h"
#include "orb90legacy/status.h"
#include "orb90legacy/types.h"

#endif
