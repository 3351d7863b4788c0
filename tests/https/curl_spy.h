// SPDX-License-Identifier: Apache-2.0
// Stands between the agent and libcurl: remembers the options that are set, and can change a whole transfer's
// limit so that a silent server costs milliseconds. Link curl_spy.
#pragma once

#include <string>
#include <vector>

namespace curl_spy {

// "OPTION=value" in the order of the calls since the last clear; pointers other than texts as "set" or
// "null".
std::vector<std::string> options();
void clear();

// The limit that transfers really get, whatever they ask for; 0: what they ask for.
void limit_to(long millis);
// Makes curl_easy_init fail while on.
void fail_init(bool on);

} // namespace curl_spy
