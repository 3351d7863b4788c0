// SPDX-License-Identifier: Apache-2.0
// Digests and the check of a request's signature, by OpenSSL alone: what checks the agent must share none of
// its code.
#pragma once
#include "cloud.h"
#include <json-c/json.h>

namespace cloudsim {

std::string md5_hex(std::string_view bytes); // RFC 1321, 32 lower-case digits
std::string hmac_sha1_hex(const std::string &key,
                          const std::string &message); // RFC 2104, 40 lower-case digits

// Why a request is refused: the "code" and "message" of the answer. Code 0 is acceptance.
struct Verdict {
    int code = 0;
    std::string text = "ok";
};

// What the signature covers.
struct Identity {
    std::string serial;
    std::string product;
    std::int64_t timestamp = 0; // seconds since the epoch
};

// Reads the identity from "sn", "productKey" and "timestamp": of a JSON body, texts and an integer; of form
// fields, all texts.
Verdict read_identity(json_object *body, Identity *identity);
Verdict read_identity(const std::map<std::string, std::string> &fields, Identity *identity);

// Checks `sign`, the lower-case hexadecimal HMAC-SHA1 of "SERIAL_PRODUCT_TIMESTAMP" under the device's
// secret.
Verdict check_signature(const Identity &identity, const std::string &sign, const std::vector<Device> &devices,
                        std::chrono::seconds window);

} // namespace cloudsim
