// SPDX-License-Identifier: Apache-2.0
// The files of client runtimes: JSON arrays with one element per client, "mac", "name" and "runTime"
// (seconds), and in today's file "timestamp" (when runTime was taken) and "onlineNotice".
#pragma once

#include <cstddef>
#include <string>
#include <sys/stat.h>

#include "core/handles.h"
#include "core/log.h"

inline constexpr char RUNTIME_FILE[] = "/aptmp/client_runTime.log";
inline constexpr mode_t RUNTIME_FILE_MODE = 0666;
inline constexpr size_t RUNTIME_TEXT_MAX = 16383; // characters of a file; longer arrays are cut

// The array in the file, null when there is none. `open_failed` says whether the file could not be read at
// all.
JsonRoot read_runtime_array(const char *path, bool *open_failed);

// The text of an array as it goes into a file.
std::string runtime_text(json_object *array);

// Replaces the file of today's runtimes, whole or not at all, and logs how that went in the caller's name.
void replace_runtime_file(json_object *array, LogSite site = LogSite::here());

// True when the MAC text of an entry equals `mac` after its letters have become capitals.
bool is_entry_of(json_object *entry, const char *mac);
