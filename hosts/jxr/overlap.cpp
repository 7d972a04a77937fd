#include "hosts/jxr/overlap.h"

#include "hosts/jxr/second_stage.h"

namespace orbhost::jxr {

namespace {

using Square = int32_t[4][4];  // rows

// Operators of both senses, and the same steps backwards, in the opposite order.
struct Inverse {
  static void rotate(int32_t& a, int32_t& b) {
    a -= (b + 1) >> 1;
    b += (a + 1) >> 1;
  }
  static void scale(int32_t& a, int32_t& d) {
    a += d;
    d = (a >> 1) - d;
    a += 3 * d >> 3;
    d += 3 * a >> 4;
    d += a >> 7;
    d -= a >> 10;
  }
  static void mix(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
    scale(a, d);
    b -= c;
    a += (3 * d + 4) >> 3;
    d -= b >> 1;
    const int32_t e = ((a - b) >> 1) - c;
    a -= e;
    b += d;
    c = d;
    d = e;
  }
  static void turnCorner(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
    d += a;
    c -= b;
    const int32_t p = d >> 1;
    a -= p;
    const int32_t q = c >> 1;
    b += q;
    a -= (3 * b + 6) >> 3;
    b += (3 * a + 2) >> 2;
    a -= (3 * b + 4) >> 3;
    b -= q;
    a += p;
    c += b;
    d -= a;
  }
  static void scaleEdge(int32_t& a, int32_t& d) {
    scale(a, d);
    a += (3 * d + 4) >> 3;
    d -= a >> 1;
    a += d;
    d = -d;
  }
  static void scalePair(int32_t& a, int32_t& b) {
    b += (a + 2) >> 2;
    a += (b + 1) >> 1;
    a += b >> 5;
    a += b >> 9;
    a += b >> 13;
    b += (a + 2) >> 2;
  }
  static void square(Square& x) {
    butterflies(x);
    turnCorner(x[2][2], x[2][3], x[3][2], x[3][3]);
    rotateAll(x);
    mix(x[1][1], x[1][2], x[2][1], x[2][2]);
    mix(x[1][0], x[1][3], x[2][0], x[2][3]);
    mix(x[0][1], x[0][2], x[3][1], x[3][2]);
    mix(x[0][0], x[0][3], x[3][0], x[3][3]);
  }
  static void edge(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
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
  static void butterflies(Square& x) {
    hadamard(x[1][1], x[1][2], x[2][1], x[2][2]);
    hadamard(x[1][0], x[1][3], x[2][0], x[2][3]);
    hadamard(x[0][1], x[0][2], x[3][1], x[3][2]);
    hadamard(x[0][0], x[0][3], x[3][0], x[3][3]);
  }
  static void rotateAll(Square& x) {
    rotate(x[3][1], x[3][0]);
    rotate(x[2][1], x[2][0]);
    rotate(x[1][3], x[0][3]);
    rotate(x[1][2], x[0][2]);
  }
};

struct Forward {
  static void rotate(int32_t& a, int32_t& b) {
    b -= (a + 1) >> 1;
    a += (b + 1) >> 1;
  }
  static void scale(int32_t& a, int32_t& d) {
    d += a >> 10;
    d -= a >> 7;
    d -= 3 * a >> 4;
    a -= 3 * d >> 3;
    d = (a >> 1) - d;
    a -= d;
  }
  static void mix(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
    a += d;
    b -= c;
    d = ((a - b) >> 1) - d;
    c += b >> 1;
    b += d;
    a -= (3 * c + 4) >> 3;
    const int32_t e = c;
    c = d;
    d = e;
    scale(a, d);
  }
  static void turnCorner(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
    d += a;
    c -= b;
    const int32_t p = d >> 1;
    a -= p;
    const int32_t q = c >> 1;
    b += q;
    a += (3 * b + 4) >> 3;
    b -= (3 * a + 2) >> 2;
    a += (3 * b + 6) >> 3;
    b -= q;
    a += p;
    c += b;
    d -= a;
  }
  static void scaleEdge(int32_t& a, int32_t& d) {
    d = -d;
    a -= d;
    d += a >> 1;
    a -= (3 * d + 4) >> 3;
    scale(a, d);
  }
  static void scalePair(int32_t& a, int32_t& b) {
    b -= (a + 2) >> 2;
    a -= b >> 13;
    a -= b >> 9;
    a -= b >> 5;
    a -= (b + 1) >> 1;
    b -= (a + 2) >> 2;
  }
  static void square(Square& x) {
    mix(x[1][1], x[1][2], x[2][1], x[2][2]);
    mix(x[1][0], x[1][3], x[2][0], x[2][3]);
    mix(x[0][1], x[0][2], x[3][1], x[3][2]);
    mix(x[0][0], x[0][3], x[3][0], x[3][3]);
    rotateAll(x);
    turnCorner(x[2][2], x[2][3], x[3][2], x[3][3]);
    Inverse::butterflies(x);
  }
  static void edge(int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
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
  static void rotateAll(Square& x) {
    rotate(x[3][1], x[3][0]);
    rotate(x[2][1], x[2][0]);
    rotate(x[1][3], x[0][3]);
    rotate(x[1][2], x[0][2]);
  }
};

int32_t& sampleAt(const OverlapRegion& region, int x, int y) {
  return region.first[y * region.down + x * region.across];
}

template <class Operators>
void filterSquare(const OverlapRegion& region, int x, int y) {
  Square square;
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
    for (const int x : {0, 1, right, right + 1}) edge(x, y, true);
    for (int x = 2; x < right; x += 4) filterSquare<Operators>(region, x, y);
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
