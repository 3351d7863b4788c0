// SPDX-License-Identifier: Apache-2.0
// What routersim prints about itself.
#pragma once

#include <string>

namespace router {

// Every object and method, a line each, with its arguments.
std::string listing();

// Makes an image visible under /tmp and /aptmp as one file, as on the device: each name of /tmp becomes a
// symbolic link into /aptmp. Does nothing unless both folders exist. A regular file that is left over in /tmp
// is replaced; false when a name could not be made.
bool share_images();

} // namespace router
