// SPDX-License-Identifier: Apache-2.0
// The key=value store of the storage features: external disk, file sharing, home content cache.
#pragma once

#include <string>

inline constexpr char STORAGE_FILE[] = "/apetc/rvxa/ecm.conf";

// Creates the file with its defaults when it is missing; one that is there is left as it is. 0 when it is
// there, -1 when it could not be created. Called by start-up alone.
int ecm_init();

// Reads the file's text; "" when there is none. False when it cannot be read whole, as when it is longer than
// 64 KiB.
bool read_storage(std::string *text);
// The number that a key has in such a text, `otherwise` when it has none.
int storage_number(const std::string &text, const char *key, int otherwise);
// The text with another number for the key: in its line, or in a line of its own at the end. Everything else,
// comments and order too, stays as it is.
std::string with_storage_number(const std::string &text, const char *key, int number);
// Replaces the file, whole or not at all; false when that fails.
bool replace_storage(const std::string &text);
