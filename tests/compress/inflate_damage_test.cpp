// Deflate streams that are damaged, and records that are: every build does the same with them, the
// model knows what, and nothing is touched but what the host handed over.
//
// A run of a few seconds; ORB_DAMAGE_ROUNDS=1000000 in the environment asks for more.
#include <cstdlib>

#include "tests/compress/inflate_calls.h"

namespace {

using namespace orbtest;

int rounds(int usual) {
  const char* const asked = std::getenv("ORB_DAMAGE_ROUNDS");
  return asked ? std::atoi(asked) : usual;
}

// Some bits or bytes changed, dropped, doubled, or all that follows cut off.
void damage(Random& random, Bytes& bytes) {
  for (int n = random.between(1, 4); n > 0 && !bytes.empty(); --n) {
    const size_t at =
        random.between<size_t>(0, random.oneIn(2) ? (bytes.size() - 1) / 4 : bytes.size() - 1);
    const auto here = bytes.begin() + static_cast<ptrdiff_t>(at);
    switch (random.between(0, 5)) {
      case 0:
        *here = random.extreme<Orb8u>();
        break;
      case 1:
        bytes.erase(here);
        break;
      case 2:
        bytes.insert(here, random.any<Orb8u>());
        break;
      case 3:
        if (random.oneIn(4)) bytes.erase(here, bytes.end());
        break;
      default:
        *here = static_cast<Orb8u>(*here ^ 1 << random.between(0, 7));
        break;
    }
  }
}

// The whole of a route on one stream in few calls, as a host would drive it that believes
// everything.
struct Outcome {
  OrbStatus status = orbStsNoErr;
  int used = 0;
  Bytes bytes;
  Pairs pairs;

  bool operator==(const Outcome& other) const {
    return status == other.status && used == other.used && bytes == other.bytes &&
           pairs == other.pairs;
  }
};
template <class Decoder>
Outcome decode(Decoder& decoder, Route route, const Bytes& stream, size_t room) {
  Outcome outcome;
  Bytes rest = stream;
  for (int call = 0; call < 12; ++call) {
    int kind = -1;
    InflateStep step;
    if (route == Route::kBytes) {
      step = decoder.blockType(rest, kind);
      outcome.used += step.used;
      rest.erase(rest.begin(), rest.begin() + std::max(0, step.used));
      if (step.status == orbStsNoErr && kind == -1) continue;
      if (step.status == orbStsNoErr) {
        step = kind == orbLZ77BlockStored ? decoder.storedToBytes(rest, room)
                                          : decoder.toBytes(kind, rest, room);
      }
    } else {
      for (kind = 0; kind < 3; ++kind) {
        step = kind == orbLZ77BlockStored ? decoder.storedToPairs(rest, room)
                                          : decoder.toPairs(kind, rest, room);
        if (step.status != orbStsErr) break;
      }
    }
    outcome.used += step.used;
    // A damaged record may give back more than it took.
    rest.erase(rest.begin(), rest.begin() + std::max(0, step.used));
    outcome.status = step.status;
    outcome.bytes.insert(outcome.bytes.end(), step.bytes.begin(), step.bytes.end());
    outcome.pairs.insert(outcome.pairs.end(), step.pairs.begin(), step.pairs.end());
    if (step.status != orbStsNoErr && step.status != orbStsDstFull) break;
  }
  return outcome;
}

const Bytes& before() {
  static const Bytes bytes = [] {
    Random random("before");
    return randomBytes(random, 32768);
  }();
  return bytes;
}

Bytes damagedStream(Random& random) {
  static const std::vector<Bytes> sound = [] {
    Random own("sound streams");
    std::vector<Bytes> streams;
    for (int i = 0; i < 300; ++i) {
      streams.push_back(randomStream(own, own.between(1, 2), 32768).bytes);
    }
    return streams;
  }();
  Bytes stream = sound[random.between<size_t>(0, sound.size() - 1)];
  damage(random, stream);
  return stream;
}

// Slow as it is, the model sees some of the streams; the builds see all of them.
void expectModel(const TestBuild& build, Route route) {
  Random random("damage for the model");
  for (int round = rounds(150); round > 0; --round) {
    const Bytes stream = damagedStream(random);
    const size_t room = random.oneIn(3) ? random.between<size_t>(1, 40) : 3000;
    InflateModel model(before());
    Inflater inflater(build);
    inflater.setDictionary(before());
    const Outcome expected = decode(model, route, stream, room);
    const Outcome outcome = decode(inflater, route, stream, room);
    ASSERT_TRUE(outcome == expected) << round << ": " << outcome.status << " after " << outcome.used
                                     << ", " << expected.status << " after " << expected.used;
  }
}
ORB_MEANING(orbsDecodeLZ77DynamicHuffFull_8u, DamagedStreams) {
  expectModel(build, Route::kBytes);
}
ORB_MEANING(orbsDecodeLZ77DynamicHuff_8u, DamagedStreams) {
  expectModel(build, Route::kPairs);
}

TEST(InflateDamage, EveryBuildDoesTheSame) {
  Random random("damage");
  for (int round = rounds(3000); round > 0; --round) {
    const Bytes stream = damagedStream(random);
    const size_t room = random.oneIn(3) ? random.between<size_t>(1, 40) : 3000;
    for (const Route route : {Route::kBytes, Route::kPairs}) {
      Outcome expected;
      for (const TestBuild& build : runnableBuilds()) {
        Inflater inflater(build);
        const Outcome outcome = decode(inflater, route, stream, room);
        if (build.index == orb::kPx) expected = outcome;
        ASSERT_TRUE(outcome == expected) << build.tag << " in round " << round;
      }
    }
  }
}

// In the middle of a stream, where fields and tables are in use.
TEST(InflateDamage, DamagedRecords) {
  Random random("records");
  for (int round = rounds(1000); round > 0; --round) {
    const Route route = round % 2 == 0 ? Route::kBytes : Route::kPairs;
    const RandomStream stream = randomStream(random, 2, 0);
    const Bytes front(stream.bytes.begin(),
                      stream.bytes.begin() + random.between<ptrdiff_t>(
                                                 0, static_cast<ptrdiff_t>(stream.bytes.size())));
    const size_t room = random.between<size_t>(1, 40);
    // What is damaged: fields, or tables and lengths.
    const bool inTables = random.oneIn(2);
    const size_t first = inTables ? offsetof(OrbLZ77DecState, codes) : sizeof(OrbLZ77PairCursor);
    const size_t end =
        inTables ? offsetof(OrbLZ77DecState, unused) : offsetof(OrbLZ77DecState, codes);
    std::vector<std::pair<size_t, Orb8u>> changes;
    for (int n = random.between(1, inTables ? 600 : 12); n > 0; --n) {
      changes.emplace_back(random.between(first, end - 1), random.extreme<Orb8u>());
    }
    const int state = random.between(0, 11);
    const int wanted = random.between(0, 2);
    Bytes more = randomBytes(random, random.between<size_t>(0, 120));
    const Pairs pairs = randomPairs(random, 5, 32768);

    std::vector<Outcome> expected;
    for (const TestBuild& build : runnableBuilds()) {
      Inflater inflater(build, round % 8);
      decode(inflater, route, front, room);
      for (const auto& [at, byte] : changes) reinterpret_cast<Orb8u*>(inflater.record())[at] = byte;
      if (wanted < 2) {
        // So that more of the calls get somewhere.
        inflater.record()->decState = state;
        inflater.record()->blockKind = wanted;
      }
      std::vector<Outcome> outcomes;
      for (const int kind : {0, 1}) {
        for (const size_t space : {room, size_t{2000}}) {
          InflateStep step = inflater.toBytes(kind, more, space);
          outcomes.push_back({step.status, 0, step.bytes, {}});
          step = inflater.toPairs(kind, more, space);
          outcomes.push_back({step.status, 0, {}, step.pairs});
          step = inflater.expand(pairs, space);
          outcomes.push_back({step.status, step.used, step.bytes, {}});
        }
      }
      InflateStep step = inflater.storedToBytes(more, room);
      outcomes.push_back({step.status, step.used, step.bytes, {}});
      step = inflater.storedToPairs(more, room);
      outcomes.push_back({step.status, step.used, {}, step.pairs});
      step = inflater.toPairs(0, more, room, orbLZ77FlushSync);
      outcomes.push_back({step.status, step.used, {}, {}});
      outcomes.push_back(decode(inflater, route, more, room));
      if (build.index == orb::kPx) expected = outcomes;
      ASSERT_TRUE(outcomes == expected) << build.tag << " in round " << round;
    }
  }
}

}  // namespace
