// The records of deflate: size, allocation, the pair cursor and the phase.
#include <cstdint>
#include <vector>

#include "frame/memory.h"
#include "tests/compress/deflate_encoder.h"
#include "tests/support/no_memory.h"

namespace {

using orbtest::Bytes;
using orbtest::Encoder;
using orbtest::GuardedBytes;
using orbtest::MatchModel;
using orbtest::pairOf;
using orbtest::Random;
using orbtest::TestBuild;

constexpr int kPairs = 65280;

// ---- The encoder's record

ORB_MEANING(orbsEncodeLZ77GetSize_8u, Size) {
  Orb32s size = 0;
  EXPECT_EQ(ORB(orbsEncodeLZ77GetSize_8u)(nullptr), orbStsNullPtrErr);
  EXPECT_EQ(ORB(orbsEncodeLZ77GetSize_8u)(&size), orbStsNoErr);
  EXPECT_EQ(size, 598508);
}

struct Cursor {
  OrbLZ77Pair* pairs;
  Orb32s count, left;
};
Cursor cursorOf(Encoder& encoder) {
  const TestBuild& build = encoder.build;
  Cursor cursor = {};
  EXPECT_EQ(
      ORB(orbsEncodeLZ77GetPairs_8u)(&cursor.pairs, &cursor.count, &cursor.left, encoder.record()),
      orbStsNoErr);
  return cursor;
}
Orb32s phaseOf(Encoder& encoder) {
  const TestBuild& build = encoder.build;
  Orb32s phase = -77;
  EXPECT_EQ(ORB(orbsEncodeLZ77GetStatus_8u)(&phase, encoder.record()), orbStsNoErr);
  return phase;
}

// Whatever the memory held before.
void expectNew(Encoder& encoder) {
  OrbLZ77EncState& record = *encoder.record();
  const Cursor cursor = cursorOf(encoder);
  EXPECT_EQ(reinterpret_cast<Orb8u*>(cursor.pairs),
            reinterpret_cast<Orb8u*>(&record) + offsetof(OrbLZ77EncState, pairs));
  EXPECT_EQ(cursor.count, 0);
  EXPECT_EQ(cursor.left, kPairs);
  EXPECT_EQ(phaseOf(encoder), orbLZ77PhaseInit);
  EXPECT_EQ(record.blockState, 0);
  MatchModel model(record.level);
  Random random("new");
  const Bytes text = orbtest::anyText(random, 1000);
  EXPECT_EQ(encoder.makePairs(text, kPairs, 0).pairs, model.makePairs(text, kPairs, 0).pairs);
}

ORB_MEANING(orbsEncodeLZ77Init_8u, MakesANewRecord) {
  EXPECT_EQ(ORB(orbsEncodeLZ77Init_8u)(1, 1, nullptr), orbStsNullPtrErr);
  for (int level = -1; level <= 3; ++level) {
    for (const int kind : {0, 1, 2, 3, -5}) {
      Encoder encoder(build, level, kind);
      auto* const bytes = reinterpret_cast<Orb8u*>(encoder.record());
      for (size_t i = 0; i < sizeof(OrbLZ77EncState); ++i)
        bytes[i] = static_cast<Orb8u>(i * 37 + 1);
      EXPECT_EQ(ORB(orbsEncodeLZ77Init_8u)(level, kind, encoder.record()), orbStsNoErr);
      EXPECT_EQ(encoder.record()->level, level == 0 || level == 2 ? level : 1);
      EXPECT_EQ(encoder.record()->checksumKind, kind);
      EXPECT_EQ(encoder.record()->checksum, 0u);
      expectNew(encoder);
    }
  }
}

ORB_MEANING(orbsEncodeLZ77Init_8u, OtherLevelsAreTheChain) {
  Random random("levels");
  const Bytes text = orbtest::anyText(random, 2000);
  Encoder chain(build, orbLZ77LevelChain);
  const orbtest::Pairs pairs = chain.makePairs(text, kPairs, 0).pairs;
  for (const int level : {7, -1, INT32_MAX, INT32_MIN}) {
    Encoder encoder(build, level);
    EXPECT_EQ(encoder.makePairs(text, kPairs, 0).pairs, pairs) << level;
  }
}

ORB_MEANING(orbsEncodeLZ77InitAlloc_8u, MakesARecord) {
  EXPECT_EQ(ORB(orbsEncodeLZ77InitAlloc_8u)(1, 1, nullptr), orbStsNullPtrErr);
  OrbLZ77EncState* record = nullptr;
  ASSERT_EQ(ORB(orbsEncodeLZ77InitAlloc_8u)(2, 1, &record), orbStsNoErr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(record) % 64, 0u);
  EXPECT_EQ(record->level, 2);
  EXPECT_EQ(record->checksumKind, 1);
  Encoder encoder(build, 2, 1);
  const auto* const bytes = reinterpret_cast<Orb8u*>(record);
  const Bytes expected = encoder.blockImage();
  EXPECT_TRUE(std::equal(bytes + sizeof(uint64_t), bytes + offsetof(OrbLZ77EncState, prev),
                         expected.begin()));
  EXPECT_EQ(record->head.at[0], -32768);
  EXPECT_EQ(record->prev.at[32767], -32768);
  ORB(orbsLZ77Free_8u)(record);
}

ORB_MEANING(orbsEncodeLZ77InitAlloc_8u, NoMemory) {
  orbtest::expectWithoutMemory([&] {
    OrbLZ77EncState* const unset = reinterpret_cast<OrbLZ77EncState*>(uintptr_t{64});
    OrbLZ77EncState* record = unset;
    const OrbStatus status = ORB(orbsEncodeLZ77InitAlloc_8u)(1, 1, &record);
    return status == orbStsMemAllocErr && record == unset;
  });
}

ORB_MEANING(orbsLZ77Free_8u, ReleasesWhatTheLibraryAllocated) {
  ORB(orbsLZ77Free_8u)(nullptr);
  // In all, more than 32 bits can address.
  for (int i = 0; i < 8000; ++i) {
    void* const memory = orb::orbMalloc(sizeof(OrbLZ77EncState));
    ASSERT_NE(memory, nullptr);
    ORB(orbsLZ77Free_8u)(memory);
  }
}

ORB_MEANING(orbsEncodeLZ77Reset_8u, KeepsWhatItKeeps) {
  EXPECT_EQ(ORB(orbsEncodeLZ77Reset_8u)(nullptr), orbStsNullPtrErr);
  Random random("reset");
  for (int level = 0; level < 3; ++level) {
    Encoder encoder(build, level, orbLZ77ChecksumCRC32);
    OrbLZ77EncState& record = *encoder.record();
    const Bytes text = orbtest::anyText(random, 70000);
    encoder.makePairs(text, kPairs, orbLZ77FlushFinish);
    encoder.setStatus(orbLZ77PhaseCode);
    encoder.select({pairOf(1, 0), pairOf(3, 1)});
    encoder.dynamic({pairOf(1, 0), pairOf(3, 1)}, 3, orbLZ77FlushSync);
    record.syncBytesLeft = 3;
    record.tailIndex = 2;
    record.cursor.pairCount = 5;
    record.cursor.phase = 99;
    ASSERT_EQ(record.headerReady, 1);
    const Bytes chains(reinterpret_cast<Orb8u*>(&record.prev),
                       reinterpret_cast<Orb8u*>(&record.prev) + sizeof record.prev);

    EXPECT_EQ(ORB(orbsEncodeLZ77Reset_8u)(&record), orbStsNoErr);
    EXPECT_EQ(record.level, level);
    EXPECT_EQ(record.checksumKind, orbLZ77ChecksumCRC32);
    EXPECT_EQ(phaseOf(encoder), 99);
    EXPECT_EQ(record.blockState, 3);
    EXPECT_EQ(record.headerReady, 1);
    EXPECT_TRUE(std::equal(chains.begin(), chains.end(), reinterpret_cast<Orb8u*>(&record.prev)));
    const Cursor cursor = cursorOf(encoder);
    EXPECT_EQ(cursor.count, 0);
    EXPECT_EQ(cursor.left, kPairs);
    EXPECT_EQ(record.checksum, 0u);
    EXPECT_EQ(record.srcLeft, 0);
    EXPECT_EQ(record.lastFlush, 0);
    EXPECT_EQ(record.position, 0);
    EXPECT_EQ(record.bitCount, 0);
    EXPECT_EQ(record.selectedMode, 0);
    EXPECT_EQ(record.headerLen, 0);
    EXPECT_EQ(record.headerSent, 0);
    EXPECT_EQ(record.syncBytesLeft, 0);
    EXPECT_EQ(record.tailIndex, 0);
    // The text of before is forgotten.
    MatchModel model(level);
    EXPECT_EQ(encoder.makePairs(text, kPairs, 0).pairs, model.makePairs(text, kPairs, 0).pairs);
  }
}

// ---- The pair cursor and the phase

// The twins of the encoder and the decoder have the same text but for the record's type.
template <class Record, class Get, class Set, class GetPhase>
void expectAccessors(Record* record, Get* get, Set* set, GetPhase* getPhase) {
  OrbLZ77Pair list[2], *pairs = nullptr;
  Orb32s count = 77, left = 77, phase = 77;
  EXPECT_EQ(get(nullptr, &count, &left, record), orbStsNullPtrErr);
  EXPECT_EQ(get(&pairs, nullptr, &left, record), orbStsNullPtrErr);
  EXPECT_EQ(get(&pairs, &count, nullptr, record), orbStsNullPtrErr);
  EXPECT_EQ(get(&pairs, &count, &left, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(set(nullptr, 1, 2, record), orbStsNullPtrErr);
  EXPECT_EQ(set(list, 1, 2, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(getPhase(nullptr, record), orbStsNullPtrErr);
  EXPECT_EQ(getPhase(&phase, nullptr), orbStsNullPtrErr);
  EXPECT_EQ(pairs, nullptr);
  EXPECT_EQ(count, 77);
  EXPECT_EQ(left, 77);
  EXPECT_EQ(phase, 77);

  record->cursor.phase = -5;
  EXPECT_EQ(set(list + 1, -3, INT32_MAX, record), orbStsNoErr);
  EXPECT_EQ(get(&pairs, &count, &left, record), orbStsNoErr);
  EXPECT_EQ(getPhase(&phase, record), orbStsNoErr);
  EXPECT_EQ(pairs, list + 1);
  EXPECT_EQ(count, -3);
  EXPECT_EQ(left, INT32_MAX);
  EXPECT_EQ(phase, -5);
}
template <class Get, class Set, class GetPhase>
void expectDecoderAccessors(Get* get, Set* set, GetPhase* getPhase) {
  Bytes memory(sizeof(OrbLZ77DecState) + 1);
  expectAccessors(reinterpret_cast<OrbLZ77DecState*>(memory.data() + 1), get, set, getPhase);
}

ORB_MEANING(orbsEncodeLZ77GetPairs_8u, Cursor) {
  Encoder encoder(build);
  expectAccessors(encoder.record(), ORB(orbsEncodeLZ77GetPairs_8u), ORB(orbsEncodeLZ77SetPairs_8u),
                  ORB(orbsEncodeLZ77GetStatus_8u));
}
ORB_MEANING(orbsEncodeLZ77SetPairs_8u, Cursor) {
  // The list of a new record has room for all its pairs.
  Encoder encoder(build);
  const Cursor cursor = cursorOf(encoder);
  for (int i = 0; i < kPairs; ++i) {
    reinterpret_cast<Orb8u*>(cursor.pairs)[i * 4] = static_cast<Orb8u>(i);
  }
  expectAccessors(encoder.record(), ORB(orbsEncodeLZ77GetPairs_8u), ORB(orbsEncodeLZ77SetPairs_8u),
                  ORB(orbsEncodeLZ77GetStatus_8u));
}
ORB_MEANING(orbsEncodeLZ77GetStatus_8u, Phase) {
  Encoder encoder(build);
  expectAccessors(encoder.record(), ORB(orbsEncodeLZ77GetPairs_8u), ORB(orbsEncodeLZ77SetPairs_8u),
                  ORB(orbsEncodeLZ77GetStatus_8u));
}
ORB_MEANING(orbsDecodeLZ77GetPairs_8u, Cursor) {
  expectDecoderAccessors(ORB(orbsDecodeLZ77GetPairs_8u), ORB(orbsDecodeLZ77SetPairs_8u),
                         ORB(orbsDecodeLZ77GetStatus_8u));
}
ORB_MEANING(orbsDecodeLZ77SetPairs_8u, Cursor) {
  expectDecoderAccessors(ORB(orbsDecodeLZ77GetPairs_8u), ORB(orbsDecodeLZ77SetPairs_8u),
                         ORB(orbsDecodeLZ77GetStatus_8u));
}
ORB_MEANING(orbsDecodeLZ77GetStatus_8u, Phase) {
  expectDecoderAccessors(ORB(orbsDecodeLZ77GetPairs_8u), ORB(orbsDecodeLZ77SetPairs_8u),
                         ORB(orbsDecodeLZ77GetStatus_8u));
}

ORB_MEANING(orbsEncodeLZ77SetStatus_8u, MovesTheList) {
  const auto function = ORB(orbsEncodeLZ77SetStatus_8u);
  EXPECT_EQ(function(orbLZ77PhaseCode, nullptr), orbStsNullPtrErr);
  Encoder encoder(build);
  OrbLZ77Pair list[9];
  ORB(orbsEncodeLZ77SetPairs_8u)(list + 3, 7, 2, encoder.record());
  // What was filled is to be coded.
  EXPECT_EQ(function(orbLZ77PhaseCode, encoder.record()), orbStsNoErr);
  EXPECT_EQ(phaseOf(encoder), orbLZ77PhaseCode);
  EXPECT_EQ(encoder.record()->blockState, 2);
  EXPECT_EQ(cursorOf(encoder).pairs, list + 3);
  EXPECT_EQ(cursorOf(encoder).count, 0);
  EXPECT_EQ(cursorOf(encoder).left, 7);
  // Other values are stored, and that is all.
  for (const int phase : std::vector<int>{orbLZ77PhaseInit, orbLZ77PhaseFinal, 4, -1, INT32_MIN}) {
    encoder.record()->blockState = 4;
    encoder.record()->cursor.phase = phase;
    const Bytes expected = encoder.image();
    encoder.record()->cursor.phase = orbLZ77PhaseCode;
    EXPECT_EQ(function(phase, encoder.record()), orbStsNoErr);
    EXPECT_EQ(encoder.image(), expected);
  }
  // The list is empty again.
  EXPECT_EQ(function(orbLZ77PhaseMatch, encoder.record()), orbStsNoErr);
  EXPECT_EQ(encoder.record()->blockState, 4);
  EXPECT_EQ(cursorOf(encoder).pairs, list + 3);
  EXPECT_EQ(cursorOf(encoder).count, 0);
  EXPECT_EQ(cursorOf(encoder).left, kPairs);
}

// ---- Agreement

// The same record from each build, byte for byte.
template <class Act>
void expectSameRecords(const TestBuild& build, Random& random, Act act) {
  for (int round = 0; round < 10; ++round) {
    const int level = random.between(-1, 3), kind = random.between(-1, 3);
    Encoder ours(build, level, kind), theirs(orbtest::runnableBuilds()[0], level, kind);
    for (OrbLZ77EncState* record : {ours.record(), theirs.record()}) {
      record->position = 5;
      record->headerLen = 7;
      record->headerReady = 1;
      record->cursor.pairCount = round;
    }
    theirs.copyFrom(ours);
    act(ours, theirs);
    ASSERT_EQ(ours.image(), theirs.image());
  }
}
ORB_AGREEMENT(orbsEncodeLZ77GetSize_8u) {
  Orb32s ours = 0, theirs = 1;
  EXPECT_EQ(ORB(orbsEncodeLZ77GetSize_8u)(&ours), PX(orbsEncodeLZ77GetSize_8u)(&theirs));
  EXPECT_EQ(ours, theirs);
}
ORB_AGREEMENT(orbsEncodeLZ77Init_8u) {
  expectSameRecords(build, random, [&](Encoder& ours, Encoder& theirs) {
    const int level = random.between(-1, 3);
    EXPECT_EQ(ORB(orbsEncodeLZ77Init_8u)(level, 2, ours.record()),
              PX(orbsEncodeLZ77Init_8u)(level, 2, theirs.record()));
  });
}
ORB_AGREEMENT(orbsEncodeLZ77InitAlloc_8u) {
  OrbLZ77EncState *ours = nullptr, *theirs = nullptr;
  ASSERT_EQ(ORB(orbsEncodeLZ77InitAlloc_8u)(1, 2, &ours),
            PX(orbsEncodeLZ77InitAlloc_8u)(1, 2, &theirs));
  EXPECT_EQ(std::memcmp(&ours->level, &theirs->level,
                        offsetof(OrbLZ77EncState, window) - offsetof(OrbLZ77EncState, level)),
            0);
  ORB(orbsLZ77Free_8u)(ours);
  PX(orbsLZ77Free_8u)(theirs);
}
ORB_AGREEMENT(orbsLZ77Free_8u) {
  // What one build allocates, another may release.
  OrbLZ77EncState* record = nullptr;
  ASSERT_EQ(PX(orbsEncodeLZ77InitAlloc_8u)(1, 2, &record), orbStsNoErr);
  ORB(orbsLZ77Free_8u)(record);
}
ORB_AGREEMENT(orbsEncodeLZ77Reset_8u) {
  expectSameRecords(build, random, [&](Encoder& ours, Encoder& theirs) {
    EXPECT_EQ(ORB(orbsEncodeLZ77Reset_8u)(ours.record()),
              PX(orbsEncodeLZ77Reset_8u)(theirs.record()));
  });
}
ORB_AGREEMENT(orbsEncodeLZ77SetStatus_8u) {
  expectSameRecords(build, random, [&](Encoder& ours, Encoder& theirs) {
    const int phase = random.between(-1, 4);
    EXPECT_EQ(ORB(orbsEncodeLZ77SetStatus_8u)(phase, ours.record()),
              PX(orbsEncodeLZ77SetStatus_8u)(phase, theirs.record()));
  });
}

// What one build stores, another reads.
template <class Record, class Get, class Set, class GetPhase>
void expectSameAccessors(Record* record, Get* get, Set* set, GetPhase* getPhase) {
  OrbLZ77Pair list[1], *pairs = nullptr;
  Orb32s count = 0, left = 0, phase = 0;
  record->cursor.phase = 3;
  EXPECT_EQ(set(list, 4, 5, record), orbStsNoErr);
  EXPECT_EQ(get(&pairs, &count, &left, record), orbStsNoErr);
  EXPECT_EQ(getPhase(&phase, record), orbStsNoErr);
  EXPECT_EQ(pairs, list);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(left, 5);
  EXPECT_EQ(phase, 3);
}
#define ORB_SAME_ACCESSORS(kind, Record, get, set, getPhase)                                      \
  Bytes memory(sizeof(Record));                                                                   \
  expectSameAccessors(reinterpret_cast<Record*>(memory.data()), get(orbs##kind##LZ77GetPairs_8u), \
                      set(orbs##kind##LZ77SetPairs_8u), getPhase(orbs##kind##LZ77GetStatus_8u))
ORB_AGREEMENT(orbsEncodeLZ77GetPairs_8u) {
  ORB_SAME_ACCESSORS(Encode, OrbLZ77EncState, ORB, PX, PX);
}
ORB_AGREEMENT(orbsEncodeLZ77SetPairs_8u) {
  ORB_SAME_ACCESSORS(Encode, OrbLZ77EncState, PX, ORB, PX);
}
ORB_AGREEMENT(orbsEncodeLZ77GetStatus_8u) {
  ORB_SAME_ACCESSORS(Encode, OrbLZ77EncState, PX, PX, ORB);
}
ORB_AGREEMENT(orbsDecodeLZ77GetPairs_8u) {
  ORB_SAME_ACCESSORS(Decode, OrbLZ77DecState, ORB, PX, PX);
}
ORB_AGREEMENT(orbsDecodeLZ77SetPairs_8u) {
  ORB_SAME_ACCESSORS(Decode, OrbLZ77DecState, PX, ORB, PX);
}
ORB_AGREEMENT(orbsDecodeLZ77GetStatus_8u) {
  ORB_SAME_ACCESSORS(Decode, OrbLZ77DecState, PX, PX, ORB);
}

}  // namespace
