// LU decomposition with partial pivoting, and substitution.
//
// Elements are addressed in bytes, by one stride or two; rows stay in their places and the index
// tells their order. Every sum of products is formed from the first column on, so that all builds
// and all sizes round alike.
#ifndef ORB_SIDE_PX_LU_H
#define ORB_SIDE_PX_LU_H

#include "frame/arith.h"
#include "frame/memory_access.h"

namespace orb::ORB_BUILD {

// Rows whose elements are neighbours.
template <class T>
struct ContiguousRows {
  T* first;
  Orb32s rowStride;

  ContiguousRows row(ptrdiff_t i) const { return {rowAt(first, rowStride, i), rowStride}; }
  T* at(ptrdiff_t j) const { return first + j; }
};

// Elements anywhere.
template <class T>
struct StridedMatrix {
  T* first;
  Orb32s rowStride;
  Orb32s columnStride;

  StridedMatrix row(ptrdiff_t i) const {
    return {rowAt(first, rowStride, i), rowStride, columnStride};
  }
  T* at(ptrdiff_t j) const { return rowAt(first, columnStride, j); }
};

template <class T>
struct LuVector {
  T* first;
  Orb32s stride;

  T* at(ptrdiff_t i) const { return rowAt(first, stride, i); }
};

namespace plain {

// Pivots that small are none. For the sizes of the unrolled forms, twice the smallest normal double
// is the smallest that counts; for the others 2^-52 is the largest that does not.
constexpr Orb64f kSmallestSmallPivot = 4.450147717014403e-308;
constexpr Orb64f kLargestNoPivot = 2.220446049250313e-16;

constexpr bool hasSmallForm(Orb32s size) {
  return size >= 3 && size <= 5;
}

inline bool isNoPivot(Orb64f magnitude, bool isSmallForm) {
  return isSmallForm ? magnitude < kSmallestSmallPivot : magnitude <= kLargestNoPivot;
}

template <class Source, class Destination>
inline void orbCopyMatrix(const Source& src, const Destination& dst, Orb32s size) {
  for (Orb32s i = 0; i < size; ++i) {
    const auto from = src.row(i);
    const auto to = dst.row(i);
    for (Orb32s j = 0; j < size; ++j) store(to.at(j), load(from.at(j)));
  }
}

// row -= multiplier * pivotRow, from a column on.
template <class Row>
inline void subtractRow(const Row& row, const Row& pivotRow, Orb64f multiplier, Orb32s from,
                        Orb32s size) {
  for (Orb32s j = from; j < size; ++j) {
    store(row.at(j), load(row.at(j)) - multiplier * load(pivotRow.at(j)));
  }
}

// ---- Any size

// False if a pivot is none.
template <class Matrix>
inline bool orbDecompose(const Matrix& matrix, Orb32s* index, Orb32s size) {
  const auto row = [&](Orb32s i) { return matrix.row(load(index + i)); };
  const auto magnitude = [&](Orb32s i, Orb32s k) { return __builtin_fabs(load(row(i).at(k))); };
  for (Orb32s k = 0; k < size - 1; ++k) {
    Orb32s best = k;
    Orb64f largest = magnitude(k, k);
    for (Orb32s i = k + 1; i < size; ++i) {
      const Orb64f candidate = magnitude(i, k);
      if (candidate > largest) {
        largest = candidate;
        best = i;
      }
    }
    if (isNoPivot(largest, false)) return false;
    const Orb32s pivotIndex = load(index + best);
    store(index + best, load(index + k));
    store(index + k, pivotIndex);
    const auto pivotRow = row(k);
    const Orb64f reciprocal = 1 / load(pivotRow.at(k));
    for (Orb32s i = k + 1; i < size; ++i) {
      const auto current = row(i);
      const Orb64f multiplier = load(current.at(k)) * reciprocal;
      store(current.at(k), multiplier);
      subtractRow(current, pivotRow, multiplier, k + 1, size);
    }
  }
  return !isNoPivot(magnitude(size - 1, size - 1), false);
}

template <class Factors>
inline void orbSubstitute(const Factors& factors, const Orb32s* index,
                          const LuVector<const Orb64f>& b, const LuVector<Orb64f>& x, Orb32s size) {
  for (Orb32s k = 0; k < size; ++k) {
    const Orb32s storageRow = load(index + k);
    const auto row = factors.row(storageRow);
    Orb64f sum = 0;
    for (Orb32s j = 0; j < k; ++j) sum += load(row.at(j)) * load(x.at(j));
    store(x.at(k), load(b.at(storageRow)) - sum);
  }
  for (Orb32s k = size - 1; k >= 0; --k) {
    const auto row = factors.row(load(index + k));
    Orb64f sum = 0;
    for (Orb32s j = k + 1; j < size; ++j) sum += load(row.at(j)) * load(x.at(j));
    store(x.at(k), (load(x.at(k)) - sum) / load(row.at(k)));
  }
}

// ---- Sizes known to the compiler, unrolled: matrix and vectors are held in variables

template <int kSize>
struct SmallMatrix {
  Orb64f at[kSize][kSize];
};

// Rows by `order`, which tells the storage row of each.
template <int kSize, class Matrix>
inline void loadSmall(SmallMatrix<kSize>& small, const Matrix& matrix, const Orb32s* order) {
#pragma GCC unroll 8
  for (int i = 0; i < kSize; ++i) {
    const auto row = matrix.row(order[i]);
#pragma GCC unroll 8
    for (int j = 0; j < kSize; ++j) small.at[i][j] = load(row.at(j));
  }
}

template <int kSize, class Matrix>
inline bool orbDecomposeSmall(const Matrix& matrix, Orb32s* index) {
  static_assert(hasSmallForm(kSize));
  // Rows move here, and keep the names of their places.
  Orb32s order[kSize];
  for (int i = 0; i < kSize; ++i) order[i] = i;
  SmallMatrix<kSize> a;
  loadSmall(a, matrix, order);
  bool isRegular = true;
#pragma GCC unroll 8
  for (int k = 0; k < kSize; ++k) {
    int best = k;
    Orb64f largest = __builtin_fabs(a.at[k][k]);
#pragma GCC unroll 8
    for (int i = k + 1; i < kSize; ++i) {
      const Orb64f candidate = __builtin_fabs(a.at[i][k]);
      if (candidate > largest) {
        largest = candidate;
        best = i;
      }
    }
    if (isNoPivot(largest, true)) {
      isRegular = false;
      break;
    }
    if (best != k) {
      const Orb32s name = order[k];
      order[k] = order[best];
      order[best] = name;
#pragma GCC unroll 8
      for (int j = 0; j < kSize; ++j) {
        const Orb64f element = a.at[k][j];
        a.at[k][j] = a.at[best][j];
        a.at[best][j] = element;
      }
    }
    const Orb64f reciprocal = 1 / a.at[k][k];
#pragma GCC unroll 8
    for (int i = k + 1; i < kSize; ++i) {
      const bool isQuotient = kSize == 3 && k == 1;
      const Orb64f multiplier = isQuotient ? a.at[i][k] / a.at[k][k] : a.at[i][k] * reciprocal;
      a.at[i][k] = multiplier;
#pragma GCC unroll 8
      for (int j = k + 1; j < kSize; ++j) a.at[i][j] -= multiplier * a.at[k][j];
    }
  }
  for (int i = 0; i < kSize; ++i) {
    store(index + i, order[i]);
    const auto row = matrix.row(order[i]);
    for (int j = 0; j < kSize; ++j) store(row.at(j), a.at[i][j]);
  }
  return isRegular;
}

template <int kSize, class Factors>
inline void orbSubstituteSmall(const Factors& factors, const Orb32s* index,
                               const LuVector<const Orb64f>& b, const LuVector<Orb64f>& x) {
  Orb64f y[kSize];
#pragma GCC unroll 8
  for (int k = 0; k < kSize; ++k) {
    const Orb32s storageRow = load(index + k);
    const auto row = factors.row(storageRow);
    Orb64f sum = 0;
#pragma GCC unroll 8
    for (int j = 0; j < k; ++j) sum += load(row.at(j)) * y[j];
    y[k] = load(b.at(storageRow)) - sum;
  }
#pragma GCC unroll 8
  for (int k = kSize - 1; k >= 0; --k) {
    const auto row = factors.row(load(index + k));
    Orb64f sum = 0;
#pragma GCC unroll 8
    for (int j = k + 1; j < kSize; ++j) sum += load(row.at(j)) * y[j];
    y[k] = (y[k] - sum) / load(row.at(k));
  }
  for (int k = 0; k < kSize; ++k) store(x.at(k), y[k]);
}

}  // namespace plain
}  // namespace orb::ORB_BUILD

#endif
