// SPDX-License-Identifier: Apache-2.0
// A libcurl client for the simulated cloud, and signatures as a device makes them.
#pragma once
#include "sim/cloud/cloud.h"
#include <curl/curl.h>
#include <string>
#include <vector>

inline constexpr const char *SERIAL = "SN0001", *PRODUCT = "PRODUCT1", *SECRET = "device-secret";

struct Call {
    std::string url;
    std::string method = "GET";
    std::string body = "";
    std::vector<std::string> headers = {};
    long timeout_ms = 10000;
};
struct Reply {
    CURLcode result = CURLE_OK;
    long status = 0;
    std::string body = "";
    std::vector<std::size_t> pieces = {}; // sizes of the write callbacks' bytes
};
Reply perform(const Call &call);

// The lower-case hexadecimal signature of "SERIAL_PRODUCT_TIMESTAMP" under `secret`.
std::string signature(const std::string &serial, const std::string &product, const std::string &timestamp,
                      const std::string &secret = SECRET);

// A rightly signed POST of {"sn", "productKey", "timestamp"} and `members` (", " and more members, or
// nothing).
Call signed_call(const cloudsim::Cloud &cloud, const char *path, const std::string &members = "");

// All members of an upgrade check by a device that runs `version`.
std::string check_members(const std::string &version);
