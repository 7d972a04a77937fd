#include "hosts/jxr/overlap.h"

#include <cstring>

#include "hosts/jxr/second_stage.h"

namespace orbhost::jxr {

namespace {

// Four squares side by side: a lane is one of them.
using Lanes = int32_t __attribute__((vector_size(16)));
constexpr int kLanes = 4;

// The pairs of a square that are rotated, in both senses.
template <class Operators, class Value>
void rotateAll(Value (&x)[4][4]) {
  Operators::rotate(x[3][1], x[3][0]);
  Operators::rotate(x[2][1], x[2][0]);
  Operators::rotate(x[1][3], x[0][3]);
  Operators::rotate(x[1][2], x[0][2]);
}

// The operators of both senses; those of one undo the steps of the other in the opposite order. A
// value is a sample, or one of each of several squares.
struct Inverse {
  template <class Value>
  static void rotate(Value& a, Value& b) {
    a -= (b + 1) >> 1;
    b += (a + 1) >> 1;
  }
  template <class Value>
  static void scale(Value& a, Value& d) {
    a += d;
    d = (a >> 1) - d;
    a += 3 * d >> 3;
    d += 3 * a >> 4;
    d += a >> 7;
    d -= a >> 10;
  }
  template <class Value>
  static void mix(Value& a, Value& b, Value& c, Value& d) {
    scale(a, d);
    b -= c;
    a += (3 * d + 4) >> 3;
    d -= b >> 1;
    const Value e = ((a - b) >> 1) - c;
    a -= e;
    b += d;
    c = d;
    d = e;
  }
  template <class Value>
  static void turnCorner(Value& a, Value& b, Value& c, Value& d) {
    d += a;
    c -= b;
    const Value p = d >> 1;
    a -= p;
    const Value q = c >> 1;
    b += q;
    a -= (3 * b + 6) >> 3;
    b += (3 * a + 2) >> 2;
    a -= (3 * b + 4) >> 3;
    b -= q;
    a += p;
    c += b;
    d -= a;
  }
  template <class Value>
  static void scaleEdge(Value& a, Value& d) {
    scale(a, d);
    a += (3 * d + 4) >> 3;
    d -= a >> 1;
    a += d;
    d = -d;
  }
  template <class Value>
  static void scalePair(Value& a, Value& b) {
    b += (a + 2) >> 2;
    a += (b + 1) >> 1;
    a += b >> 5;
    a += b >> 9;
    a += b >> 13;
    b += (a + 2) >> 2;
  }
  template <class Value>
  static void square(Value (&x)[4][4]) {
    butterflies(x);
    turnCorner(x[2][2], x[2][3], x[3][2], x[3][3]);
    rotateAll<Inverse>(x);
    mix(x[1][1], x[1][2], x[2][1], x[2][2]);
    mix(x[1][0], x[1][3], x[2][0], x[2][3]);
    mix(x[0][1], x[0][2], x[3][1], x[3][2]);
    mix(x[0][0], x[0][3], x[3][0], x[3][3]);
  }
  template <class Value>
  static void edge(Value& a, Value& b, Value& c, Value& d) {
    a += d;
    b += c;
    d -= (a + 1) >> 1;
    c -= (b + 1) >> 1;
    scaleEdge(a, d);
    scaleEdge(b, c);
    rotate(c, d);
    d += (a + 1) >> 1;
    c += (b + 1) >> 1;
    a -= d;
    b -= c;
  }
  template <class Value>
  static void butterflies(Value (&x)[4][4]) {
    hadamard(x[1][1], x[1][2], x[2][1], x[2][2]);
    hadamard(x[1][0], x[1][3], x[2][0], x[2][3]);
    hadamard(x[0][1], x[0][2], x[3][1], x[3][2]);
    hadamard(x[0][0], x[0][3], x[3][0], x[3][3]);
  }
};

struct Forward {
  template <class Value>
  static void rotate(Value& a, Value& b) {
    b -= (a + 1) >> 1;
    a += (b + 1) >> 1;
  }
  template <class Value>
  static void scale(Value& a, Value& d) {
    d += a >> 10;
    d -= a >> 7;
    d -= 3 * a >> 4;
    a -= 3 * d >> 3;
    d = (a >> 1) - d;
    a -= d;
  }
  template <class Value>
  static void mix(Value& a, Value& b, Value& c, Value& d) {
    a += d;
    b -= c;
    d = ((a - b) >> 1) - d;
    c += b >> 1;
    b += d;
    a -= (3 * c + 4) >> 3;
    const Value e = c;
    c = d;
    d = e;
    scale(a, d);
  }
  template <class Value>
  static void turnCorner(Value& a, Value& b, Value& c, Value& d) {
    d += a;
    c -= b;
    const Value p = d >> 1;
    a -= p;
    const Value q = c >> 1;
    b += q;
    a += (3 * b + 4) >> 3;
    b -= (3 * a + 2) >> 2;
    a += (3 * b + 6) >> 3;
    b -= q;
    a += p;
    c += b;
    d -= a;
  }
  template <class Value>
  static void scaleEdge(Value& a, Value& d) {
    d = -d;
    a -= d;
    d += a >> 1;
    a -= (3 * d + 4) >> 3;
    scale(a, d);
  }
  template <class Value>
  static void scalePair(Value& a, Value& b) {
    b -= (a + 2) >> 2;
    a -= b >> 13;
    a -= b >> 9;
    a -= b >> 5;
    a -= (b + 1) >> 1;
    b -= (a + 2) >> 2;
  }
  template <class Value>
  static void square(Value (&x)[4][4]) {
    mix(x[1][1], x[1][2], x[2][1], x[2][2]);
    mix(x[1][0], x[1][3], x[2][0], x[2][3]);
    mix(x[0][1], x[0][2], x[3][1], x[3][2]);
    mix(x[0][0], x[0][3], x[3][0], x[3][3]);
    rotateAll<Forward>(x);
    turnCorner(x[2][2], x[2][3], x[3][2], x[3][3]);
    Inverse::butterflies(x);
  }
  template <class Value>
  static void edge(Value& a, Value& b, Value& c, Value& d) {
    a += d;
    b += c;
    d -= (a + 1) >> 1;
    c -= (b + 1) >> 1;
    rotate(c, d);
    scaleEdge(a, d);
    scaleEdge(b, c);
    d += (a + 1) >> 1;
    c += (b + 1) >> 1;
    a -= d;
    b -= c;
  }
};

int32_t& sampleAt(const OverlapRegion& region, int x, int y) {
  return region.first[y * region.down + x * region.across];
}

template <class Operators>
void filterSquare(const OverlapRegion& region, int x, int y) {
  int32_t square[4][4];
  int32_t* const first = &sampleAt(region, x, y);
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      square[row][column] = first[row * region.down + column * region.across];
    }
  }
  Operators::square(square);
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      first[row * region.down + column * region.across] = square[row][column];
    }
  }
}

void transpose(Lanes (&v)[4]) {
  const Lanes a = __builtin_shufflevector(v[0], v[1], 0, 4, 1, 5);
  const Lanes b = __builtin_shufflevector(v[2], v[3], 0, 4, 1, 5);
  const Lanes c = __builtin_shufflevector(v[0], v[1], 2, 6, 3, 7);
  const Lanes d = __builtin_shufflevector(v[2], v[3], 2, 6, 3, 7);
  v[0] = __builtin_shufflevector(a, b, 0, 1, 4, 5);
  v[1] = __builtin_shufflevector(a, b, 2, 3, 6, 7);
  v[2] = __builtin_shufflevector(c, d, 0, 1, 4, 5);
  v[3] = __builtin_shufflevector(c, d, 2, 3, 6, 7);
}

// As many squares as there are lanes, of samples that stand together.
template <class Operators>
void filterSquares(const OverlapRegion& region, int x, int y) {
  Lanes squares[4][4];
  int32_t* const first = &sampleAt(region, x, y);
  for (int row = 0; row < 4; ++row) {
    std::memcpy(squares[row], first + row * region.down, sizeof squares[row]);
    transpose(squares[row]);
  }
  Operators::square(squares);
  for (int row = 0; row < 4; ++row) {
    transpose(squares[row]);
    std::memcpy(first + row * region.down, squares[row], sizeof squares[row]);
  }
}

template <class Operators>
void filterBy4(const OverlapRegion& region) {
  const auto edge = [&](int x, int y, bool isVertical) {
    const ptrdiff_t next = isVertical ? region.down : region.across;
    int32_t* const first = &sampleAt(region, x, y);
    Operators::edge(first[0], first[next], first[2 * next], first[3 * next]);
  };
  const int right = region.width - 2;
  const int bottom = region.height - 2;
  for (int y = 2; y < bottom; y += 4) {
    for (const int column : {0, 1, right, right + 1}) edge(column, y, true);
    int x = 2;
    if (region.across == 1) {
      for (; x + 4 * (kLanes - 1) < right; x += 4 * kLanes) filterSquares<Operators>(region, x, y);
    }
    for (; x < right; x += 4) filterSquare<Operators>(region, x, y);
  }
  for (const int y : {0, 1, bottom, bottom + 1}) {
    for (int x = 2; x < right; x += 4) edge(x, y, false);
  }
  for (const int y : {0, bottom}) {
    for (const int x : {0, right}) {
      Operators::edge(sampleAt(region, x, y), sampleAt(region, x + 1, y),
                      sampleAt(region, x, y + 1), sampleAt(region, x + 1, y + 1));
    }
  }
}

template <class Operators>
void filterBy2(const OverlapRegion& region) {
  const int right = region.width - 1;
  const int bottom = region.height - 1;
  // What a corner adds to its neighbour is not filtered.
  const auto eachCorner = [&](auto one) {
    for (const int y : {0, bottom}) {
      one(sampleAt(region, 0, y), sampleAt(region, 1, y));
      one(sampleAt(region, right, y), sampleAt(region, right - 1, y));
    }
  };
  eachCorner([](int32_t& corner, int32_t beside) { corner -= beside; });
  for (int y = 1; y < bottom; y += 2) {
    for (const int x : {0, right}) {
      Operators::scalePair(sampleAt(region, x, y), sampleAt(region, x, y + 1));
    }
    for (int x = 1; x < right; x += 2) {
      int32_t& a = sampleAt(region, x, y);
      int32_t& b = sampleAt(region, x + 1, y);
      int32_t& c = sampleAt(region, x, y + 1);
      int32_t& d = sampleAt(region, x + 1, y + 1);
      a += d;
      b += c;
      d -= (a + 1) >> 1;
      c -= (b + 1) >> 1;
      Operators::scalePair(a, b);
      d += (a + 1) >> 1;
      c += (b + 1) >> 1;
      a -= d;
      b -= c;
    }
  }
  for (const int y : {0, bottom}) {
    for (int x = 1; x < right; x += 2) {
      Operators::scalePair(sampleAt(region, x, y), sampleAt(region, x + 1, y));
    }
  }
  eachCorner([](int32_t& corner, int32_t beside) { corner += beside; });
}

}  // namespace

void filterSquaresOf4(Sense sense, const OverlapRegion& region) {
  if (sense == Sense::kForward) {
    filterBy4<Forward>(region);
  } else {
    filterBy4<Inverse>(region);
  }
}

void filterSquaresOf2(Sense sense, const OverlapRegion& region) {
  if (sense == Sense::kForward) {
    filterBy2<Forward>(region);
  } else {
    filterBy2<Inverse>(region);
  }
}

}  // namespace orbhost::jxr
