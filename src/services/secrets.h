// SPDX-License-Identifier: Apache-2.0
// Masks what nobody outside may read in a log: device secret, passwords and keys. Any thread.
#pragma once

#include <string>
#include <vector>

// A line of text with "****" for the value of every member, setting or assignment whose name tells of a
// secret ("wifi2gPwd", "devSecret", "KeyPassphrase", ...), in JSON, in JSON within JSON, and as name:value,
// where all behind it goes; and for each of the given values wherever it stands, also where the line's end
// cuts it.
std::string masked(const std::string &text, const std::vector<std::string> &values);

// What the registration record, the enrolment cache and the configuration daemon hold at present: secrets,
// Wi-Fi keys, account and provider passwords, each as it is and as JSON writes it. Those of fewer than four
// characters are left out, since they would mask half of a text.
std::vector<std::string> present_secrets();
