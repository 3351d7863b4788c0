// SPDX-License-Identifier: Apache-2.0
// The account of the router's web pages. The daemon keeps its password in base64 (RFC 4648). Any thread.
#pragma once

#include <string>

// A password as the daemon keeps it; false for an empty one, which base64 has no text for, and for null.
bool encode_passwd(const char *passwd, std::string *text);

// Gives the user another password, both in plain text. 0; -1 when the daemon refuses, as it does for a wrong
// user or old password, or when a password is empty.
int set_passwd(const char *user, const char *old_passwd, const char *new_passwd);
