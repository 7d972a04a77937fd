// Rows of samples as the differences of lossless coding (ITU-T T.81 H.1.2).
#ifndef ORB_HOSTS_JPEG_PREDICTION_H
#define ORB_HOSTS_JPEG_PREDICTION_H

#include "orb90legacy.h"

namespace orbhost::jpeg {

class RowPredictor {
 public:
  // Samples of `precision` bits lose the `pointTransform` lowest before they are predicted.
  RowPredictor(int precision, int predictor, int pointTransform)
      : precision_(precision), predictor_(predictor), pointTransform_(pointTransform) {}

  // What a row holds in place of a sample, and the sample that it holds. A row has signed words. So
  // that the predictors that halve see all 16 bits in their order, samples that use them are held
  // about 0.
  Orb16s toRow(int sample) const {
    return static_cast<Orb16s>((sample >> pointTransform_) - offset());
  }
  int fromRow(Orb16s held) const {
    const int bits = precision_ - pointTransform_;
    return ((held + offset()) & ((1 << bits) - 1)) << pointTransform_;
  }

  // The differences of a row from the one above it, or of one that has none at the start of a scan
  // or restart interval.
  void differences(const Orb16s* row, const Orb16s* above, int width, Orb16s* to) const {
    if (above != nullptr) {
      legacy90orbiDiffPredRow_JPEG_16s_C1(row, above, to, width, predictor_);
      return;
    }
    legacy90orbiDiffPredFirstRow_JPEG_16s_C1(row, to, width, precision_, pointTransform_);
    correctFirst(to);
  }

  // A row from its differences, in the same place.
  void reconstruct(Orb16s* row, const Orb16s* above, int width) const {
    if (above != nullptr) {
      legacy90orbiReconstructPredRow_JPEG_16s_C1(row, above, row, width, predictor_);
      return;
    }
    correctFirst(row);
    legacy90orbiReconstructPredFirstRow_JPEG_16s_C1(row, row, width, precision_, pointTransform_);
  }

 private:
  int offset() const { return precision_ - pointTransform_ == 16 ? 32768 : 0; }

  // The first sample's prediction is the middle of the range, which is 0 in a row about 0.
  void correctFirst(Orb16s* differences) const {
    differences[0] = static_cast<Orb16s>(differences[0] ^ (offset() != 0 ? -32768 : 0));
  }

  int precision_;
  int predictor_;
  int pointTransform_;
};

}  // namespace orbhost::jpeg

#endif
