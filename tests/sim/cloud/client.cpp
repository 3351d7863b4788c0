// SPDX-License-Identifier: Apache-2.0
#include "client.h"

#include "sim/cloud/signature.h"
#include <memory>

namespace {

std::size_t take(char *bytes, std::size_t, std::size_t count, void *reply) {
    static_cast<Reply *>(reply)->body.append(bytes, count);
    static_cast<Reply *>(reply)->pieces.push_back(count);
    return count;
}

} // namespace

Reply perform(const Call &call) {
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
    curl_slist *headers = nullptr;
    for (const std::string &header : call.headers)
        headers = curl_slist_append(headers, header.c_str());
    Reply reply;
    curl_easy_setopt(curl.get(), CURLOPT_URL, call.url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT_MS, call.timeout_ms);
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers);
    if (call.method != "GET") {
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(call.body.size()));
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, call.body.data());
        curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, call.method.c_str());
    }
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, take);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply);
    reply.result = curl_easy_perform(curl.get());
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &reply.status);
    curl_slist_free_all(headers);
    return reply;
}

std::string signature(const std::string &serial, const std::string &product, const std::string &timestamp,
                      const std::string &secret) {
    return cloudsim::hmac_sha1_hex(secret, serial + "_" + product + "_" + timestamp);
}

Call signed_call(const cloudsim::Cloud &cloud, const char *path, const std::string &members) {
    Call call{.url = cloud.url(path), .method = "POST"};
    call.body = std::string(R"({"sn":")") + SERIAL + R"(","productKey":")" + PRODUCT +
                R"(","timestamp":1700000000)" + members + "}";
    call.headers = {"Content-Type: application/json", "sign: " + signature(SERIAL, PRODUCT, "1700000000")};
    return call;
}

std::string check_members(const std::string &version) {
    return R"(,"mac":"A1B2C3D4E5F6","checkType":2,"manufacturer":"M","hardwareVersion":"H","firmwareVersion":")" +
           version + R"(","areaCode":"11")";
}
