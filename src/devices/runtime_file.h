// SPDX-License-Identifier: Apache-2.0
// The file of today's client runtimes: a JSON array of {"mac", "name", "runTime", "timestamp",
// "onlineNotice"}.
#pragma once

#include <cstddef>

#include "core/handles.h"

inline constexpr char RUNTIME_FILE[] = "/aptmp/client_runTime.log";
inline constexpr size_t RUNTIME_TEXT_MAX = 16383; // characters of a runtime or day file

// The array in the file; null when the file does not hold one. `missing`, when given, says that it could not
// be read.
JsonRoot read_runtime_array(const char *path, bool *missing = nullptr);

// True when two MAC texts are equal once both are in capitals.
bool same_mac(const char *one, const char *other);
