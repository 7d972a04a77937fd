#include "hosts/each_file.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

#include "hosts/commands.h"
#include "hosts/descriptor.h"
#include "orb90legacy.h"

namespace orbhost {

namespace {

constexpr int kFailure = 1;
constexpr int kWarning = 2;

}  // namespace

std::string nameOf(const std::string& path) {
  return path == kStandard ? "standard input" : path;
}

void say(const std::string& path, const std::string& text) {
  std::fprintf(stderr, "orb: %s: %s\n", nameOf(path).c_str(), text.c_str());
}

int forEachFile(const std::vector<std::string>& files,
                const std::function<void(const std::string& path)>& work) {
  int status = 0;
  for (const std::string& path : files) {
    try {
      work(path);
    } catch (const Refusal& refusal) {
      say(path, refusal.what());
      if (status == 0) status = kWarning;
    } catch (const Error& error) {
      say(path, error.what());
      status = kFailure;
    }
  }
  return status;
}

void finish(int status) {
  if (status != 0) throw ExitStatus{status};
}

InputFile::Purpose purposeOf(const std::string& target) {
  return target == kStandard ? InputFile::Purpose::kRead : InputFile::Purpose::kReplace;
}

void replace(const std::string& path, const struct stat& status, OutputFile& output, bool keep) {
  output.finishLike(status);
  if (keep || output.isStandard()) return;
  // The new one may have taken the old one's name: a gzip file can tell any.
  struct stat present;
  if (stat(path.c_str(), &present) == 0 &&
      (present.st_dev != status.st_dev || present.st_ino != status.st_ino)) {
    return;
  }
  if (unlink(path.c_str()) != 0) failWithReason("cannot be removed");
}

void printStats(WatchedSource& source, uint64_t written, uint64_t expanded) {
  const double speed = static_cast<double>(expanded) / 1e6 / source.seconds();
  source.hide();
  std::fprintf(stderr,
               "bytes_in=%" PRIu64 " bytes_out=%" PRIu64 " mbytes_per_second=%.1f build=%s\n",
               source.count(), written, speed, legacy90orbdcGetLibVersion()->targetCpu);
}

}  // namespace orbhost
