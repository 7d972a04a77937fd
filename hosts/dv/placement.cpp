#include "hosts/dv/placement.h"

namespace orbhost::dv {

namespace {

// A picture is cut into five columns of superblocks, and the macroblocks of a segment come from one
// of each. The columns and, in each, the first row are shuffled like this.
constexpr int kColumn[] = {2, 1, 3, 0, 4};
constexpr int kFirstRow[] = {2, 6, 8, 0, 4};

struct Slot {
  int channel, sequence, number;  // the segment's number in the sequence
};

// Which of `rows` down a serpentine passes at step k, and in which column.
struct Step {
  int column, row;
};
Step serpentine(int k, int rows) {
  const int column = k / rows, row = k % rows;
  return {column, column % 2 == 0 ? row : rows - 1 - row};
}

// Superblocks of 27 macroblocks, three rows of nine, 16 pixels wide: one sequence for each row of
// superblocks. In 4:2:2 two channels share a superblock's 48 lines.
Place place16(const Format& format, Slot slot, int m) {
  const bool is420 = format.macroblocks == Macroblocks::k420;
  const Step step = serpentine(slot.number, 3);
  const int row = (slot.sequence + kFirstRow[m]) % format.sequences;
  return {kColumn[m] * 144 + step.column * 16,
          row * 48 + slot.channel * 24 + step.row * (is420 ? 16 : 8)};
}

// Superblocks of four and a half columns of six macroblocks, 32 pixels wide. Two share a column:
// its upper half ends one, its lower half begins the next. In the last, half as wide, macroblocks
// are 16 by 16.
Place place411(const Format& format, Slot slot, int m) {
  const bool beginsInHalf = kColumn[m] % 2 == 1;
  const Step step = serpentine(slot.number + (beginsInHalf ? 3 : 0), 6);
  const int row = (slot.sequence + kFirstRow[m]) % format.sequences;
  const int x = kColumn[m] * 144 - (beginsInHalf ? 16 : 0) + step.column * 32;
  return {x, row * 48 + step.row * (x == 704 ? 16 : 8)};
}

// High definition: a segment of each row of superblocks in turn, so that a channel goes through
// all of them at once. Channels have parts of a superblock's columns, and its rows in turn.
Place place720(Slot slot, int m) {
  const int k = slot.sequence * kSegmentsOfSequence + slot.number;
  const int row = (k + 2 * slot.channel + kFirstRow[m] / 2) % 5, within = k / 5;
  return {(kColumn[m] * 12 + slot.channel * 6 + within % 6) * 16, (row * 9 + within / 6) * 16};
}

// In units of macroblocks; `rows` of superblocks, each of so many lines of them, below `top`.
Place place1080(Slot slot, int m, int rows, int firstRow, int lines, int top) {
  const int k = slot.sequence * kSegmentsOfSequence + slot.number, within = k / rows;
  return {kColumn[m] * 18 + slot.channel % 2 * 9 + within % 9,
          top + (k + firstRow) % rows * lines + within / 9 * 2 + slot.channel / 2};
}

// A picture of 80 by 67.5 macroblocks: of a middle part of 90 by 60 the ten columns beyond the
// edge, cut into pieces, are the lines above and below.
Place place1080At60(Slot slot, int m) {
  Place place = place1080(slot, m, 5, 2 * slot.channel + kFirstRow[m] / 2, 12, 4);
  if (place.x >= 80) {
    const int x = place.x - 80, line = place.y - 4;
    if (line < 32) {
      place = {line / 4 * 10 + x, line % 4};
    } else if (line < 56) {
      place = {(line - 32) / 3 * 10 + x, 64 + (line - 32) % 3};
    } else {
      place = {(line - 56) * 20 + 2 * x, 67};
    }
  }
  return {place.x * 16, place.y * 16};
}

// A picture of 90 by 67.5; the first channel has another sequence for the first and the last line.
Place place1080At50(Slot slot, int m) {
  Place place = place1080(slot, m, 11, 4 * slot.channel + kFirstRow[m], 6, 1);
  if (slot.sequence == 11) {
    const int n = m * kSegmentsOfSequence + slot.number;
    place = n < 90 ? Place{n, 0} : Place{(n - 90) * 2, 67};
  }
  return {place.x * 16, place.y * 16};
}

Place placeMacroblock(const Format& format, Slot slot, int m) {
  switch (format.macroblocks) {
    case Macroblocks::k411:
      return place411(format, slot, m);
    case Macroblocks::k420:
    case Macroblocks::k422:
      return place16(format, slot, m);
    case Macroblocks::kDv100:
      break;
  }
  if (format.isProgressive) return place720(slot, m);
  return format.is50 ? place1080At50(slot, m) : place1080At60(slot, m);
}

}  // namespace

std::vector<Segment> placeSegments(const Format& format) {
  constexpr int kFirstVideo = 6;       // blocks in front of the first of audio
  constexpr int kSegmentsOfGroup = 3;  // which follow a block of audio
  std::vector<Segment> segments;
  for (int channel = 0; channel < format.channels; ++channel) {
    const bool hasOneMore = format.sequencesOfPicture == 11 && channel == 0;
    for (int sequence = 0; sequence < format.sequencesOfPicture + hasOneMore; ++sequence) {
      for (int number = 0; number < kSegmentsOfSequence; ++number) {
        Segment segment;
        const int dif = kFirstVideo + 16 * (number / kSegmentsOfGroup) + 1 +
                        kMacroblocksOfSegment * (number % kSegmentsOfGroup);
        segment.offset = kSequenceBytes * (channel * format.sequences + sequence) + kDifBytes * dif;
        segment.sequence = sequence;
        segment.firstDif = kMacroblocksOfSegment * number;
        for (int m = 0; m < kMacroblocksOfSegment; ++m) {
          segment.macroblock[m] = placeMacroblock(format, {channel, sequence, number}, m);
        }
        segments.push_back(segment);
      }
    }
  }
  return segments;
}

Place inSecondFrame(Place place) {
  return {place.x, place.y >= 144 ? place.y - 144 : place.y + 576};
}

}  // namespace orbhost::dv
