// orb pack, orb unpack.
#include <memory>
#include <string>
#include <vector>

#include "hosts/commands.h"
#include "hosts/each_file.h"
#include "hosts/pack/archive.h"

namespace orbhost {

namespace {

const std::string kSuffix = ".orb";

struct Arguments {
  std::vector<std::string> files = {kStandard};
  bool toStandard = false;
  bool keep = false;
  bool force = false;
  bool stats = false;
  bool intervals = false;
  bool test = false;
};

bool hasSuffix(const std::string& path) {
  return path.size() > kSuffix.size() &&
         path.compare(path.size() - kSuffix.size(), kSuffix.size(), kSuffix) == 0;
}

void packFile(const std::string& path, const Arguments& arguments) {
  std::string target = kStandard;
  if (!arguments.toStandard && path != kStandard) {
    if (hasSuffix(path)) {
      throw Refusal("has the suffix " + kSuffix + " already: left as it is");
    }
    target = path + kSuffix;
  }
  InputFile input(path, purposeOf(target), arguments.force);
  OutputFile output(target, arguments.force);
  if (output.isTerminal() && !arguments.force) {
    throw Error("packed data is not written to a terminal; --force does it all the same");
  }
  WatchedSource source(input, nameOf(path), input.size());
  pack::pack(source, output,
             arguments.intervals ? pack::Ranking::kIntervals : pack::Ranking::kMoveToFront);
  replace(path, input.status(), output, arguments.keep);
  if (arguments.stats) printStats(source, output.count(), source.count());
}

void testFile(const std::string& path, const Arguments& arguments) {
  InputFile input(path, InputFile::Purpose::kRead, arguments.force);
  WatchedSource source(input, nameOf(path), input.size());
  NoSink nowhere;
  const uint64_t length = pack::unpack(source, nowhere);
  if (arguments.stats) printStats(source, 0, length);
}

void unpackFile(const std::string& path, const Arguments& arguments) {
  std::string target = kStandard;
  if (!arguments.toStandard && path != kStandard) {
    if (!hasSuffix(path)) {
      throw Refusal("has not the suffix " + kSuffix + ": left as it is; --stdout reads it");
    }
    target = path.substr(0, path.size() - kSuffix.size());
  }
  InputFile input(path, purposeOf(target), arguments.force);
  WatchedSource source(input, nameOf(path), input.size());
  OutputFile output(target, arguments.force);
  const uint64_t length = pack::unpack(source, output);
  replace(path, input.status(), output, arguments.keep);
  if (arguments.stats) printStats(source, length, length);
}

void addShared(CLI::App& command, Arguments& arguments) {
  command.add_option("files", arguments.files, "The files; - is the standard input");
  command.add_flag("-c,--stdout", arguments.toStandard,
                   "Write to the standard output and leave the files as they are");
  command.add_flag("-k,--keep", arguments.keep, "Leave the files beside the new ones");
  command.add_flag("-f,--force", arguments.force,
                   "Replace what is there; take links, and terminals too");
  command.add_flag("--stats", arguments.stats,
                   "Print sizes, speed and the library's build to the error stream");
}

}  // namespace

void addPackCommand(CLI::App& program) {
  CLI::App& command = *program.add_subcommand("pack", "Compress files by block sorting");
  const auto arguments = std::make_shared<Arguments>();
  addShared(command, *arguments);
  command.add_flag("--git", arguments->intervals,
                   "Code the intervals between equal bytes, in place of ranks and run lengths");
  command.footer(
      "Examples:\n"
      "  orb pack report.txt                      (becomes report.txt.orb)\n"
      "  orb pack --keep --git table.csv\n"
      "  tar -c src | orb pack >src.tar.orb\n\n"
      "Blocks of 32 KB, each with a checksum. Good for text; orb gzip is faster, and its files "
      "are\n"
      "read everywhere.");
  command.callback([arguments] {
    finish(forEachFile(arguments->files,
                       [&](const std::string& path) { packFile(path, *arguments); }));
  });
}

void addUnpackCommand(CLI::App& program) {
  CLI::App& command = *program.add_subcommand("unpack", "Expand files of orb pack");
  const auto arguments = std::make_shared<Arguments>();
  addShared(command, *arguments);
  command.add_flag("-t,--test", arguments->test, "Say whether the files are whole, and no more");
  command.footer(
      "Examples:\n"
      "  orb unpack report.txt.orb                (becomes report.txt)\n"
      "  orb unpack -c src.tar.orb | tar -t\n\n"
      "Every block's checksum is compared, and nothing is left half-written: a file gets its name\n"
      "when it is complete. To the standard output goes all that is in front of the damage.");
  command.callback([arguments] {
    finish(forEachFile(arguments->files, [&](const std::string& path) {
      if (arguments->test) {
        testFile(path, *arguments);
      } else {
        unpackFile(path, *arguments);
      }
    }));
  });
}

}  // namespace orbhost
