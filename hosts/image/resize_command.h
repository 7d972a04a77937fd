// The commands that resize.
#ifndef ORB_HOSTS_IMAGE_RESIZE_COMMAND_H
#define ORB_HOSTS_IMAGE_RESIZE_COMMAND_H

#include <CLI/CLI.hpp>

namespace orbhost::image {

// Adds resize and resize-yuv to the commands of orb image.
void addResizeCommands(CLI::App& image);

}  // namespace orbhost::image

#endif
