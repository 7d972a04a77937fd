// What the commands have in common that turn each of several files into another, as gzip does.
#ifndef ORB_HOSTS_EACH_FILE_H
#define ORB_HOSTS_EACH_FILE_H

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "hosts/replaced_file.h"
#include "hosts/stream.h"
#include "hosts/watched_source.h"

namespace orbhost {

// How messages name a file.
std::string nameOf(const std::string& path);

void say(const std::string& path, const std::string& text);

// Does the work for each file. What is wrong with one is said, and the others have their turn. The
// result is the exit status: 0; 2 if a file was refused; 1 if something went wrong.
int forEachFile(const std::vector<std::string>& files,
                const std::function<void(const std::string& path)>& work);

// Ends the program with this status, unless it is 0.
void finish(int status);

// What is written to the standard output leaves its input alone.
InputFile::Purpose purposeOf(const std::string& target);

// The new file is complete: it gets its name, and the old one goes unless it is to be kept.
void replace(const std::string& path, const struct stat& status, OutputFile& output, bool keep);

// The speed is that of the expanded side.
void printStats(WatchedSource& source, uint64_t written, uint64_t expanded);

// Takes what is only to be tested.
class NoSink : public Sink {
 public:
  void write(ByteView) override {}
};

}  // namespace orbhost

#endif
