// SPDX-License-Identifier: Apache-2.0
// The two names of each firmware image.
#pragma once

namespace router {

// Makes an image visible under /tmp and /aptmp as one file, as on the device: each name of /tmp becomes a
// symbolic link into /aptmp. Does nothing unless both folders exist. A regular file that is left over in /tmp
// is replaced; false when a name could not be made.
bool share_images();

} // namespace router
