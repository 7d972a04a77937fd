// Prediction of coefficients from those beside and above (ITU-T T.832).
#ifndef ORB_HOSTS_JXR_PREDICTION_H
#define ORB_HOSTS_JXR_PREDICTION_H

#include "hosts/jxr/macroblock.h"
#include "hosts/jxr/samples.h"

namespace orbhost::jxr {

enum class Direction { kNone, kLeft, kTop, kMean };

// DC and low-pass levels: from what is coded to what they are, and back.
void addPrediction(ColourFormat format, int channels, const Neighbours& neighbours,
                   Macroblock& block);
void subtractPrediction(ColourFormat format, int channels, const Neighbours& neighbours,
                        Macroblock& block);

// Where high-pass coefficients go on from, within a macroblock. Its levels are to be complete.
Direction highPassDirection(ColourFormat format, const Macroblock& block);

// The same for the high-pass coefficients of a channel's macroblock, of so many blocks.
void addHighPass(Direction direction, int blocksWide, int blocksHigh, Rows<int32_t> samples);
void subtractHighPass(Direction direction, int blocksWide, int blocksHigh, Rows<int32_t> samples);

}  // namespace orbhost::jxr

#endif
