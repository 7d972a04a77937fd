// Scan scripts: in which scans a picture is coded.
#ifndef ORB_HOSTS_JPEG_SCRIPT_H
#define ORB_HOSTS_JPEG_SCRIPT_H

#include <string>
#include <vector>

#include "hosts/jpeg/markers.h"

namespace orbhost::jpeg {

struct ScriptScan {
  std::vector<int> components;
  Selection selection;
};
using Script = std::vector<ScriptScan>;

// A script as cjpeg and jpegtran take it. A scan is a list of components, counted from 0, and for a
// progressive one a colon, the first and last coefficient, and Ah and Al; a semicolon ends it.
// Commas and a hyphen may stand between numbers, and a comment goes from # to the end of its line:
//
//   0,1,2: 0-0, 0, 1;   # a rough DC of everything
//   0: 1-63, 0, 0;
//
// Throws an Error that names the line.
Script parseScript(const std::string& text);

// Whether any scan holds less than all there is of its components.
bool isProgressive(const Script& script);

// Throws an Error that names the scan if a frame cannot be coded so.
void checkScript(const Script& script, const Frame& frame);

// All components in one scan.
Script sequentialScript(const Frame& frame);

// The scans that most progressive files have. `hasChroma` says that components 1 and 2 are Cb and
// Cr, whose coefficients are few and need not be split as often.
Script progressiveScript(const Frame& frame, bool hasChroma);

}  // namespace orbhost::jpeg

#endif
