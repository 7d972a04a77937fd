#include "hosts/jpeg/quantisation.h"

#include "hosts/jpeg/tables.h"

namespace orbhost::jpeg {

ForwardTables makeForwardTables(const std::array<uint8_t, 64>& divisors) {
  Orb16u nearest[64];
  legacy90orbiQuantFwdTableInit_JPEG_8u16u(divisors.data(), nearest);
  ForwardTables tables;
  for (int k = 0; k < 64; ++k) {
    // Reciprocals just above and just below the true ones. A divisor of 1 has no middle.
    const int divisor = divisors[k];
    tables.away[kZigzag[k]] = static_cast<Orb16u>(32768 / divisor + (divisor > 1));
    tables.towards[kZigzag[k]] = static_cast<Orb16u>(32767 / divisor + (divisor == 1));
  }
  tables.away[0] = tables.towards[0] = nearest[0];
  return tables;
}

}  // namespace orbhost::jpeg
