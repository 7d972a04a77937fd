#include "hosts/j2k/decode.h"

#include <string>

#include "hosts/j2k/budget.h"
#include "hosts/j2k/codestream.h"
#include "hosts/j2k/layout.h"

namespace orbhost::j2k {

namespace {

constexpr int kMostBits = 31;  // of a sample

std::vector<Component> makeComponents(const PictureSize& size, int reduction, Budget& budget) {
  std::vector<Component> components;
  for (const ComponentSize& component : size.components) {
    if (component.precision > kMostBits) {
      throw Error("samples of " + std::to_string(component.precision) + " bits are not supported");
    }
    const Rect whole = componentRect({size.x0, size.y0, size.x1, size.y1}, component);
    const Rect rect = reducedRect(whole, reduction);
    budget.takeSamples(uint64_t{rect.width()} * rect.height());
    components.push_back({component, rect, {}});
  }
  for (Component& component : components) {
    component.samples.resize(static_cast<size_t>(component.rect.width()) * component.rect.height());
  }
  return components;
}

}  // namespace

Decoded decodeJ2k(ByteView file, const DecodeOptions& options) {
  Decoded decoded;
  Damage& damage = decoded.damage;
  if (file.size == 0) throw Error("the file is empty");
  if (isJp2(file)) {
    decoded.jp2 = readJp2(file, damage);
  } else if (file.size >= 2 && file[0] == 0xFF && file[1] == 0x4F) {
    decoded.jp2.codestreamEnd = file.size;
  } else {
    throw Error("neither a JP2 file nor a codestream of JPEG 2000");
  }

  const Codestream codestream(file, decoded.jp2.codestreamFirst, decoded.jp2.codestreamEnd, damage);
  Budget budget(file.size, options.freeSamples);
  decoded.components = makeComponents(codestream.size(), options.reduce, budget);
  TileMemory memory;
  bool isAnyDecoded = false;
  for (uint32_t tile = 0; tile < codestream.tileCount(); ++tile) {
    const std::string name = "tile " + std::to_string(tile);
    if (codestream.tile(tile).bodies.empty()) {
      damage.note(name + " is missing");
      continue;
    }
    try {
      decodeTile(codestream, tile, {options.reduce, options.layers}, decoded.components, memory,
                 budget, damage);
      isAnyDecoded = true;
    } catch (const Error& error) {
      damage.note(name + ": " + error.what());
    }
  }
  if (!isAnyDecoded) throw Error(damage.first());
  return decoded;
}

}  // namespace orbhost::j2k
