// orb: codecs built on the library's public door.
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "hosts/commands.h"
#include "orb90legacy.h"

namespace {

std::string describe(const OrbLibraryVersion& version) {
  return std::string(version.name) + " " + version.version + " " + version.buildDate + ", build " +
         version.targetCpu;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App program("Codecs built on orb90legacy");
  program.name("orb");
  program.set_version_flag("--version", [] {
    return describe(*legacy90orbjGetLibVersion()) + "\n" + describe(*legacy90orbdcGetLibVersion());
  });
  program.require_subcommand(1);
  program.footer(
      "Examples:\n"
      "  orb jpeg encode --quality 90 photo.png photo.jpg\n"
      "  orb jpeg decode photo.jpg photo.ppm\n"
      "  orb dv decode tape.dv tape.y4m\n"
      "  orb gzip --keep report.txt\n"
      "  orb image rotate --fit 7.5 photo.png turned.png\n"
      "  orb jpeg encode --help\n\n"
      "The exit status is 0 for success and 1 for any failure, which is explained in one line. "
      "gzip and\ngunzip also know 2: a file was left as it is, or something behind its end was.");
  orbhost::addJpegCommand(program);
  orbhost::addJ2kCommand(program);
  orbhost::addJxrCommand(program);
  orbhost::addDvCommand(program);
  orbhost::addGzipCommand(program);
  orbhost::addGunzipCommand(program);
  orbhost::addPackCommand(program);
  orbhost::addUnpackCommand(program);
  orbhost::addImageCommand(program);
  orbhost::addTiffCommand(program);
  orbhost::addWavCommand(program);
  orbhost::addYuvCommand(program);

  try {
    program.parse(argc, argv);
    return 0;
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? 0 : 1;
  } catch (const orbhost::ExitStatus& status) {
    return status.value;
  } catch (const std::bad_alloc&) {
    std::cerr << "orb: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "orb: " << error.what() << '\n';
  }
  return 1;
}
