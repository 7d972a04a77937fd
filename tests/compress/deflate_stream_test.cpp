// Whole streams, as hosts make them in all ways, read by zlib.
#include <zlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/compress/deflate_encoder.h"

namespace {

using orbtest::anyText;
using orbtest::Bytes;
using orbtest::Encoder;
using orbtest::Pairs;
using orbtest::Random;
using orbtest::slice;
using orbtest::TestBuild;

// The text of a raw stream (-15) or of a gzip file (31), which has to end where the bytes end.
// Bytes behind the last flush of an open stream are not wanted: then the text so far will do.
Bytes inflated(const Bytes& bytes, int windowBits, const Bytes& dictionary = {},
               bool isOpen = false) {
  z_stream stream = {};
  EXPECT_EQ(inflateInit2(&stream, windowBits), Z_OK);
  if (!dictionary.empty()) {
    EXPECT_EQ(
        inflateSetDictionary(&stream, dictionary.data(), static_cast<uInt>(dictionary.size())),
        Z_OK);
  }
  Bytes text(1 << 20);
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = text.data();
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_SYNC_FLUSH), isOpen ? Z_OK : Z_STREAM_END)
      << (stream.msg ? stream.msg : "no fault");
  EXPECT_EQ(stream.avail_in, 0u);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return text;
}

enum class Choice { kSelected, kFixed, kDynamic, kStored };

// A host that makes each part of a text a list of pairs, and of it a block.
struct Host {
  Encoder encoder;
  Choice choice = Choice::kSelected;
  size_t pairRoom = 65280;
  size_t room = 1 << 20;
  Bytes stream;

  Host(const TestBuild& build, int level, int checksumKind = 0)
      : encoder(build, level, checksumKind) {}

  // Until it is coded. With room for few pairs it takes several blocks, and only the last flushes.
  void put(Bytes text, int flush) {
    for (;;) {
      encoder.setStatus(orbLZ77PhaseMatch);
      const Encoder::Made made = encoder.makePairs(text, pairRoom, flush);
      const bool isLast = made.used == static_cast<int>(text.size());
      const Bytes coded = slice(text, 0, static_cast<size_t>(made.used));
      text.erase(text.begin(), text.begin() + made.used);
      encoder.setStatus(orbLZ77PhaseCode);
      const OrbStatus status = putBlock(made.pairs, coded, isLast ? flush : orbLZ77FlushNone);
      EXPECT_EQ(status, isLast && flush == orbLZ77FlushFinish ? orbStsStreamEnd : orbStsNoErr);
      if (isLast || testing::Test::HasFailure()) return;
    }
  }
  void putTrailer() {
    encoder.setStatus(orbLZ77PhaseFinal);
    const TestBuild& build = encoder.build;
    Orb8u bytes[8], *at = bytes;
    Orb32s left = 8;
    EXPECT_EQ(ORB(orbsEncodeLZ77Flush_8u)(&at, &left, encoder.record()), orbStsNoErr);
    stream.insert(stream.end(), bytes, at);
  }

 private:
  OrbStatus putBlock(Pairs pairs, Bytes coded, int flush) {
    int mode = encoder.select(pairs);
    if (choice != Choice::kSelected) {
      mode = choice == Choice::kFixed     ? orbLZ77BlockFixed
             : choice == Choice::kDynamic ? orbLZ77BlockDynamic
                                          : orbLZ77BlockStored;
    }
    for (;;) {
      const Encoder::Step step = mode == orbLZ77BlockFixed     ? encoder.fixed(pairs, room, flush)
                                 : mode == orbLZ77BlockDynamic ? encoder.dynamic(pairs, room, flush)
                                                               : encoder.stored(coded, room, flush);
      stream.insert(stream.end(), step.written.begin(), step.written.end());
      if (step.status != orbStsDstFull || testing::Test::HasFailure()) return step.status;
      const ptrdiff_t done = static_cast<ptrdiff_t>(step.pairs);
      if (mode == orbLZ77BlockStored) {
        coded.erase(coded.begin(), coded.begin() + done);
      } else {
        pairs.erase(pairs.begin(), pairs.begin() + done);
      }
    }
  }
};

const Choice kChoices[] = {Choice::kSelected, Choice::kFixed, Choice::kDynamic, Choice::kStored};

ORB_MEANING(orbsEncodeLZ77_8u, ZlibReadsTheStream) {
  Random random("streams");
  for (int round = 0; round < 30; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    Host host(build, round % 3);
    host.choice = kChoices[random.between(0, 3)];
    if (random.oneIn(2)) host.pairRoom = random.between<size_t>(1, 500);
    if (random.oneIn(2)) host.room = random.between<size_t>(1, 100);
    Bytes text;
    for (int part = random.between(0, 4); part >= 0; --part) {
      const Bytes more = anyText(random, random.between<size_t>(0, 3000));
      host.put(more, part == 0 ? orbLZ77FlushFinish : random.between(0, 1));
      text.insert(text.end(), more.begin(), more.end());
    }
    ASSERT_EQ(inflated(host.stream, -15), text);
  }
}

// Longer than the window, with a dictionary in front.
ORB_MEANING(orbsEncodeLZ77SetDictionary_8u, ZlibReadsTheStream) {
  Random random("dictionary streams");
  for (const size_t size : {3u, 300u, 32768u, 50000u}) {
    for (int level = 0; level < 3; ++level) {
      const Bytes dictionary = anyText(random, size);
      Bytes text = slice(dictionary, size / 3, 30000);
      const Bytes more = anyText(random, 90000);
      text.insert(text.end(), more.begin(), more.end());
      Host host(build, level);
      ASSERT_EQ(ORB(orbsEncodeLZ77SetDictionary_8u)(dictionary.data(), static_cast<Orb32s>(size),
                                                    host.encoder.record()),
                orbStsNoErr);
      host.put(text, orbLZ77FlushFinish);
      ASSERT_EQ(inflated(host.stream, -15, dictionary), text);
    }
  }
}

// Behind a flush all of the text is there, while the stream stays open.
ORB_MEANING(orbsEncodeLZ77DynamicHuff_8u, ZlibReadsUpToAFlush) {
  Random random("flushes");
  for (const Choice choice : kChoices) {
    // A stored block has no marker, and ends at a byte all the same.
    Host host(build, orbLZ77LevelLazy);
    host.choice = choice;
    Bytes text;
    for (int part = 0; part < 5; ++part) {
      const Bytes more = anyText(random, random.between<size_t>(1, 2000));
      host.put(more, orbLZ77FlushSync);
      text.insert(text.end(), more.begin(), more.end());
      ASSERT_EQ(inflated(host.stream, -15, {}, true), text);
    }
  }
}

// Each part is read without those in front of it.
ORB_MEANING(orbsEncodeLZ77FixedHuff_8u, ZlibReadsFromARestart) {
  Random random("restarts");
  for (int level = 0; level < 3; ++level) {
    Host host(build, level);
    for (int part = 0; part < 6; ++part) {
      host.choice = kChoices[part % 3];
      const Bytes text = anyText(random, random.between<size_t>(1, 32768));
      host.stream.clear();
      host.put(text, orbLZ77FlushRestart);
      ASSERT_EQ(inflated(host.stream, -15, {}, true), text);
    }
  }
}

// A gzip file (RFC 1952): zlib holds the checksum and the size in the trailer against the text.
ORB_MEANING(orbsEncodeLZ77Flush_8u, ZlibReadsTheTrailer) {
  Random random("gzip");
  for (int level = 0; level < 3; ++level) {
    for (const size_t size : {0u, 1u, 1000u, 100000u}) {
      const Bytes text = anyText(random, size);
      Host host(build, level, orbLZ77ChecksumCRC32);
      host.stream = {0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 255};
      host.put(text, orbLZ77FlushFinish);
      host.putTrailer();
      ASSERT_EQ(inflated(host.stream, 31), text);
    }
  }
}

// Codes at their limits, from frequencies that grow as the Fibonacci numbers.
ORB_MEANING(orbsEncodeLZ77SelectHuffMode_8u, ZlibReadsLimitedCodes) {
  Bytes text;
  size_t count = 1, before = 0;
  for (int i = 0; i < 23; ++i) {
    text.insert(text.end(), count, static_cast<Orb8u>(i * 9));
    before = std::exchange(count, count + before);
  }
  Pairs pairs;
  for (const Orb8u byte : text) pairs.push_back({byte, 0});
  Encoder encoder(build);
  encoder.record()->lastFlush = orbLZ77FlushFinish;
  encoder.setStatus(orbLZ77PhaseCode);
  ASSERT_EQ(encoder.select(pairs), orbLZ77BlockDynamic);
  const Encoder::Step step = encoder.dynamic(pairs, 1 << 20, orbLZ77FlushFinish);
  ASSERT_EQ(step.status, orbStsStreamEnd);
  ASSERT_EQ(inflated(step.written, -15), text);
}

}  // namespace
