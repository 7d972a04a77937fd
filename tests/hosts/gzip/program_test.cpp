// orb gzip and orb gunzip: beside gzip, pigz, zopfli and libdeflate, and with the manners of gzip.
#include "tests/hosts/support/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "hosts/file.h"
#include "hosts/gzip/format.h"
#include "tests/hosts/support/streams.h"
#include "tests/hosts/support/texts.h"

namespace {

using orbhost::Bytes;
using orbhost::readFile;
using orbhost::writeFile;
using orbtest::bytesOf;
using orbtest::Directory;
using orbtest::Outcome;
using orbtest::run;
using orbtest::runOrb;

using Names = std::vector<std::string>;

constexpr time_t kThen = 1000000000;

// A line for a shell, in which $orb is the program; runs in the directory.
Outcome shell(const Directory& directory, const std::string& line) {
  setenv("orb", ORB_PROGRAM, 1);
  return run({"sh", "-c", "cd " + directory.path() + "; " + line});
}

// What the line writes to the file out.
Bytes outputOf(const Directory& directory, const std::string& line) {
  const Outcome outcome = shell(directory, "(" + line + ") >out");
  EXPECT_EQ(outcome.status, 0) << line << ": " << outcome.output;
  EXPECT_EQ(outcome.output, "") << line;
  return readFile(directory / "out");
}

void expectOutcome(const Outcome& outcome, int status, const std::string& text) {
  EXPECT_EQ(outcome.status, status) << outcome.output;
  EXPECT_EQ(outcome.output, text);
}

mode_t modeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

time_t timeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mtime;
}

void setTime(const std::string& path, time_t time) {
  const timespec times[] = {{time, 0}, {time, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(GzipProgram, OthersReadWhatItWrites) {
  const Directory directory;
  const Bytes inputs[] = {{}, bytesOf("x"), orbtest::prose(200000), orbtest::mixture(700000)};
  for (const Bytes& input : inputs) {
    writeFile(directory / "in", input);
    for (const std::string options : {"", "--level fast", "--level chain", "--block stored",
                                      "--block fixed", "--block dynamic", "--no-name"}) {
      ASSERT_EQ(shell(directory, "$orb gzip " + options + " -c in >in.gz").output, "");
      for (const std::string reader :
           {"gzip -t in.gz && gzip -dc", "pigz -dc", "libdeflate-gunzip -c", "$orb gunzip -c"}) {
        EXPECT_TRUE(outputOf(directory, reader + " in.gz") == input) << reader << ", " << options;
      }
    }
    ASSERT_EQ(shell(directory, "$orb gzip --format zlib -c in >in.zz").output, "");
    EXPECT_TRUE(outputOf(directory, "pigz -dcz in.zz") == input);
  }
}

TEST(GzipProgram, ItReadsWhatOthersWrite) {
  const Directory directory;
  const Bytes inputs[] = {{}, bytesOf("x"), orbtest::prose(100000), orbtest::mixture(300000)};
  for (const Bytes& input : inputs) {
    writeFile(directory / "in", input);
    for (const std::string writer :
         {"gzip -1c in", "gzip -6c in", "gzip -9nc in", "gzip --rsyncable -c in", "pigz -0c in",
          "pigz -6c -p2 -b128 in", "pigz -9ci in", "pigz -zc in", "zopfli --i1 -c in",
          "zopfli --i1 --zlib -c in", "libdeflate-gzip -1 -c in", "libdeflate-gzip -12 -c in"}) {
      EXPECT_TRUE(outputOf(directory, writer + " | $orb gunzip") == input) << writer;
    }
  }
}

TEST(GzipProgram, FilesAreReplaced) {
  const Directory directory;
  const Bytes text = orbtest::prose(100000);
  writeFile(directory / "a.txt", text);
  chmod((directory / "a.txt").c_str(), 0640);
  setTime(directory / "a.txt", kThen);
  expectOutcome(shell(directory, "$orb gzip a.txt"), 0, "");
  EXPECT_EQ(directory.files(), Names{"a.txt.gz"});
  EXPECT_EQ(modeOf(directory / "a.txt.gz"), 0640u);
  EXPECT_EQ(timeOf(directory / "a.txt.gz"), kThen);
  EXPECT_NE(shell(directory, "gzip -lvN a.txt.gz").output.find(" a.txt\n"), std::string::npos);

  expectOutcome(shell(directory, "$orb gunzip a.txt.gz"), 0, "");
  EXPECT_EQ(directory.files(), Names{"a.txt"});
  EXPECT_TRUE(readFile(directory / "a.txt") == text);
  EXPECT_EQ(modeOf(directory / "a.txt"), 0640u);
  EXPECT_EQ(timeOf(directory / "a.txt"), kThen);

  expectOutcome(shell(directory, "$orb gzip --keep a.txt && $orb gunzip -t a.txt"), 1,
                "orb: a.txt: neither a gzip nor a zlib file\n");
  EXPECT_EQ(directory.files(), (Names{"a.txt", "a.txt.gz"}));
  expectOutcome(shell(directory, "rm a.txt && $orb gunzip -k a.txt"), 0, "");  // .gz is understood
  EXPECT_EQ(directory.files(), (Names{"a.txt", "a.txt.gz"}));
}

TEST(GzipProgram, ManyFilesAndSuffixes) {
  const Directory directory;
  for (const char* const name : {"a", "b", "c.tar"}) writeFile(directory / name, bytesOf(name));
  expectOutcome(shell(directory, "$orb gzip a b && $orb gzip -S .tgz c.tar"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a.gz", "b.gz", "c.tar.tgz"}));
  expectOutcome(shell(directory, "mv c.tar.tgz c.tgz && $orb gunzip *"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a", "b", "c.tar"}));

  expectOutcome(shell(directory, "$orb gzip --format zlib a && $orb gzip --format raw b"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a.zz", "b.deflate", "c.tar"}));
  expectOutcome(shell(directory, "$orb gunzip a b.deflate"), 1,
                "orb: a: cannot be opened: No such file or directory\n");
  expectOutcome(shell(directory, "$orb gunzip a.zz"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a", "b", "c.tar"}));
  EXPECT_EQ(readFile(directory / "b"), bytesOf("b"));

  expectOutcome(shell(directory, "$orb gzip -S -packed a && $orb gunzip -S -packed a"), 0, "");
  expectOutcome(shell(directory, "$orb gunzip a"), 2,
                "orb: a: has no suffix of a compressed file: left as it is; --stdout reads it\n");
  // Who compresses all of a directory once more means what is new in it.
  expectOutcome(shell(directory, "$orb gzip a && $orb gzip a.gz"), 0,
                "orb: a.gz: has the suffix of a compressed file: left as it is\n");
  // One that fails does not keep the others from their turn.
  writeFile(directory / "x.gz", bytesOf("no"));
  expectOutcome(shell(directory, "$orb gunzip none x.gz a.gz ."), 1,
                "orb: none: cannot be opened: No such file or directory\n"
                "orb: x.gz: neither a gzip nor a zlib file\n"
                "orb: .: is a directory: left as it is\n");
  EXPECT_EQ(directory.files(), (Names{"a", "b", "c.tar", "x.gz"}));
}

TEST(GzipProgram, StandardStreams) {
  const Directory directory;
  const Bytes text = orbtest::prose(300000);
  writeFile(directory / "in", text);
  EXPECT_TRUE(outputOf(directory, "$orb gzip <in | $orb gunzip") == text);
  EXPECT_TRUE(outputOf(directory, "cat in | $orb gzip - | $orb gunzip -c -") == text);
  EXPECT_TRUE(outputOf(directory, "$orb gzip --format raw <in | $orb gunzip --format raw") == text);
  // Two members.
  Bytes twice = text;
  twice.insert(twice.end(), text.begin(), text.end());
  EXPECT_TRUE(outputOf(directory, "$orb gzip -c in in | $orb gunzip") == twice);
  expectOutcome(shell(directory, "$orb gzip --format zlib -c in in"), 1,
                "orb: only gzip files can stand one behind the other in one stream\n");
  EXPECT_EQ(directory.files(), (Names{"in", "out"}));
  expectOutcome(shell(directory, "$orb gzip -c in | head -c 100 | $orb gunzip >/dev/null"), 1,
                "orb: standard input: the file ends within the compressed data\n");
  expectOutcome(shell(directory, "$orb gzip <in >/dev/full"), 1,
                "orb: standard input: the standard output: cannot be written: No space left on "
                "device\n");
  expectOutcome(shell(directory, "$orb gunzip <&-"), 1,
                "orb: standard input: is not open: Bad file descriptor\n");
}

TEST(GzipProgram, NamesAndTimes) {
  const Directory directory;
  writeFile(directory / "a.txt", bytesOf("text"));
  setTime(directory / "a.txt", kThen);
  expectOutcome(shell(directory, "$orb gzip a.txt && mv a.txt.gz b.gz && touch b.gz"), 0, "");
  expectOutcome(shell(directory, "$orb gunzip -kN b.gz"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a.txt", "b.gz"}));
  EXPECT_EQ(timeOf(directory / "a.txt"), kThen);
  expectOutcome(shell(directory, "$orb gunzip -k b.gz"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a.txt", "b", "b.gz"}));
  EXPECT_NE(timeOf(directory / "b"), kThen);

  // A name that leads elsewhere stays here.
  orbhost::gzip::CompressOptions options;
  const Bytes evil = bytesOf("evil");
  for (const char* const name : {"../../evil", "/tmp/evil"}) {
    options.origin.name = name;
    orbtest::MemorySource source(evil);
    orbtest::MemorySink sink;
    orbhost::gzip::compress(source, sink, options);
    writeFile(directory / "b.gz", sink.all);
    expectOutcome(shell(directory, "$orb gunzip -kN b.gz"), 0, "");
    EXPECT_EQ(directory.files(), (Names{"a.txt", "b", "b.gz", "evil"}));
    expectOutcome(shell(directory, "rm evil"), 0, "");
  }

  // One that is the name of the file itself.
  options.origin.name = "b.gz";
  orbtest::MemorySource source(evil);
  orbtest::MemorySink sink;
  orbhost::gzip::compress(source, sink, options);
  writeFile(directory / "b.gz", sink.all);
  expectOutcome(shell(directory, "$orb gunzip -N b.gz"), 2,
                "orb: b.gz: b.gz: is there already; --force replaces it\n");
  expectOutcome(shell(directory, "$orb gunzip -fN b.gz"), 0, "");
  EXPECT_EQ(readFile(directory / "b.gz"), evil);

  // Without name and time equal data make equal files; with them RFC 1952 has places.
  const auto compressed = [&](const std::string& line) {
    return outputOf(directory, "touch a.txt && $orb gzip " + line);
  };
  const Bytes plain = compressed("-nc a.txt");
  EXPECT_EQ(plain, compressed("--no-name -c a.txt"));
  EXPECT_EQ(plain, compressed("-n <a.txt"));
  EXPECT_EQ(plain, outputOf(directory, "cat a.txt | $orb gzip"));
  EXPECT_EQ(plain[3], 0);
  const Bytes named = compressed("-c a.txt");
  EXPECT_EQ(named[3], 8);
  EXPECT_EQ(std::string(named.begin() + 10, named.begin() + 16), std::string("a.txt\0", 6));
}

TEST(GzipProgram, Dictionaries) {
  const Directory directory;
  const Bytes text = orbtest::prose(50000);
  writeFile(directory / "words", Bytes(text.begin(), text.begin() + 20000));
  writeFile(directory / "in", Bytes(text.begin() + 10000, text.end()));
  writeFile(directory / "empty", {});
  for (const std::string format : {"zlib", "raw"}) {
    EXPECT_TRUE(outputOf(directory, "$orb gzip --format " + format +
                                        " --dictionary words -c in | $orb gunzip --format " +
                                        format + " --dictionary words") ==
                readFile(directory / "in"));
  }
  expectOutcome(shell(directory, "$orb gzip --dictionary words in"), 1,
                "orb: in: a gzip file has no place for a dictionary: that takes --format zlib or "
                "raw\n");
  expectOutcome(shell(directory, "$orb gzip --format zlib --dictionary none in"), 1,
                "orb: none: cannot be opened: No such file or directory\n");
  expectOutcome(shell(directory, "$orb gzip --format zlib --dictionary empty in"), 1,
                "orb: empty: a dictionary can't be empty\n");
  expectOutcome(shell(directory, "$orb gzip --format zlib --dictionary words in"), 0, "");
  EXPECT_EQ(shell(directory, "$orb gunzip in.zz").status, 1);
  EXPECT_EQ(shell(directory, "$orb gunzip --dictionary out in.zz").status, 1);
  EXPECT_EQ(directory.files(), (Names{"empty", "in.zz", "out", "words"}));
}

TEST(GzipProgram, NothingIsOverwrittenUnasked) {
  const Directory directory;
  writeFile(directory / "a", bytesOf("new"));
  writeFile(directory / "a.gz", bytesOf("old"));
  expectOutcome(shell(directory, "$orb gzip a"), 2,
                "orb: a: a.gz: is there already; --force replaces it\n");
  EXPECT_EQ(readFile(directory / "a"), bytesOf("new"));
  EXPECT_EQ(readFile(directory / "a.gz"), bytesOf("old"));
  expectOutcome(shell(directory, "$orb gzip --force a"), 0, "");
  EXPECT_EQ(directory.files(), Names{"a.gz"});

  writeFile(directory / "a", bytesOf("old"));
  expectOutcome(shell(directory, "$orb gunzip a.gz"), 2,
                "orb: a.gz: a: is there already; --force replaces it\n");
  EXPECT_EQ(readFile(directory / "a"), bytesOf("old"));
  expectOutcome(shell(directory, "$orb gunzip -f a.gz"), 0, "");
  EXPECT_EQ(readFile(directory / "a"), bytesOf("new"));
  EXPECT_EQ(directory.files(), Names{"a"});

  mkdir((directory / "a.gz").c_str(), 0777);
  expectOutcome(shell(directory, "$orb gzip -f a"), 1,
                "orb: a: a.gz: cannot be replaced: Is a directory\n");
  EXPECT_EQ(directory.files(), (Names{"a", "a.gz"}));
}

TEST(GzipProgram, WhatIsNoPlainFileIsLeft) {
  const Directory directory;
  writeFile(directory / "a", bytesOf("text"));
  expectOutcome(shell(directory, "ln -s a link; mkfifo pipe; mkdir dir; $orb gzip link"), 1,
                "orb: link: is a symbolic link; --force or --stdout follows it\n");
  expectOutcome(shell(directory, "$orb gzip pipe dir"), 2,
                "orb: pipe: is not a plain file: left as it is\n"
                "orb: dir: is a directory: left as it is\n");
  expectOutcome(shell(directory, "$orb gzip -f pipe"), 2,
                "orb: pipe: is not a plain file: left as it is\n");
  expectOutcome(shell(directory, "$orb gzip -kf link && $orb gunzip -c link.gz"), 0, "text");
  expectOutcome(shell(directory, "$orb gzip -c link | $orb gunzip"), 0, "text");
  expectOutcome(shell(directory, "cat a >pipe & $orb gzip -c pipe | $orb gunzip"), 0, "text");
  expectOutcome(shell(directory, "ln a second; $orb gzip a"), 2,
                "orb: a: has another name (a hard link): left as it is\n");
  expectOutcome(shell(directory, "rm second; chmod 2755 a; $orb gzip a"), 2,
                "orb: a: has set-user-ID, set-group-ID or sticky permissions: left as it is\n");
  expectOutcome(shell(directory, "$orb gzip -f a"), 0, "");
  EXPECT_EQ(directory.files(), (Names{"a.gz", "dir", "link", "link.gz", "pipe"}));
  EXPECT_EQ(modeOf(directory / "a.gz"), 0755u);
}

TEST(GzipProgram, DamagedFilesStayAndLeaveNothingBehind) {
  const Directory directory;
  const Bytes text = orbtest::prose(40);
  writeFile(directory / "in", text);
  const Bytes good = outputOf(directory, "$orb gzip -c in");
  shell(directory, "rm in out");
  const auto refused = [&](const Bytes& file) {
    writeFile(directory / "a.gz", file);
    const Outcome outcome = runOrb({"gunzip", directory / "a.gz"});
    EXPECT_EQ(outcome.output.rfind("orb: " + directory.path() + "/a.gz: ", 0), 0u)
        << outcome.output;
    EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1) << outcome.output;
    EXPECT_EQ(directory.files(), Names{"a.gz"});
    EXPECT_TRUE(readFile(directory / "a.gz") == file);
    return outcome.status == 1;
  };
  for (size_t size = 0; size < good.size(); ++size) {
    EXPECT_TRUE(refused(Bytes(good.begin(), good.begin() + static_cast<long>(size)))) << size;
  }
  // Behind the header, whose name and time may be any; bits above the lowest may be padding.
  for (size_t i = 10 + sizeof "in"; i < good.size(); ++i) {
    Bytes damaged = good;
    damaged[i] ^= 0x01;
    EXPECT_TRUE(refused(damaged)) << i;
  }
}

TEST(GzipProgram, GarbageBehindTheEndIsAWarning) {
  const Directory directory;
  writeFile(directory / "a", bytesOf("text"));
  expectOutcome(shell(directory, "$orb gzip a && printf xx >>a.gz && $orb gunzip -t a.gz"), 2,
                "orb: a.gz: is good, but has other data behind its end, which was left out\n");
  expectOutcome(shell(directory, "$orb gunzip a.gz"), 2,
                "orb: a.gz: is good, but has other data behind its end, which was left out\n");
  EXPECT_EQ(directory.files(), Names{"a"});
  expectOutcome(shell(directory, "$orb gzip a && head -c 1000 /dev/zero >>a.gz; $orb gunzip a.gz"),
                0, "");
}

TEST(GzipProgram, PlacesThatCantBeWritten) {
  const Directory directory;
  writeFile(directory / "a", bytesOf("text"));
  // The kernel's own files: root may read them all and write beside none.
  expectOutcome(shell(directory, "$orb gzip -k /proc/version"), 1,
                "orb: /proc/version: /proc/version.gz: cannot be created: No such file or "
                "directory\n");
  const std::string longName(255, 'n');
  writeFile(directory / longName, bytesOf("text"));
  const Outcome outcome = runOrb({"gzip", directory / longName});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.output.find("File name too long"), std::string::npos) << outcome.output;
  EXPECT_EQ(directory.files(), (Names{"a", longName}));
}

TEST(GzipProgram, TestAndList) {
  const Directory directory;
  writeFile(directory / "a", Bytes(100000, 'a'));
  writeFile(directory / "none", {});
  shell(directory, "$orb gzip -n a none && cat a.gz a.gz >b.gz");
  expectOutcome(shell(directory, "$orb gunzip --test *.gz"), 0, "");
  const std::string one = std::to_string(readFile(directory / "a.gz").size());
  const std::string two = std::to_string(readFile(directory / "b.gz").size());
  const std::string all = std::to_string(3 * readFile(directory / "a.gz").size() +
                                         readFile(directory / "none.gz").size());
  const Outcome outcome = shell(directory, "$orb gunzip --list a b.gz none.gz | tr -s ' '");
  expectOutcome(outcome, 0,
                " compressed uncompressed saved uncompressed_name\n " + one + " 100000 99.9% a\n " +
                    two + " 200000 99.9% b\n 20 0 0.0% none\n " + all + " 300000 99.9% (totals)\n");
  writeFile(directory / "bad.gz", bytesOf("bad"));
  expectOutcome(shell(directory, "$orb gunzip -l bad.gz none.gz 2>&1 | tr -s ' '"), 0,
                "orb: bad.gz: neither a gzip nor a zlib file\n"
                " compressed uncompressed saved uncompressed_name\n 20 0 0.0% none\n 20 0 0.0% "
                "(totals)\n");
  EXPECT_EQ(shell(directory, "$orb gunzip -l bad.gz").status, 1);
  EXPECT_EQ(shell(directory, "$orb gunzip -t bad.gz none.gz").status, 1);
  EXPECT_EQ(directory.files(), (Names{"a.gz", "b.gz", "bad.gz", "none.gz"}));
}

TEST(GzipProgram, StatsAreOneLine) {
  const Directory directory;
  writeFile(directory / "a", Bytes(100000, 'a'));
  const Outcome packed = shell(directory, "$orb gzip --stats a");
  const std::string size = std::to_string(readFile(directory / "a.gz").size());
  EXPECT_EQ(packed.output.find("bytes_in=100000 bytes_out=" + size + " mbytes_per_second="), 0u);
  const Outcome unpacked = shell(directory, "$orb gunzip --stats a.gz");
  EXPECT_EQ(unpacked.output.find("bytes_in=" + size + " bytes_out=100000 mbytes_per_second="), 0u);
  EXPECT_NE(unpacked.output.find(" build="), std::string::npos);
}

TEST(GzipProgram, HelpAndWrongArguments) {
  for (const char* const name : {"gzip", "gunzip"}) {
    const Outcome help = runOrb({name, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find(std::string("Examples:\n  orb ") + name), std::string::npos);
    for (const Names& wrong : {Names{"--format", "zip"}, Names{"--what"}}) {
      Names arguments = {name};
      arguments.insert(arguments.end(), wrong.begin(), wrong.end());
      EXPECT_EQ(runOrb(arguments).status, 1);
    }
  }
  EXPECT_EQ(runOrb({"gzip", "--level", "9"}).status, 1);
  EXPECT_EQ(runOrb({"gzip", "--block", "any"}).status, 1);
  EXPECT_EQ(runOrb({"gunzip", "--test", "--list"}).status, 1);
}

// A terminal for a program's streams.
class Terminal {
 public:
  Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(master_);
    unlockpt(master_);
    const char* const name = ptsname(master_);
    if (name) slave_ = open(name, O_RDWR | O_NOCTTY);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() { close(master_); }

  // A machine without /dev/pts has none.
  bool isThere() const { return slave_ >= 0; }
  std::string name() const { return ptsname(master_); }
  // What has been shown on it.
  std::string shown() {
    close(slave_);
    std::string all;
    char buffer[1000];
    for (;;) {
      const ssize_t got = read(master_, buffer, sizeof buffer);
      if (got <= 0) return all;
      all.append(buffer, static_cast<size_t>(got));
    }
  }

 private:
  const int master_;
  int slave_ = -1;
};

TEST(GzipProgram, TerminalsGetNoCompressedData) {
  const Directory directory;
  writeFile(directory / "a", bytesOf("text"));
  Terminal terminal;
  if (!terminal.isThere()) GTEST_SKIP() << "there is no terminal to be had";
  expectOutcome(shell(directory, "$orb gzip -c a >" + terminal.name()), 1,
                "orb: a: compressed data is not written to a terminal; --force does it all the "
                "same\n");
  expectOutcome(shell(directory, "$orb gunzip <" + terminal.name()), 1,
                "orb: standard input: compressed data is not read from a terminal; --force does it "
                "all the same\n");
  expectOutcome(shell(directory, "$orb gzip -cf a >" + terminal.name()), 0, "");
  EXPECT_EQ(terminal.shown().substr(0, 3), "\x1F\x8B\x08");
}

TEST(GzipProgram, ProgressIsShownOnATerminal) {
  const Directory directory;
  const std::string slowly = "(echo 1; sleep 0.7; echo 2; sleep 0.1; echo 3) | $orb gzip -n";
  Terminal terminal;
  if (!terminal.isThere()) GTEST_SKIP() << "there is no terminal to be had";
  EXPECT_EQ(shell(directory, slowly + " 2>" + terminal.name() + " | gzip -dc").output, "1\n2\n3\n");
  const std::string shown = terminal.shown();
  EXPECT_NE(shown.find("standard input: 0 MB, 0.0 MB/s"), std::string::npos) << shown;
  // The line goes in the end.
  EXPECT_EQ(shown.substr(shown.size() - 4), "\r\033[K") << shown;
  // And a file, or a pipe, gets nothing.
  EXPECT_EQ(shell(directory, slowly + " 2>err | gzip -dc && cat err").output, "1\n2\n3\n");
  Terminal quick;
  EXPECT_EQ(shell(directory, "echo 1 >in; $orb gzip <in 2>" + quick.name() + " | gzip -dc").output,
            "1\n");
  EXPECT_EQ(quick.shown(), "");
}

TEST(GzipProgram, ASignalLeavesNothingBehind) {
  const Directory directory;
  const std::string path = directory / "a";
  writeFile(path, {});
  // So many zeros take seconds, though none of them is on the disk.
  ASSERT_EQ(truncate(path.c_str(), INT32_MAX), 0);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const char* const arguments[] = {ORB_PROGRAM, "gzip", path.c_str(), nullptr};
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, ORB_PROGRAM, nullptr, nullptr,
                          const_cast<char* const*>(arguments), environ),
              0);
    while (directory.files().size() == 1 && waitpid(child, nullptr, WNOHANG) == 0) usleep(1000);
    EXPECT_EQ(directory.files(), (Names{".orb-part-0", "a"}));
    ASSERT_EQ(kill(child, signal), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    EXPECT_EQ(directory.files(), Names{"a"});
  }
}

}  // namespace
