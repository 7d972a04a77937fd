// orb gzip, orb gunzip.
#include <unistd.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hosts/commands.h"
#include "hosts/each_file.h"
#include "hosts/file.h"
#include "hosts/gzip/format.h"
#include "hosts/replaced_file.h"
#include "hosts/watched_source.h"
#include "orb90legacy.h"

namespace orbhost {

namespace {

using gzip::Blocks;
using gzip::Expander;
using gzip::Format;
using gzip::Level;

struct Arguments {
  std::vector<std::string> files;
  std::optional<Format> format;
  std::string dictionaryFile;
  std::string suffix;
  bool toStandard = false;
  bool keep = false;
  bool force = false;
  bool stats = false;
};

struct CompressArguments : Arguments {
  gzip::CompressOptions options;
  bool noName = false;
};

struct ExpandArguments : Arguments {
  Bytes dictionary;
  bool name = false;
  bool test = false;
  bool list = false;
};

// Suffixes of compressed files, and what stands in their place when they are expanded.
constexpr std::pair<const char*, const char*> kSuffixes[] = {
    {".gz", ""}, {"-gz", ""}, {".zz", ""},      {".deflate", ""}, {".z", ""},
    {"-z", ""},  {"_z", ""},  {".tgz", ".tar"}, {".taz", ".tar"}};
constexpr char kRawSuffix[] = ".deflate";

std::string defaultSuffix(Format format) {
  switch (format) {
    case Format::kGzip:
      return ".gz";
    case Format::kZlib:
      return ".zz";
    case Format::kRaw:
      break;
  }
  return kRawSuffix;
}

std::string fileName(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

bool hasSuffix(const std::string& path, const std::string& suffix) {
  return fileName(path).size() > suffix.size() &&
         path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// Empty if the path has no suffix of a compressed file: neither the user's own nor a known one.
std::string expandedPath(const std::string& path, const std::string& ownSuffix) {
  if (!ownSuffix.empty() && hasSuffix(path, ownSuffix)) {
    return path.substr(0, path.size() - ownSuffix.size());
  }
  for (const auto& [suffix, instead] : kSuffixes) {
    if (hasSuffix(path, suffix)) {
      return path.substr(0, path.size() - std::string(suffix).size()) + instead;
    }
  }
  return {};
}

// 0, which is no time, for what is no file, and for what 32 bits don't hold.
uint32_t timeToTell(const struct stat& status) {
  const int64_t time = S_ISREG(status.st_mode) ? int64_t{status.st_mtime} : 0;
  return time > 0 && time <= UINT32_MAX ? static_cast<uint32_t>(time) : 0;
}

void compressFile(const std::string& path, const CompressArguments& arguments) {
  std::string target = kStandard;
  if (!arguments.toStandard && path != kStandard) {
    if (!expandedPath(path, arguments.suffix).empty()) {
      // No warning: who compresses a whole directory again means what is new in it.
      say(path, "has the suffix of a compressed file: left as it is");
      return;
    }
    target = path + arguments.suffix;
  }
  InputFile input(path, purposeOf(target), arguments.force);
  OutputFile output(target, arguments.force);
  if (output.isTerminal() && !arguments.force) {
    throw Error("compressed data is not written to a terminal; --force does it all the same");
  }
  WatchedSource source(input, nameOf(path), input.size());

  gzip::CompressOptions options = arguments.options;
  if (!arguments.noName) {
    if (path != kStandard) options.origin.name = fileName(path);
    options.origin.time = timeToTell(input.status());
  }
  gzip::compress(source, output, options);
  replace(path, input.status(), output, arguments.keep);
  if (arguments.stats) printStats(source, output.count(), source.count());
}

// The file that is meant, which may be named without its suffix.
std::string findCompressed(const std::string& path, const std::string& ownSuffix) {
  if (path == kStandard || access(path.c_str(), F_OK) == 0) return path;
  const std::string withSuffix = path + (ownSuffix.empty() ? ".gz" : ownSuffix);
  return access(withSuffix.c_str(), F_OK) == 0 ? withSuffix : path;
}

std::optional<Format> formatOf(const std::string& path, const ExpandArguments& arguments) {
  if (arguments.format) return arguments.format;
  // Nothing in a raw stream tells what it is.
  if (hasSuffix(path, kRawSuffix)) return Format::kRaw;
  return std::nullopt;
}

InputFile openCompressed(const std::string& path, InputFile::Purpose purpose,
                         const ExpandArguments& arguments) {
  InputFile input(path, purpose, arguments.force);
  if (input.isTerminal() && !arguments.force) {
    throw Error("compressed data is not read from a terminal; --force does it all the same");
  }
  return input;
}

void warnOfGarbage(const Expander::Totals& totals) {
  if (totals.garbageFollowed) {
    throw Refusal("is good, but has other data behind its end, which was left out");
  }
}

// Decodes a file without writing what it holds.
Expander::Totals readThrough(const std::string& path, const ExpandArguments& arguments) {
  InputFile input = openCompressed(path, InputFile::Purpose::kRead, arguments);
  WatchedSource source(input, nameOf(path), input.size());
  NoSink nowhere;
  const Expander::Totals totals =
      Expander(source, formatOf(path, arguments), arguments.dictionary).expand(nowhere);
  if (arguments.stats) printStats(source, totals.length, totals.length);
  return totals;
}

void printListLine(uint64_t compressed, uint64_t length, const std::string& name) {
  const double saved =
      length == 0 ? 0 : 100 - 100 * static_cast<double>(compressed) / static_cast<double>(length);
  std::printf("%19" PRIu64 " %19" PRIu64 " %5.1f%% %s\n", compressed, length, saved, name.c_str());
}

int listFiles(const ExpandArguments& arguments) {
  std::printf("%19s %19s %6s %s\n", "compressed", "uncompressed", "saved", "uncompressed_name");
  uint64_t compressed = 0;
  uint64_t length = 0;
  const int status = forEachFile(arguments.files, [&](const std::string& named) {
    const std::string path = findCompressed(named, arguments.suffix);
    const Expander::Totals totals = readThrough(path, arguments);
    const std::string name = expandedPath(path, arguments.suffix);
    printListLine(totals.compressed, totals.length, name.empty() ? nameOf(path) : name);
    compressed += totals.compressed;
    length += totals.length;
    warnOfGarbage(totals);
  });
  if (arguments.files.size() > 1) printListLine(compressed, length, "(totals)");
  return status;
}

void expandFile(const std::string& named, const ExpandArguments& arguments) {
  const std::string path = findCompressed(named, arguments.suffix);
  std::string target = kStandard;
  if (!arguments.toStandard && path != kStandard) target = expandedPath(path, arguments.suffix);
  InputFile input = openCompressed(path, purposeOf(target), arguments);
  if (target.empty()) {
    throw Refusal("has no suffix of a compressed file: left as it is; --stdout reads it");
  }
  WatchedSource source(input, nameOf(path), input.size());
  Expander expander(source, formatOf(path, arguments), arguments.dictionary);

  struct stat status = input.status();
  if (arguments.name && target != kStandard) {
    const std::string name = fileName(expander.origin().name);
    if (!name.empty() && name != "." && name != "..") {
      target = std::filesystem::path(target).replace_filename(name).string();
    }
    if (expander.origin().time != 0) status.st_mtim = {expander.origin().time, 0};
  }
  OutputFile output(target, arguments.force);
  const Expander::Totals totals = expander.expand(output);
  replace(path, status, output, arguments.keep);
  if (arguments.stats) printStats(source, totals.length, totals.length);
  warnOfGarbage(totals);
}

Bytes readDictionary(const std::string& path) {
  if (path.empty()) return {};
  return withFile(path, [&] {
    Bytes dictionary = readFile(path);
    if (dictionary.empty()) throw Error("a dictionary can't be empty");
    return dictionary;
  });
}

int runCompress(CompressArguments& arguments) {
  gzip::CompressOptions& options = arguments.options;
  options.format = arguments.format.value_or(Format::kGzip);
  if (options.format != Format::kGzip && arguments.toStandard && arguments.files.size() > 1) {
    throw Error("only gzip files can stand one behind the other in one stream");
  }
  options.coding.dictionary = readDictionary(arguments.dictionaryFile);
  if (arguments.suffix.empty()) arguments.suffix = defaultSuffix(options.format);
  return forEachFile(arguments.files,
                     [&](const std::string& path) { compressFile(path, arguments); });
}

int runExpand(ExpandArguments& arguments) {
  arguments.dictionary = readDictionary(arguments.dictionaryFile);
  if (arguments.list) return listFiles(arguments);
  return forEachFile(arguments.files, [&](const std::string& named) {
    if (arguments.test) {
      warnOfGarbage(readThrough(findCompressed(named, arguments.suffix), arguments));
    } else {
      expandFile(named, arguments);
    }
  });
}

// What both commands take.
void addShared(CLI::App& command, Arguments& arguments) {
  static const std::map<std::string, Format> kFormats = {
      {"gzip", Format::kGzip}, {"zlib", Format::kZlib}, {"raw", Format::kRaw}};
  arguments.files = {kStandard};
  command.add_option("files", arguments.files, "The files; - is the standard input");
  command.add_flag("-c,--stdout", arguments.toStandard,
                   "Write to the standard output and leave the files as they are");
  command.add_flag("-k,--keep", arguments.keep, "Leave the files beside the new ones");
  command.add_flag("-f,--force", arguments.force,
                   "Replace what is there; take links, and terminals too");
  command.add_option(
      "-S,--suffix", arguments.suffix,
      "The suffix of compressed files, in place of .gz, .zz (zlib) or .deflate (raw)");
  command
      .add_option("--format", arguments.format,
                  "gzip (RFC 1952), zlib (RFC 1950) or raw (RFC 1951)")
      ->transform(CLI::CheckedTransformer(kFormats).description("gzip|zlib|raw"));
  command.add_option("--dictionary", arguments.dictionaryFile,
                     "Text that is known to both sides, for zlib and raw streams");
  command.add_flag("--stats", arguments.stats,
                   "Print sizes, speed and the library's build to the error stream");
}

}  // namespace

void addGzipCommand(CLI::App& program) {
  CLI::App& command = *program.add_subcommand("gzip", "Compress files: gzip, zlib, raw deflate");
  const auto arguments = std::make_shared<CompressArguments>();
  static const std::map<std::string, Level> kLevels = {
      {"fast", Level::kFast}, {"chain", Level::kChain}, {"lazy", Level::kLazy}};
  static const std::map<std::string, Blocks> kBlocks = {{"auto", Blocks::kShortest},
                                                        {"fixed", Blocks::kFixed},
                                                        {"dynamic", Blocks::kDynamic},
                                                        {"stored", Blocks::kStored}};
  addShared(command, *arguments);
  command
      .add_option("--level", arguments->options.coding.level,
                  "How hard matches are sought: fast, chain or lazy, the smallest and default")
      ->transform(CLI::CheckedTransformer(kLevels).description("fast|chain|lazy"));
  command
      .add_option("--block", arguments->options.coding.blocks,
                  "The kind of the blocks; auto, the default, is the shortest for each")
      ->transform(CLI::CheckedTransformer(kBlocks).description("auto|fixed|dynamic|stored"));
  command.add_flag("-n,--no-name", arguments->noName,
                   "Keep name and time out of the file, so that equal data make equal files");
  command.footer(
      "Examples:\n"
      "  orb gzip report.txt                      (becomes report.txt.gz)\n"
      "  orb gzip --keep --level fast *.log\n"
      "  tar -c src | orb gzip >src.tar.gz\n"
      "  orb gzip --format zlib --dictionary words.txt -c page.html >page.zz\n\n"
      "A file is replaced by the new one, which has its permissions and times, when that is\n"
      "complete. Nothing that is there already is overwritten without --force.");
  command.callback([arguments] { finish(runCompress(*arguments)); });
}

void addGunzipCommand(CLI::App& program) {
  CLI::App& command = *program.add_subcommand("gunzip", "Expand files: gzip, zlib, raw deflate");
  const auto arguments = std::make_shared<ExpandArguments>();
  addShared(command, *arguments);
  command.add_flag("-N,--name", arguments->name,
                   "Give the file the name and time that the gzip file tells");
  CLI::Option* const test = command.add_flag("-t,--test", arguments->test,
                                             "Say whether the files are whole, and no more");
  command
      .add_flag("-l,--list", arguments->list,
                "Print how long the files are, compressed and not, having read them through")
      ->excludes(test);
  command.footer(
      "Examples:\n"
      "  orb gunzip report.txt.gz                 (becomes report.txt)\n"
      "  orb gunzip -c access.log.gz | grep 404\n"
      "  orb gunzip --test *.gz\n"
      "  orb gunzip --dictionary words.txt -c page.zz >page.html\n\n"
      "The first bytes tell gzip from zlib; raw streams are told by --format raw or the suffix\n"
      ".deflate. All members of a gzip file are read. Checksums and lengths are compared, and a\n"
      "damaged file stays as it is.");
  command.callback([arguments] { finish(runExpand(*arguments)); });
}

}  // namespace orbhost
