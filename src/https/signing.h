// SPDX-License-Identifier: Apache-2.0
// The signature of the agent's own HTTPS requests. Any thread.
#pragma once

// HMAC-SHA1 (RFC 2104) under `key` of "IDENTIFIER_PRODUCTKEY_TIMESTAMP" (seconds since the epoch; 127
// characters at most), as 40 lower-case hex digits cut to output_size - 1 characters. 0; -1 for a null
// argument or a size below 1.
int get_sign(const char *product_key, const char *device_identifier, const char *key, char *output,
             int output_size, long timestamp);
