// SPDX-License-Identifier: Apache-2.0
#include "https/signing.h"

#include <cstring>

#include "core/log.h"
#include "core/text.h"
#include "digests/digest.h"

int get_sign(const char *product_key, const char *device_identifier, const char *key, char *output,
             int output_size, long timestamp) {
    if (!product_key || !device_identifier || !key || !output || output_size <= 0) {
        LOG("param is NULL");
        return -1;
    }
    auto message = format_text<128>("%s_%s_%ld", device_identifier, product_key, timestamp);
    char signature[41] = {};
    hmac_sha1(message.text, static_cast<int>(strlen(message.text)), signature, key,
              static_cast<int>(strlen(key)));
    copy_text(output, static_cast<size_t>(output_size), signature);
    return 0;
}
