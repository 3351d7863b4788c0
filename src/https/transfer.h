// SPDX-License-Identifier: Apache-2.0
// One libcurl transfer, over http and https alone; redirects are not followed. Any thread, each with a
// transfer of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>

#include <curl/curl.h>

// Prepares libcurl for the whole process (CURL_GLOBAL_ALL). Once, before a second thread runs; false when
// libcurl cannot be used.
bool init_transfers();

// How long a transfer may take, in seconds.
inline constexpr long POST_SECONDS = 15;
inline constexpr long IMAGE_CONNECT_SECONDS = 60;
inline constexpr long IMAGE_SECONDS = 600;

// A caller's buffer for a reply; its last byte is always the terminator.
struct ReplyBuffer {
    char *data;
    size_t size;
};
// Body callbacks of libcurl for a ReplyBuffer: copy the piece to the START of the buffer, over what earlier
// pieces left there, as much as fits before the terminator. Both return the whole piece's bytes, so that the
// transfer goes on.
size_t keep_last_piece(void *data, size_t size, size_t count,
                       void *reply); // null data, reply or buffer ends the transfer
size_t req_reply(void *data, size_t size, size_t count, void *reply); // these are passed over

// Options are set in the order of the calls. What is passed by pointer must outlive the transfer, but for
// texts.
class Transfer {
  public:
    using Callback = size_t (*)(void *data, size_t size, size_t count, void *destination);

    Transfer();
    Transfer(Transfer &&) = delete; // libcurl holds pointers into it
    explicit operator bool() const {
        return handle != nullptr;
    } // false: libcurl cannot be used, nothing else may be

    Transfer &connect_limit(long seconds);
    Transfer &whole_limit(long seconds);
    Transfer &url(const char *address);
    Transfer &header(const char *line); // kept until take_headers
    Transfer &take_headers();
    Transfer &post(const char *body, size_t length); // the body is not copied
    Transfer &put(FILE *file, curl_off_t length);    // from where the file stands
    Transfer &multipart(curl_mime *parts);           // of this transfer; stays the caller's
    Transfer &write_with(Callback callback, void *destination);
    Transfer &undecoded(); // what the server calls encoded content is taken as it comes
    // How far the server's word is believed. As built by default, its certificate and host name are not
    // looked at. With ca_file(), both are checked against it and plain http is refused. How strong keys have
    // to be is the TLS library's choice, but that OpenSSL is held to its security level 2 (112 bits).
    Transfer &trust();
    Transfer &progress_meter(); // libcurl's, on stderr
    Transfer &no_signals();

    CURLcode perform();
    // Why the server could not be verified, when `result` of perform() comes of that; else null, and always
    // when nothing is verified.
    const char *distrust(CURLcode result) const;
    long http_status() const; // after perform; 0 when there was no answer
    CURL *get() const { return handle.get(); }

  private:
    void only(const char *schemes);
    void require(CURLcode set);

    struct Cleanup {
        void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };
    std::unique_ptr<curl_slist, Cleanup> headers;
    std::unique_ptr<CURL, Cleanup> handle;
    bool complete = true;
    std::array<char, CURL_ERROR_SIZE> reason = {}; // of a failure, where servers are verified
};
