// SPDX-License-Identifier: Apache-2.0
#include "signature.h"

#include "json.h"
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <openssl/evp.h>
#include <openssl/hmac.h>

namespace cloudsim {
namespace {

enum Refusal {
    malformed = 40000,
    unsigned_request = 40100,
    wrong_signature = 40101,
    stale = 40300,
    unknown_product = 40400,
    unknown_device = 40401,
};

std::string hex(const unsigned char *bytes, unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count; i++) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    return text;
}

bool matches(const std::string &pattern, const std::string &text) {
    return pattern == "*" || pattern == text;
}

Verdict check_presence(const Identity &identity, bool timestamp_read) {
    if (identity.serial.empty()) return {malformed, "sn missing"};
    if (identity.product.empty()) return {malformed, "productKey missing"};
    if (!timestamp_read) return {malformed, "timestamp missing or not a number"};
    return {};
}

const Device *find_device(const Identity &identity, const std::vector<Device> &devices) {
    auto found = std::ranges::find_if(devices, [&](const Device &device) {
        return matches(device.product, identity.product) && matches(device.serial, identity.serial);
    });
    return found == devices.end() ? nullptr : &*found;
}

} // namespace

std::string md5_hex(std::string_view bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_md5(), nullptr);
    return hex(digest, length);
}

std::string hmac_sha1_hex(const std::string &key, const std::string &message) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()),
         reinterpret_cast<const unsigned char *>(message.data()), message.size(), digest, &length);
    return hex(digest, length);
}

Verdict read_identity(json_object *body, Identity *identity) {
    if (!json_object_is_type(body, json_type_object)) return {malformed, "body is not a JSON object"};
    identity->serial = text_member(body, "sn");
    identity->product = text_member(body, "productKey");
    json_object *timestamp = nullptr;
    json_object_object_get_ex(body, "timestamp", &timestamp);
    identity->timestamp = json_object_get_int64(timestamp);
    return check_presence(*identity, json_object_is_type(timestamp, json_type_int));
}

Verdict read_identity(const std::map<std::string, std::string> &fields, Identity *identity) {
    auto field = [&](const char *name) {
        auto found = fields.find(name);
        return found == fields.end() ? std::string() : found->second;
    };
    identity->serial = field("sn");
    identity->product = field("productKey");
    std::string digits = field("timestamp");
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), identity->timestamp);
    return check_presence(*identity, error == std::errc() && end == digits.data() + digits.size());
}

Verdict check_signature(const Identity &identity, const std::string &sign, const std::vector<Device> &devices,
                        std::chrono::seconds window) {
    auto of_product = [&](const Device &device) { return matches(device.product, identity.product); };
    if (std::ranges::none_of(devices, of_product))
        return {unknown_product, "unknown product " + identity.product};
    const Device *device = find_device(identity, devices);
    if (device == nullptr) return {unknown_device, "unknown device " + identity.serial};
    std::chrono::seconds now(std::time(nullptr));
    if (window.count() > 0 &&
        (identity.timestamp < (now - window).count() || identity.timestamp > (now + window).count()))
        return {stale, "timestamp too far from now"};
    if (sign.empty()) return {unsigned_request, "no sign header"};
    std::string text = identity.serial + "_" + identity.product + "_" + std::to_string(identity.timestamp);
    if (sign != hmac_sha1_hex(device->secret, text)) return {wrong_signature, "wrong signature"};
    return {};
}

} // namespace cloudsim
