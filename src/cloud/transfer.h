// SPDX-License-Identifier: Apache-2.0
// One libcurl transfer. Any thread, each with a transfer of its own.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

#include <curl/curl.h>

// How long a transfer may take, in seconds; a connect limit of 0 leaves libcurl's own.
struct TransferLimits {
    long connect;
    long whole;
};
inline constexpr TransferLimits POST_LIMITS{0, 15};
inline constexpr TransferLimits IMAGE_LIMITS{60, 600};

// A caller's buffer for a reply, terminated at its end at the latest.
struct ReplyBuffer {
    char *data;
    size_t size;
};
// Body callbacks of libcurl for a ReplyBuffer: copy the piece to the START of the buffer, over what earlier
// pieces left, as much as fits before the terminator. Return the whole piece's bytes, so that the transfer
// goes on.
size_t keep_last_piece(void *data, size_t size, size_t count, void *reply); // refuses null data or reply
size_t req_reply(void *data, size_t size, size_t count, void *reply);       // a null reply is passed over

// Options take effect in the order of the calls. What is passed by pointer must outlive the transfer, but for
// texts.
class Transfer {
  public:
    Transfer();
    explicit operator bool() const { return handle != nullptr; } // false: libcurl could not be initialised

    Transfer &connect_limit(long seconds);
    Transfer &whole_limit(long seconds);
    Transfer &url(const char *address);
    Transfer &header(const char *line); // collected; take_headers hands them over
    Transfer &take_headers();
    Transfer &post(const char *body, size_t length); // the body is not copied
    Transfer &write_with(curl_write_callback callback, void *destination);
    Transfer &write_to(FILE *file);
    Transfer &unverified(); // neither certificate nor host name of the server
    Transfer &progress();   // libcurl's meter on stderr
    Transfer &no_signals();
    CURL *get() const { return handle.get(); }

    CURLcode perform();

  private:
    struct Cleanup {
        void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };
    std::unique_ptr<curl_slist, Cleanup> headers;
    std::unique_ptr<CURL, Cleanup> handle;
};
