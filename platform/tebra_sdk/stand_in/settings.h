// SPDX-License-Identifier: Apache-2.0
// Where the broker is and how to reach it, from the environment:
//
//   TEBRA_SDK_BROKER          HOST[:PORT], [IPV6]:PORT, or a Unix socket's path
//                             default 127.0.0.1:1883, with TLS 127.0.0.1:8883
//   TEBRA_SDK_USERNAME        for the broker; default none
//   TEBRA_SDK_PASSWORD        for the broker; default none
//   TEBRA_SDK_CAFILE          TLS, trusting the certificates in this PEM file
//   TEBRA_SDK_TLS             1: TLS, trusting the system's certificates
//   TEBRA_SDK_REPORT_SECONDS  between two rounds of the report slots, 1 to 86400; default 5
//   TEBRA_SDK_CALL_SECONDS    after which an unanswered service call is given up, 1 to 86400; default 600
#pragma once

#include <optional>
#include <string>

struct LinkSettings {
    std::string host = "127.0.0.1"; // or the path of a Unix socket
    int port = 0;                   // 0 for a Unix socket
    std::string username;
    std::string password;
    std::string ca_file;
    bool tls = false;
    int report_seconds = 5;
    int call_seconds = 600;
};

// Reads the environment; nothing, with a line in the log, when a value cannot be used.
std::optional<LinkSettings> read_settings();
