#include "jpegxr/tables/scan.h"

namespace orb {

constexpr OrbTable<OrbScanPlace, 16> orbScanPlaces = {{
    {0, 0},
    {1, 0},
    {0, 1},
    {1, 1},  //
    {3, 0},
    {2, 0},
    {3, 1},
    {2, 1},  //
    {0, 3},
    {1, 3},
    {0, 2},
    {1, 2},  //
    {3, 3},
    {2, 3},
    {3, 2},
    {2, 2},
}};

constexpr OrbTable<OrbTable<uint8_t, 16>, 3> orbScanStart = {{
    {{0, 10, 2, 12, 5, 9, 4, 8, 1, 13, 6, 15, 14, 3, 11, 7}},
    {{0, 5, 10, 12, 1, 2, 8, 4, 6, 9, 3, 14, 13, 7, 11, 15}},
    {{0, 1, 4, 5, 2, 8, 6, 9, 3, 12, 10, 7, 13, 11, 14, 15}},
}};

constexpr OrbTable<uint8_t, 15> orbFlexOrder = {
    {5, 1, 6, 10, 12, 8, 14, 2, 4, 3, 7, 9, 13, 11, 15}};

}  // namespace orb
