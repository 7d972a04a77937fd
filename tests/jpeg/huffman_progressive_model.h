// Progressive Huffman coding as ITU-T T.81 annex G writes it down, coefficient by coefficient and
// with bits in strings: the judge of the library's coders. Beside the standard's rules it states
// what a host can see of the library's state records between calls.
#ifndef ORB_TESTS_JPEG_HUFFMAN_PROGRESSIVE_MODEL_H
#define ORB_TESTS_JPEG_HUFFMAN_PROGRESSIVE_MODEL_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/jpeg/huffman_model.h"

namespace orbtest {

enum class Pass { kDCFirst, kDCRefine, kACFirst, kACRefine };

// A scan of one component.
struct ProgressiveScan {
  Pass pass;
  Orb32s ss, se;  // of the AC passes
  Orb32u al;

  bool isAC() const { return pass == Pass::kACFirst || pass == Pass::kACRefine; }
};

// A picture's scans in an order that T.81 allows: DC and random bands of AC, each with a first pass
// and as many refinements as it takes.
inline std::vector<ProgressiveScan> randomScript(Random& random) {
  std::vector<ProgressiveScan> script;
  const auto add = [&](Pass first, Pass refine, int ss, int se) {
    for (int al = random.between(0, 4), pass = 0; al >= 0; --al, ++pass) {
      script.push_back({pass == 0 ? first : refine, ss, se, static_cast<Orb32u>(al)});
    }
  };
  add(Pass::kDCFirst, Pass::kDCRefine, 0, 0);
  for (int ss = 1; ss <= 63;) {
    const int se = random.oneIn(2) ? 63 : random.between(ss, 63);
    add(Pass::kACFirst, Pass::kACRefine, ss, se);
    ss = se + 1;
  }
  return script;
}

inline int magnitudeAbove(int value, Orb32u al) {
  return std::abs(value) / (1 << al);
}

// The coding end: writes a scan, or counts its symbols.
struct ProgressiveEncoderModel {
  WriterModel writer;
  std::vector<Orb32s>* counts = nullptr;  // to count into instead of writing
  Orb16s lastDC = 0;
  int eobRun = 0;
  std::string held;  // correction bits of the blocks of the run

  OrbStatus code(const ProgressiveScan& scan, const std::vector<Orb16s>& block,
                 const Codes& table) {
    codes_ = &table;
    return attempt([&] {
      switch (scan.pass) {
        case Pass::kDCFirst:
          return firstDC(block[0], scan.al);
        case Pass::kDCRefine:
          return put(block[0] >> scan.al & 1 ? "1" : "0");
        case Pass::kACFirst:
          return firstAC(block, scan);
        case Pass::kACRefine:
          return refineAC(block, scan);
      }
    });
  }

  // AC first keeps what goes wrong in front of the last byte to itself.
  OrbStatus flush(const ProgressiveScan& scan, const Codes& table) {
    codes_ = &table;
    OrbStatus status = orbStsNoErr;
    if (scan.isAC()) status = attempt([&] { putHeld(); });
    if (counts == nullptr) {
      const OrbStatus last = writer.flush();
      if (status == orbStsNoErr || scan.pass == Pass::kACFirst) status = last;
    }
    eobRun = 0;
    held.clear();
    return status;
  }

 private:
  struct Failure {
    OrbStatus status;
  };
  template <class Action>
  static OrbStatus attempt(Action action) {
    try {
      action();
      return orbStsNoErr;
    } catch (const Failure& failure) {
      return failure.status;
    }
  }

  void put(const std::string& bits) {
    if (counts != nullptr) return;
    const OrbStatus status = writer.put(bits);
    if (status != orbStsNoErr) throw Failure{status};
  }
  void putEach(const std::string& bits) {
    for (const char bit : bits) put(std::string(1, bit));
  }
  void putSymbol(int symbol) {
    if (counts != nullptr) {
      ++(*counts)[static_cast<size_t>(symbol)];
      return;
    }
    const auto code = codes_->find(symbol);
    put(code == codes_->end() ? "" : code->second);
  }

  // T.81 G.1.2.2, figure G.4. More than 32767 blocks go out in two runs, of which the first has as
  // many bits as there are, not the right ones.
  void putRun() {
    if (eobRun == 0) return;
    if (eobRun == 1) {
      putSymbol(0);
    } else {
      if (eobRun > 32767) {
        putSymbol(0xE0);
        put(binary(eobRun, 14));
        eobRun -= 32767;
      }
      const int n = bitLength(eobRun) - 1;
      if (n > 14) throw Failure{orbStsJpegBitStreamErr};
      putSymbol(n * 16);
      put(binary(eobRun, n));
    }
    eobRun = 0;
  }
  void putHeld() {
    putRun();
    putEach(held);
    held.clear();
  }

  void firstDC(int value, Orb32u al) {
    const int shifted = static_cast<int>(std::floor(value / static_cast<double>(1 << al)));
    const int difference = shifted - lastDC;
    lastDC = static_cast<Orb16s>(shifted);
    if (bitLength(difference) > 11) throw Failure{orbStsJpegBitStreamErr};
    putSymbol(bitLength(difference));
    if (difference != 0) put(valueBits(difference));
  }

  void firstAC(const std::vector<Orb16s>& block, const ProgressiveScan& scan) {
    int zeros = 0;
    for (int k = scan.ss; k <= scan.se; ++k) {
      const int value = at(block, k);
      const int magnitude = magnitudeAbove(value, scan.al);
      if (magnitude == 0) {
        ++zeros;
        continue;
      }
      putRun();
      for (; zeros > 15; zeros -= 16) putSymbol(0xF0);
      const int most = counts == nullptr ? 11 : 10;
      if (bitLength(magnitude) > most) throw Failure{orbStsJpegBitStreamErr};
      putSymbol(zeros * 16 + bitLength(magnitude));
      put(valueBits(value < 0 ? -magnitude : magnitude));
      zeros = 0;
    }
    if (zeros > 0 && ++eobRun == 32767) putRun();
  }

  // T.81 figures G.7 to G.9.
  void refineAC(const std::vector<Orb16s>& block, const ProgressiveScan& scan) {
    int lastNew = 0;
    for (int k = scan.ss; k <= scan.se; ++k) {
      if (magnitudeAbove(at(block, k), scan.al) == 1) lastNew = k;
    }
    int zeros = 0;
    std::string corrections;
    for (int k = scan.ss; k <= scan.se; ++k) {
      const int magnitude = magnitudeAbove(at(block, k), scan.al);
      if (magnitude == 0) {
        ++zeros;
        continue;
      }
      for (; zeros > 15 && k <= lastNew; zeros -= 16) {
        putHeld();
        putSymbol(0xF0);
        putEach(corrections);
        corrections.clear();
      }
      if (magnitude > 1) {
        corrections += magnitude % 2 == 1 ? '1' : '0';
        continue;
      }
      putHeld();
      putSymbol(zeros * 16 + 1);
      put(at(block, k) < 0 ? "0" : "1");
      putEach(corrections);
      corrections.clear();
      zeros = 0;
    }
    if (zeros == 0 && corrections.empty()) return;
    ++eobRun;
    held += corrections;
    if (eobRun == 32767 || held.size() > 937) putHeld();
  }

  static int at(const std::vector<Orb16s>& block, int k) {
    static const std::vector<int> order = zigzag();
    return block[static_cast<size_t>(order[static_cast<size_t>(k)])];
  }

  const Codes* codes_ = nullptr;
};

// The decoding end. The block is what the earlier scans have left.
struct ProgressiveDecoderModel {
  ReaderModel reader;
  Orb16s lastDC = 0;
  int eobRun = 0;

  OrbStatus decode(const ProgressiveScan& scan, std::vector<Orb16s>& block,
                   const DecoderTable& table) {
    switch (scan.pass) {
      case Pass::kDCFirst:
        return firstDC(block, scan.al, table);
      case Pass::kDCRefine:
        return refineDC(block, scan.al);
      case Pass::kACFirst:
        return firstAC(block, scan, table);
      case Pass::kACRefine:
        return refineAC(block, scan, table);
    }
    return orbStsErr;
  }

 private:
  OrbStatus firstDC(std::vector<Orb16s>& block, Orb32u al, const DecoderTable& table) {
    int found = 0, difference = 0;
    OrbStatus status = reader.symbol(table, found);
    if (status == orbStsNoErr && found != 0) status = reader.value(found % 16, difference);
    if (status != orbStsNoErr) return status;
    lastDC = static_cast<Orb16s>(lastDC + difference);
    block[0] = static_cast<Orb16s>(lastDC * (1 << al));
    return orbStsNoErr;
  }

  OrbStatus refineDC(std::vector<Orb16s>& block, Orb32u al) {
    std::string bit;
    const OrbStatus status = reader.fetch(1, bit);
    if (status != orbStsNoErr) return status;
    if (bit == "1") block[0] = static_cast<Orb16s>(block[0] | 1 << al);
    return orbStsNoErr;
  }

  OrbStatus run(int bits) {
    std::string more;
    const OrbStatus status = bits == 0 ? orbStsNoErr : reader.fetch(bits, more);
    if (status == orbStsNoErr) eobRun = number("1" + more);
    return status;
  }

  OrbStatus firstAC(std::vector<Orb16s>& block, const ProgressiveScan& scan,
                    const DecoderTable& table) {
    for (int k = scan.ss; eobRun < 1;) {
      int found = 0, value = 0;
      OrbStatus status = reader.symbol(table, found);
      if (status != orbStsNoErr) return status;
      if (found % 16 != 0) {
        k += found / 16;
        status = reader.value(found % 16, value);
        if (status != orbStsNoErr) return status;
        if (k > 71) return orbStsErr;
        at(block, k) = static_cast<Orb16s>(value * (1 << scan.al));
        ++k;
      } else if (found == 0xF0) {
        k += 16;
      } else {
        status = run(found / 16);
        if (status != orbStsNoErr) return status;
      }
      if (k > scan.se) return orbStsNoErr;
    }
    --eobRun;
    return orbStsNoErr;
  }

  // Corrects the coefficients other than 0 that come in front of the zero number `zeros`, or all
  // that the band has from `k` on.
  OrbStatus correct(std::vector<Orb16s>& block, const ProgressiveScan& scan, int zeros, int& k) {
    while (k <= scan.se) {
      Orb16s& coefficient = at(block, k);
      if (coefficient == 0) {
        if (zeros == 0) return orbStsNoErr;
        --zeros;
      } else {
        std::string bit;
        const OrbStatus status = reader.fetch(1, bit);
        if (status != orbStsNoErr) return status;
        const int one = 1 << scan.al;
        if (bit == "1" && (coefficient & one) == 0) {
          coefficient = static_cast<Orb16s>(coefficient + (coefficient < 0 ? -one : one));
        }
      }
      ++k;
    }
    return orbStsNoErr;
  }

  OrbStatus refineAC(std::vector<Orb16s>& block, const ProgressiveScan& scan,
                     const DecoderTable& table) {
    int k = scan.ss;
    while (eobRun == 0 && k <= scan.se) {
      int found = 0;
      OrbStatus status = reader.symbol(table, found);
      if (status != orbStsNoErr) return status;
      const bool isNew = found % 16 != 0;
      if (!isNew && found != 0xF0) {
        status = run(found / 16);
        if (status != orbStsNoErr) return status;
        break;
      }
      std::string sign;
      if (isNew) status = reader.fetch(1, sign);
      if (status == orbStsNoErr) status = correct(block, scan, found / 16, k);
      if (status != orbStsNoErr) return status;
      if (isNew) at(block, k) = static_cast<Orb16s>((sign == "1" ? 1 : -1) * (1 << scan.al));
      ++k;
    }
    if (eobRun < 1) return orbStsNoErr;
    const OrbStatus status = correct(block, scan, 64, k);
    if (status == orbStsNoErr) --eobRun;
    return status;
  }

  // Past the end of the zigzag order is the last coefficient.
  static Orb16s& at(std::vector<Orb16s>& block, int k) {
    static const std::vector<int> order = zigzag();
    return block[static_cast<size_t>(order[static_cast<size_t>(std::min(k, 63))])];
  }
};

}  // namespace orbtest

#endif
