// SPDX-License-Identifier: Apache-2.0
// Scripting a running server over HTTP on a unix socket, which works across network namespaces:
//
//   PUT    /firmware/NAME?version=V&strategy=S[&wrong-md5][&upper-md5][&wrong-size]   body: the image
//   DELETE /firmware
//   POST   /fault/ENDPOINT?KEY=VALUE...   keys of parse_fault(); a body is the key "body", byte for byte
//   DELETE /fault
//   GET    /requests?last=N               one JSON text per line, as in the log
//   PUT    /backup/NAME                   answers the address it is served at
//   GET    /upload/NAME                   what a device uploaded under that name
//   PUT    /settings                      the "data" of get-settings
//
// Errors are answered with status 400 and a line that says what is wrong.
#pragma once
#include "http_server.h"

namespace cloudsim {

void add_control(HttpServer &server, Cloud &cloud);

} // namespace cloudsim
