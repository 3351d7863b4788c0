// SPDX-License-Identifier: Apache-2.0
// The check for new firmware, against libcurl posting the same request.
#include <cinttypes>
#include <ctime>
#include <memory>

#include <curl/curl.h>

#include "benchmarks.h"
#include "core/handles.h"
#include "core/json_path.h"
#include "core/text.h"
#include "https/requests.h"
#include "https/signing.h"
#include "upgrade/https_upgrade.h"

namespace bench {

namespace {

struct Cleanup {
    void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};
using Headers = std::unique_ptr<curl_slist, Cleanup>;

size_t append(char *data, size_t size, size_t count, void *text) {
    static_cast<std::string *>(text)->append(data, size * count);
    return size * count;
}

// The agent's request with what does not change made beforehand.
struct BareCheck {
    Text<1024> body;
    Headers headers;

    BareCheck() {
        const upgrade_request_context &known = upgrade_request;
        const time_t now = time(nullptr);
        body = format_text<1024>(
            R"({"productKey":"%s","sn":"%s","timestamp":%)" PRId64
            R"(,"mac":"%s","checkType":2,"manufacturer":"%s","hardwareVersion":"%s","firmwareVersion":"%s",)"
            R"("areaCode":"%s"})",
            known.product_key, known.sn, int64_t{now}, known.mac, known.manufacturer, known.hardware_version,
            known.firmware_version, known.area_code);
        char sign[64] = {};
        get_sign(known.product_key, known.sn, known.device_secret, sign, sizeof sign, now);
        headers.reset(curl_slist_append(nullptr, "Content-Type: application/json"));
        curl_slist_append(headers.get(), format_text<128>("sign: %s", sign).text);
    }

    // True when the server takes it.
    bool operator()() const {
        std::unique_ptr<CURL, Cleanup> curl(curl_easy_init());
        std::string reply;
        curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
        curl_easy_setopt(curl.get(), CURLOPT_URL, upgrade_request.check_url);
        curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body.text);
        curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, append);
        curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply);
        curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
        curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
        return curl_easy_perform(curl.get()) == CURLE_OK && reply.find("\"code\":0") != std::string::npos;
    }
};

void check_upgrade(benchmark::State &state) {
    curl_global_init(CURL_GLOBAL_ALL);
    const BareCheck bare;
    compare(
        state, {.with = "libcurl's POST"}, [] { return query_upgrade() == 0; }, [&] { return bare(); });
}

} // namespace

void add_upgrade_check() {
    benchmark::RegisterBenchmark("check for new firmware", check_upgrade)->UseManualTime();
}

} // namespace bench
