// SPDX-License-Identifier: Apache-2.0
// "uploadLog": the logs, packed, without a secret in them.
#pragma once

#include <cstdint>

// Request {"uploadUrl","url"}, 511 bytes each. Packs the agent's log, the upgrade log and the SDK's log as
// one .tar.gz of mode 0600, the last 4 MiB of each, with the device secret and every password masked, has
// common_put_file send it to "uploadUrl", and removes it. Answers 200 {"url": the request's}, or 400: "{}"
// when it cannot be packed, {"url content":"empty"}, {"url":"failed"}, {"urltxt":"failed"},
// {"upload":"failed"}. One at a time; others wait.
int uploadlog_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
