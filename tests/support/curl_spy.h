// SPDX-License-Identifier: Apache-2.0
// Stands between the agent and libcurl. Link curl_spy. Of the test's thread.
#pragma once

#include <map>
#include <string>
#include <vector>

struct CurlSpy {
    // The options that were set, "OPTION=value", in the order of the calls; pointers other than texts as
    // "set" or "null".
    std::vector<std::string> options;
    // The milliseconds that transfers really get, by the seconds that they ask for, so that a silent server
    // costs little.
    std::map<long, long> limits;
    bool init_fails = false; // makes curl_easy_init fail
};
inline CurlSpy curl_spy;
