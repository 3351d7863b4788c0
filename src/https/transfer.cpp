// SPDX-License-Identifier: Apache-2.0
#include "https/transfer.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "https/ca_file.h"

namespace {

void copy_piece(const void *data, size_t length, const ReplyBuffer *reply) {
    if (reply->size == 0) return;
    memcpy(reply->data, data, std::min(length, reply->size - 1));
    reply->data[reply->size - 1] = '\0';
}

bool verifies_servers() {
    return ca_file()[0] != '\0';
}

// OpenSSL alone reads its security levels in a list of ciphers; other libraries ignore them, or refuse the
// list.
bool has_security_levels() {
    const char *library = curl_version_info(CURLVERSION_NOW)->ssl_version;
    return library != nullptr && strncmp(library, "OpenSSL", 7) == 0;
}

bool has_room(const void *reply) {
    return reply != nullptr && static_cast<const ReplyBuffer *>(reply)->data != nullptr;
}

} // namespace

size_t keep_last_piece(void *data, size_t size, size_t count, void *reply) {
    if (!data || !has_room(reply)) return static_cast<size_t>(-1);
    return req_reply(data, size, count, reply);
}

size_t req_reply(void *data, size_t size, size_t count, void *reply) {
    if (data && has_room(reply)) copy_piece(data, size * count, static_cast<const ReplyBuffer *>(reply));
    return size * count;
}

bool init_transfers() {
    return curl_global_init(CURL_GLOBAL_ALL) == CURLE_OK;
}

Transfer::Transfer() : handle(curl_easy_init()) {
    if (handle) only("http,https");
}

// Allows these schemes alone, so that no address names a file of the device.
void Transfer::only(const char *schemes) {
    require(curl_easy_setopt(get(), CURLOPT_PROTOCOLS_STR, schemes));
}

// Takes the result of an option that the transfer must not go without.
void Transfer::require(CURLcode set) {
    if (set != CURLE_OK) complete = false;
}

Transfer &Transfer::connect_limit(long seconds) {
    curl_easy_setopt(get(), CURLOPT_CONNECTTIMEOUT, seconds);
    return *this;
}

Transfer &Transfer::whole_limit(long seconds) {
    curl_easy_setopt(get(), CURLOPT_TIMEOUT, seconds);
    return *this;
}

Transfer &Transfer::url(const char *address) {
    curl_easy_setopt(get(), CURLOPT_URL, address);
    return *this;
}

Transfer &Transfer::header(const char *line) {
    curl_slist *longer = curl_slist_append(headers.get(), line);
    if (!longer) {
        complete = false;
        return *this;
    }
    (void)headers.release(); // it is part of the longer list now
    headers.reset(longer);
    return *this;
}

Transfer &Transfer::take_headers() {
    curl_easy_setopt(get(), CURLOPT_HTTPHEADER, headers.get());
    return *this;
}

Transfer &Transfer::post(const char *body, size_t length) {
    curl_easy_setopt(get(), CURLOPT_POST, 1L);
    curl_easy_setopt(get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(length));
    curl_easy_setopt(get(), CURLOPT_POSTFIELDS, body);
    return *this;
}

Transfer &Transfer::put(FILE *file, curl_off_t length) {
    curl_easy_setopt(get(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(get(), CURLOPT_READDATA, file);
    curl_easy_setopt(get(), CURLOPT_INFILESIZE_LARGE, length);
    return *this;
}

Transfer &Transfer::multipart(curl_mime *parts) {
    curl_easy_setopt(get(), CURLOPT_MIMEPOST, parts);
    return *this;
}

Transfer &Transfer::write_with(Callback callback, void *destination) {
    curl_easy_setopt(get(), CURLOPT_WRITEFUNCTION, callback);
    curl_easy_setopt(get(), CURLOPT_WRITEDATA, destination);
    return *this;
}

Transfer &Transfer::undecoded() {
    curl_easy_setopt(get(), CURLOPT_HTTP_CONTENT_DECODING, 0L);
    return *this;
}

Transfer &Transfer::trust() {
    const bool verify = verifies_servers();
    require(curl_easy_setopt(get(), CURLOPT_SSL_VERIFYPEER, verify ? 1L : 0L));
    require(curl_easy_setopt(get(), CURLOPT_SSL_VERIFYHOST, verify ? 2L : 0L));
    if (!verify) return *this;
    only("https");
    require(curl_easy_setopt(get(), CURLOPT_CAINFO, ca_file()));
    require(curl_easy_setopt(get(), CURLOPT_CAPATH, nullptr));
    if (has_security_levels())
        require(curl_easy_setopt(get(), CURLOPT_SSL_CIPHER_LIST, "DEFAULT:@SECLEVEL=2"));
    curl_easy_setopt(get(), CURLOPT_ERRORBUFFER, reason.data());
    return *this;
}

Transfer &Transfer::progress_meter() {
    curl_easy_setopt(get(), CURLOPT_NOPROGRESS, 0L);
    return *this;
}

Transfer &Transfer::no_signals() {
    curl_easy_setopt(get(), CURLOPT_NOSIGNAL, 1L);
    return *this;
}

CURLcode Transfer::perform() {
    return complete ? curl_easy_perform(get()) : CURLE_OUT_OF_MEMORY;
}

const char *Transfer::distrust(CURLcode result) const {
    constexpr CURLcode CAUSES[] = {CURLE_UNSUPPORTED_PROTOCOL, CURLE_SSL_CONNECT_ERROR,
                                   CURLE_PEER_FAILED_VERIFICATION, CURLE_SSL_CIPHER,
                                   CURLE_SSL_CACERT_BADFILE};
    if (!verifies_servers()) return nullptr;
    if (std::find(std::begin(CAUSES), std::end(CAUSES), result) == std::end(CAUSES)) return nullptr;
    return reason[0] != '\0' ? reason.data() : curl_easy_strerror(result);
}

long Transfer::http_status() const {
    long status = 0;
    curl_easy_getinfo(get(), CURLINFO_RESPONSE_CODE, &status);
    return status;
}
