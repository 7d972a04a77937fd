// orb wav split, orb wav join.
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/commands.h"
#include "hosts/error.h"
#include "hosts/file.h"
#include "hosts/wav/channels.h"

namespace orbhost {

namespace {

using wav::SampleFormat;
using wav::Sound;

struct Arguments {
  std::vector<std::string> files;
  std::optional<SampleFormat> format;
};

Sound read(const std::string& path) {
  return withFile(path, [&] { return wav::parseWav(readFile(path)); });
}

void write(const std::string& path, const Sound& sound, const Arguments& arguments) {
  withFile(path, [&] {
    writeFile(path, wav::formatWav(withFormat(sound, arguments.format.value_or(sound.format))));
  });
}

void splitFile(const Arguments& arguments) {
  const std::string& from = arguments.files[0];
  const std::vector<Sound> sounds = split(read(from));
  const size_t targets = arguments.files.size() - 1;
  if (sounds.size() != targets) {
    throw Error(from + ": it has " + std::to_string(sounds.size()) + " channels, and " +
                std::to_string(targets) + " files are named for them");
  }
  for (size_t i = 0; i < targets; ++i) write(arguments.files[i + 1], sounds[i], arguments);
}

void joinFiles(const Arguments& arguments) {
  std::vector<Sound> sounds;
  for (size_t i = 0; i + 1 < arguments.files.size(); ++i) {
    sounds.push_back(read(arguments.files[i]));
  }
  write(arguments.files.back(), join(std::move(sounds)), arguments);
}

void addShared(CLI::App& command, Arguments& arguments, const char* files) {
  static const std::map<std::string, SampleFormat> kFormats = {
      {"16", SampleFormat::k16}, {"24", SampleFormat::k24}, {"float", SampleFormat::kFloat}};
  command.add_option("files", arguments.files, files)->required()->expected(2, 1000);
  command
      .add_option("--format", arguments.format,
                  "Samples of 16 or 24 bits or floats, in place of those that are there")
      ->transform(CLI::CheckedTransformer(kFormats).description("16|24|float"));
}

}  // namespace

void addWavCommand(CLI::App& program) {
  CLI::App& wav = *program.add_subcommand("wav", "Channels of WAV files");
  wav.require_subcommand(1);
  const auto arguments = std::make_shared<Arguments>();

  CLI::App& splitter = *wav.add_subcommand("split", "Write each channel as a file of its own");
  addShared(splitter, *arguments, "The file, and then one for each of its channels");
  splitter.footer(
      "Example:\n"
      "  orb wav split song.wav left.wav right.wav");
  splitter.callback([arguments] { splitFile(*arguments); });

  CLI::App& joiner = *wav.add_subcommand("join", "Write files of one channel as one of several");
  addShared(joiner, *arguments, "The files of the channels, and then the one of all");
  joiner.footer(
      "Example:\n"
      "  orb wav join --format float left.wav right.wav song.wav\n\n"
      "All take the samples of the first, and those that are shorter end in silence.");
  joiner.callback([arguments] { joinFiles(*arguments); });
}

}  // namespace orbhost
