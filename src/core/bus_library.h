// SPDX-License-Identifier: Apache-2.0
// The bus library, for the sources that call it: its headers carry no linkage of their own throughout, and
// define common words as macros.
#pragma once

#include <libubus.h>

extern "C" {
#include <libubox/blobmsg_json.h>
}

#undef fallthrough
