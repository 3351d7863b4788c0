// SPDX-License-Identifier: Apache-2.0
// "remoteCfgExport": the router's own export of its configuration, uploaded.
#pragma once

#include <cstdint>

// Request {"uploadUrl", "url"}. Has the daemon export its configuration, whatever the request is, and uploads
// the file. Answers 200 {"url": the request's}; 400 "{}" when the daemon refuses, {"url content":"empty"}
// without "uploadUrl", {"url":"failed"} for an empty one, {"urltxt":"failed"} and {"upload":"failed"} when it
// cannot be left for the helper or sent; none at all without a request or for one that is no JSON. Any
// thread; one export at a time, the others wait.
int remoteCfgExport_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// 1 when the file exists, else 0; logged as well.
int file_exists_container_flag(const char *path);
