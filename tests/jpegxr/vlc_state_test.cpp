// The adaptive state of coefficient coding (ITU-T T.832).
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include "tests/jpegxr/coding_host.h"
#include "tests/support/faults.h"

namespace {

using orbtest::expectChecks;
using orbtest::Fault;
using orbtest::makeRow;
using orbtest::Plane;
using orbtest::Random;
using orbtest::TestBuild;
using namespace orbtest::jxr;

std::vector<int> orderOf(const OrbiVLCState_JPEGXR& state, int scan) {
  std::vector<int> order;
  for (const orb::OrbScanRecord& record : state.scans[2 - scan]) {
    order.push_back(static_cast<int>(record.index));
  }
  return order;
}
std::vector<int64_t> weightsOf(const OrbiVLCState_JPEGXR& state, int scan) {
  std::vector<int64_t> weights;
  for (const orb::OrbScanRecord& record : state.scans[2 - scan]) weights.push_back(record.weight);
  return weights;
}

// ---- Size and start

ORB_MEANING(orbiVLCGetStateSize_JPEGXR, IsTheSameEverywhere) {
  EXPECT_EQ(ORB(orbiVLCGetStateSize_JPEGXR)(nullptr), orbStsNullPtrErr);
  Plane<Orb32s> size = makeRow<Orb32s>(1, {0, 1});
  EXPECT_EQ(ORB(orbiVLCGetStateSize_JPEGXR)(size.data()), orbStsNoErr);
  EXPECT_EQ(size.at(0), 1780);
  size.expectOutsideUntouched();
}

ORB_AGREEMENT(orbiVLCGetStateSize_JPEGXR) {
  Orb32s size = 0, expected = 0;
  ORB(orbiVLCGetStateSize_JPEGXR)(&size);
  PX(orbiVLCGetStateSize_JPEGXR)(&expected);
  EXPECT_EQ(size, expected);
}

ORB_MEANING(orbiVLCInit_JPEGXR, StandsAtTheStartTables) {
  EXPECT_EQ(ORB(orbiVLCInit_JPEGXR)(nullptr), orbStsNullPtrErr);
  Random random("start");
  for (int round = 0; round < 10; ++round) {
    State state;
    state.bytes.fillAny(random);
    std::vector<int64_t> weights[3];
    for (int scan = 0; scan < 3; ++scan) weights[scan] = weightsOf(*state.record(), scan);
    ASSERT_EQ(ORB(orbiVLCInit_JPEGXR)(state.record()), orbStsNoErr);
    state.bytes.expectOutsideUntouched();

    const OrbiVLCState_JPEGXR& record = *state.record();
    const int symbols[21] = {5, 4, 8, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7, 12, 6, 6, 12, 6, 6, 7, 7};
    for (int coder = 0; coder < 21; ++coder) {
      SCOPED_TRACE(coder);
      EXPECT_EQ(static_cast<int>(record.coders[coder].symbols), symbols[coder]);
      EXPECT_EQ(Orb32s{record.firstDiscriminant[coder]}, 0);
      EXPECT_EQ(Orb32s{record.secondDiscriminant[coder]}, 0);
      if (coder > 0 && coder < 5) continue;
      const bool canStepDown = symbols[coder] == 6 || symbols[coder] == 12;
      EXPECT_EQ(Orb32s{record.coders[coder].table}, canStepDown ? 1 : 0);
      EXPECT_EQ(Orb32s{record.coders[coder].lowerBound}, canStepDown ? -8 : INT32_MIN);
      EXPECT_EQ(Orb32s{record.coders[coder].upperBound}, 8);
    }
    EXPECT_EQ(Orb32u{record.scan}, 2u);
    const Model model;
    for (int scan = 0; scan < 3; ++scan) {
      EXPECT_EQ(orderOf(record, scan), model.scans[static_cast<size_t>(scan)].order);
      EXPECT_EQ(weightsOf(record, scan), weights[scan]);
      for (const orb::OrbScanRecord& position : record.scans[2 - scan]) {
        EXPECT_EQ(static_cast<int>(position.x), places()[position.index].first);
        EXPECT_EQ(static_cast<int>(position.y), places()[position.index].second);
      }
    }
  }
}

ORB_AGREEMENT(orbiVLCInit_JPEGXR) {
  State mine, px;
  mine.bytes.fillAny(random);
  px.bytes.copySamples(mine.bytes);
  ORB(orbiVLCInit_JPEGXR)(mine.record());
  PX(orbiVLCInit_JPEGXR)(px.record());
  EXPECT_TRUE(mine.bytes.sameBytes(px.bytes));
}

// ---- Scans

ORB_MEANING(orbiVLCScanSet_JPEGXR, ChoosesOneOfThree) {
  EXPECT_EQ(ORB(orbiVLCScanSet_JPEGXR)(nullptr, 3), orbStsNullPtrErr);
  State state;
  for (const int scan : {3, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(ORB(orbiVLCScanSet_JPEGXR)(state.record(), scan), orbStsOutOfRangeErr);
    EXPECT_EQ(Orb32u{state.record()->scan}, 2u);
  }
  for (const int scan : {0, 2, 1}) {
    EXPECT_EQ(ORB(orbiVLCScanSet_JPEGXR)(state.record(), scan), orbStsNoErr);
    EXPECT_EQ(Orb32u{state.record()->scan}, static_cast<Orb32u>(scan));
  }
}

ORB_AGREEMENT(orbiVLCScanSet_JPEGXR) {
  for (int scan = -2; scan < 5; ++scan) {
    State mine, px;
    EXPECT_EQ(ORB(orbiVLCScanSet_JPEGXR)(mine.record(), scan),
              PX(orbiVLCScanSet_JPEGXR)(px.record(), scan));
    EXPECT_TRUE(mine.bytes.sameBytes(px.bytes));
  }
}

ORB_MEANING(orbiVLCScanReset_JPEGXR, ResetsWeightsAndKeepsTheOrder) {
  EXPECT_EQ(ORB(orbiVLCScanReset_JPEGXR)(nullptr, 3), orbStsNullPtrErr);
  Random random("reset");
  State state;
  state.bytes.fillAny(random);
  for (const int scan : {-1, 3, INT32_MAX}) {
    EXPECT_EQ(ORB(orbiVLCScanReset_JPEGXR)(state.record(), scan), orbStsOutOfRangeErr);
    state.bytes.expectUntouched();
  }
  for (const int scan : {0, 1, 2}) {
    State expected;
    state.bytes.fillAny(random);
    expected.bytes.copySamples(state.bytes);
    for (int i = 0; i < 16; ++i) {
      expected.record()->scans[2 - scan][i].weight = i == 0 ? 32767 : 34u - 2u * unsigned(i);
    }
    EXPECT_EQ(ORB(orbiVLCScanReset_JPEGXR)(state.record(), scan), orbStsNoErr);
    EXPECT_TRUE(state.bytes.sameBytes(expected.bytes));
  }
}

ORB_AGREEMENT(orbiVLCScanReset_JPEGXR) {
  for (int scan = -2; scan < 5; ++scan) {
    State mine, px;
    mine.bytes.fillAny(random);
    px.bytes.copySamples(mine.bytes);
    EXPECT_EQ(ORB(orbiVLCScanReset_JPEGXR)(mine.record(), scan),
              PX(orbiVLCScanReset_JPEGXR)(px.record(), scan));
    EXPECT_TRUE(mine.bytes.sameBytes(px.bytes));
  }
}

// ---- Adapting

// A discriminant around the bounds and the limits.
int anyDiscriminant(Random& random) {
  const int around[] = {-66, -65, -64, -9, -8, 0, 8, 9, 64, 65};
  return random.oneIn(3) ? random.between(-70, 70) : around[random.between(0, 9)];
}

ORB_MEANING(orbiVLCAdapt_JPEGXR, StepsByTheDiscriminants) {
  Random random("adapt");
  State state;
  OrbiVLCState_JPEGXR& record = *state.record();
  std::vector<Coder> models;
  for (const orb::OrbCoderRecord& coder : record.coders) {
    models.emplace_back(static_cast<int>(coder.symbols));
  }
  std::set<std::pair<int, int>> met;  // coder and table
  for (int round = 0; round < 600; ++round) {
    const int kind = random.between(0, 1);
    for (int coder = 0; coder < 21; ++coder) {
      Coder& model = models[static_cast<size_t>(coder)];
      const bool hasTwo = model.symbols == 6 || model.symbols == 12;
      record.firstDiscriminant[coder] = model.below = anyDiscriminant(random);
      record.secondDiscriminant[coder] = model.above = anyDiscriminant(random);
      if (!hasTwo) model.above = model.below;
      const bool isOfKind = coder >= 13 ? kind == 1 : kind == 0 && (coder == 0 || coder >= 5);
      if (isOfKind) model.adapt();
    }
    ASSERT_EQ(ORB(orbiVLCAdapt_JPEGXR)(state.record(), kind), orbStsNoErr);
    for (int coder = 0; coder < 21; ++coder) {
      SCOPED_TRACE(coder);
      const Coder& model = models[static_cast<size_t>(coder)];
      ASSERT_EQ(Orb32s{record.coders[coder].table}, model.table);
      ASSERT_EQ(Orb32s{record.firstDiscriminant[coder]}, model.below);
      if (model.symbols == 6 || model.symbols == 12) {
        ASSERT_EQ(Orb32s{record.secondDiscriminant[coder]}, model.above);
      }
      met.insert({coder, model.table});
    }
  }
  // All tables: of runs and levels 2 each, of later indexes 4, of first ones 5.
  EXPECT_EQ(met.size(), 4u + 2 + 4 * 2 + 8 * 4 + 4 * 5);
  state.bytes.expectOutsideUntouched();
}

ORB_MEANING(orbiVLCAdapt_JPEGXR, KnowsTwoKinds) {
  State state;
  for (const int kind : {2, -1, INT32_MAX}) {
    EXPECT_EQ(ORB(orbiVLCAdapt_JPEGXR)(state.record(), kind), orbStsOutOfRangeErr);
  }
  const State fresh;
  EXPECT_TRUE(state.bytes.sameBytes(fresh.bytes));
}

ORB_AGREEMENT(orbiVLCAdapt_JPEGXR) {
  // In any state, and in records that are no state at all.
  for (int round = 0; round < 200; ++round) {
    State mine, px;
    OrbiVLCState_JPEGXR& record = *mine.record();
    for (int coder = 0; coder < 21; ++coder) {
      record.firstDiscriminant[coder] = random.between(-70, 70);
      record.secondDiscriminant[coder] = random.between(-70, 70);
    }
    if (round % 4 == 3) mine.bytes.fillAny(random);
    std::memcpy(px.bytes.data(), mine.bytes.data(), sizeof record);
    for (int step = 0; step < 3; ++step) {
      const int kind = random.between(0, 1);
      ORB(orbiVLCAdapt_JPEGXR)(mine.record(), kind);
      PX(orbiVLCAdapt_JPEGXR)(px.record(), kind);
    }
    ASSERT_TRUE(mine.bytes.sameBytes(px.bytes));
  }
}

// ---- Low-pass blocks

struct ScanCall {
  State state;
  Plane<Orb32s> src = makeRow<Orb32s>(16, {0, 1});
  Plane<Orb32s> residual = makeRow<Orb32s>(16, {0, 2});
  Plane<Orb32s> pairs = makeRow<Orb32s>(30, {0, 3});
  Plane<Orb32s> count = makeRow<Orb32s>(1, {0, 1});

  void set(const std::vector<int64_t>& values) {
    for (int i = 0; i < 16; ++i) {
      src.set(i, 0, static_cast<Orb32s>(values[static_cast<size_t>(i)]));
    }
  }
  template <class Function>
  OrbStatus run(Function* function, int modelBits) {
    return function(src.data(), static_cast<Orb32u>(modelBits), residual.data(), pairs.data(),
                    count.data(), state.record());
  }
};

ORB_MEANING(orbiVLCScan4x4DC_JPEGXR_32s, ListsLikeTheModel) {
  Random random("low-pass lists");
  ScanCall call;
  Model model;
  for (int block = 0; block < 600; ++block) {
    if (random.oneIn(50)) {
      PX(orbiVLCScanReset_JPEGXR)(call.state.record(), 2);
      model.scans[2].reset();
    }
    PX(orbiVLCScanSet_JPEGXR)(call.state.record(), random.between(0, 2));
    const std::vector<int64_t> values = randomCoefficients(random, 31);
    const int m = random.oneIn(2) ? 0 : random.between(0, 15);
    call.set(values);
    call.residual.fill([&] { return random.any<Orb32s>(); });
    const std::vector<Orb32s> before = call.residual.samples();
    ASSERT_EQ(call.run(ORB(orbiVLCScan4x4DC_JPEGXR_32s), m), orbStsNoErr);

    const std::vector<RunLevel> list = listOf(values, m, model.scans[2]);
    ASSERT_EQ(call.count.at(0), static_cast<int>(list.size()));
    for (size_t i = 0; i < list.size(); ++i) {
      ASSERT_EQ(call.pairs.at(2 * static_cast<int>(i)), list[i].run);
      ASSERT_EQ(call.pairs.at(2 * static_cast<int>(i) + 1), list[i].level);
    }
    for (size_t i = 0; i < 16; ++i) {
      const int64_t expected = m == 0 || i == 0 ? before[i] : residualOf(values[i], m, 0);
      ASSERT_EQ(call.residual.at(static_cast<int>(i)), expected) << i;
    }
    ASSERT_EQ(orderOf(*call.state.record(), 2), model.scans[2].order);
    ASSERT_EQ(weightsOf(*call.state.record(), 2), model.scans[2].weights);
    ASSERT_EQ(Orb32u{call.state.record()->scan}, 2u);
    call.src.expectUntouched();
    call.residual.expectOutsideUntouched();
    call.pairs.expectOutsideUntouched(2 * call.count.at(0), 1);
    call.count.expectOutsideUntouched();
    call.state.bytes.expectOutsideUntouched();
    call.pairs.fill([&] { return random.any<Orb32s>(); });
  }
}

ORB_MEANING(orbiVLCScan4x4DC_JPEGXR_32s, LeavesAnEmptyBlockAlone) {
  ScanCall call;
  call.set({7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(call.run(ORB(orbiVLCScan4x4DC_JPEGXR_32s), 0), orbStsNoErr);
  EXPECT_EQ(call.count.at(0), 0);
  const State fresh;
  EXPECT_TRUE(call.state.bytes.sameBytes(fresh.bytes));
}

ORB_MEANING(orbiVLCScan4x4DC_JPEGXR_32s, ChecksInOrder) {
  struct Call {
    const Orb32s* pSrc;
    Orb32u modelBits;
    Orb32s* pResidual;
    Orb32s* pRunLevel;
    Orb32s* pPairCount;
    OrbiVLCState_JPEGXR* pState;
  };
  ScanCall good;
  good.set(std::vector<int64_t>(16, 3));
  PX(orbiVLCScanSet_JPEGXR)(good.state.record(), 0);
  State expected;
  PX(orbiVLCScanSet_JPEGXR)(expected.record(), 0);
  expectChecks<Call>({{orbStsNullPtrErr, [](Call& c) { c.pState = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pSrc = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pResidual = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pRunLevel = nullptr; }},
                      {orbStsNullPtrErr, [](Call& c) { c.pPairCount = nullptr; }},
                      {orbStsOutOfRangeErr, [](Call& c) { c.modelBits = 16; }}},
                     {good.src.data(), 15, good.residual.data(), good.pairs.data(),
                      good.count.data(), good.state.record()},
                     [&](const Call& c) {
                       return ORB(orbiVLCScan4x4DC_JPEGXR_32s)(c.pSrc, c.modelBits, c.pResidual,
                                                               c.pRunLevel, c.pPairCount, c.pState);
                     });
  good.residual.expectUntouched();
  good.pairs.expectUntouched();
  good.count.expectUntouched();
  EXPECT_TRUE(good.state.bytes.sameBytes(expected.bytes));
}

ORB_AGREEMENT(orbiVLCScan4x4DC_JPEGXR_32s) {
  ScanCall mine, px;
  for (int block = 0; block < 400; ++block) {
    // Now and then in a record that is no state.
    if (random.oneIn(20)) {
      mine.state.bytes.fillAny(random);
      px.state.bytes.copySamples(mine.state.bytes);
    }
    const std::vector<int64_t> values = randomCoefficients(random, 31);
    mine.set(values);
    px.set(values);
    const int m = random.between(0, 15);
    mine.run(ORB(orbiVLCScan4x4DC_JPEGXR_32s), m);
    px.run(PX(orbiVLCScan4x4DC_JPEGXR_32s), m);
    ASSERT_TRUE(mine.residual.sameBytes(px.residual));
    ASSERT_TRUE(mine.pairs.sameBytes(px.pairs));
    ASSERT_TRUE(mine.count.sameBytes(px.count));
    ASSERT_TRUE(mine.state.bytes.sameBytes(px.state.bytes));
  }
}

}  // namespace
