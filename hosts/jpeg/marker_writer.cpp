#include "hosts/jpeg/marker_writer.h"

namespace orbhost::jpeg {

void MarkerWriter::word(int value) {
  byte(value >> 8);
  byte(value & 255);
}

void MarkerWriter::marker(int code) {
  byte(0xFF);
  byte(code);
}

void MarkerWriter::segment(int code, int length) {
  marker(code);
  word(length + 2);
}

void MarkerWriter::jfif() {
  segment(kApp0, 14);
  for (const char c : {'J', 'F', 'I', 'F', '\0'}) byte(c);
  word(0x0101);
  byte(0);  // the next two are an aspect ratio
  word(1);
  word(1);
  byte(0);  // no thumbnail
  byte(0);
}

void MarkerWriter::adobe(int transform) {
  segment(kApp14, 12);
  for (const char c : {'A', 'd', 'o', 'b', 'e'}) byte(c);
  word(100);  // version
  word(0);    // the next two are flags
  word(0);
  byte(transform);
}

void MarkerWriter::quantisation(int table, const std::array<uint8_t, 64>& divisors) {
  segment(kDqt, 1 + 64);
  byte(table);
  for (const uint8_t divisor : divisors) byte(divisor);
}

void MarkerWriter::huffman(int tableClass, int table, const HuffmanTable& codes) {
  const int size = codes.size();
  segment(kDht, 1 + 16 + size);
  byte(tableClass << 4 | table);
  for (const uint8_t count : codes.counts) byte(count);
  for (int i = 0; i < size; ++i) byte(codes.symbols[i]);
}

void MarkerWriter::frame(const Frame& frame) {
  segment(frame.marker, 6 + 3 * static_cast<int>(frame.components.size()));
  byte(frame.precision);
  word(frame.height);
  word(frame.width);
  byte(static_cast<int>(frame.components.size()));
  for (const FrameComponent& component : frame.components) {
    byte(component.id);
    byte(component.h << 4 | component.v);
    byte(component.table);
  }
}

void MarkerWriter::restartInterval(int mcus) {
  segment(kDri, 2);
  word(mcus);
}

void MarkerWriter::scan(const Frame& frame, const std::vector<ScanComponent>& components,
                        const Selection& selection) {
  segment(kSos, 4 + 2 * static_cast<int>(components.size()));
  byte(static_cast<int>(components.size()));
  for (const ScanComponent& component : components) {
    byte(frame.components[component.component].id);
    byte(component.dcTable << 4 | component.acTable);
  }
  byte(selection.ss);
  byte(selection.se);
  byte(selection.ah << 4 | selection.al);
}

}  // namespace orbhost::jpeg
