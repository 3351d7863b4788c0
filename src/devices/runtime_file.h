// SPDX-License-Identifier: Apache-2.0
// The files of client runtimes: JSON arrays with one element per client, "mac", "name" and "runTime"
// (seconds), and in today's file "timestamp" (when runTime was taken) and "onlineNotice". Today's file is
// written here and nowhere else, under one lock. Any thread may call these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "core/handles.h"
#include "core/log.h"

inline constexpr char RUNTIME_FILE[] = "/aptmp/client_runTime.log";
inline constexpr size_t RUNTIME_TEXT_MAX = 16383; // characters of a file

// The array in the file, null when there is none. `open_failed` says whether the file could not be read at
// all.
JsonRoot read_runtime_array(const char *path, bool *open_failed);

// The text of an array as it goes into a file, without the last entries where all have no room.
std::string runtime_text(json_object *array);

// What becomes of today's file: makes the new array of the present one, or null to leave the file as it is.
using RuntimeChange = std::function<JsonRoot(json_object *entries)>;

enum class RuntimeUpdate {
    no_file,  // it could not be read
    no_array, // it holds no JSON array
    kept,     // the change made nothing of it
    replaced,
    failed, // as it was, since the new one could not be written
};
// Reads today's file, changes it and replaces it, whole or not at all; nobody else writes in between. The
// change is called at most once, with the array that the file holds, and must not come back here. Logs
// nothing.
RuntimeUpdate update_runtime_file(const RuntimeChange &change);
// Replaces today's file whatever it holds; false, with the file as it was, when it cannot be written.
bool write_runtime_file(json_object *array);
// Ends today's file.
void remove_runtime_file();

// Logs how an update's replacement went, in the caller's name; nothing when there was none.
void log_replacement(RuntimeUpdate result, LogSite site = LogSite::here());

// True when the entry is of the client `mac`, whatever the colons: its digits are those of `mac` in capitals.
// An entry in lower case belongs to nobody.
bool is_entry_of(json_object *entry, const char *mac);

// Numbers of an entry, which others may have written: without "runTime" 0, without "timestamp" now. None is
// so large that sums of them overflow.
int64_t entry_runtime(json_object *entry);
int64_t entry_timestamp(json_object *entry);
