// SPDX-License-Identifier: Apache-2.0
#include "settings.h"

#include "core/log.h"

#include <cstdlib>
#include <sys/un.h>

namespace {

constexpr int PLAIN_PORT = 1883;
constexpr int TLS_PORT = 8883;
constexpr int MAX_PORT = 65535;
constexpr int MAX_SECONDS = 86400;

std::string environment(const char *name) {
    const char *value = getenv(name);
    return value ? value : "";
}

// A whole decimal number of 1 to `limit`, or 0.
int number(const std::string &text, int limit) {
    char *end = nullptr;
    long value = strtol(text.c_str(), &end, 10);
    bool good = !text.empty() && *end == 0 && value >= 1 && value <= limit;
    return good ? static_cast<int>(value) : 0;
}

bool read_seconds(const char *name, int *seconds) {
    std::string text = environment(name);
    if (text.empty()) return true;
    int value = number(text, MAX_SECONDS);
    if (value == 0) {
        LOG("%s is not a number of seconds: %s", name, text.c_str());
        return false;
    }
    *seconds = value;
    return true;
}

// "host", "host:port", "[v6]", "[v6]:port", "v6" or "/path"
bool read_address(const std::string &address, LinkSettings *settings) {
    if (address.starts_with('/')) {
        settings->host = address;
        settings->port = 0;
        return address.size() < sizeof(sockaddr_un::sun_path);
    }
    size_t colon = address.rfind(':');
    bool bracketed = address.starts_with('[');
    size_t bracket = bracketed ? address.find(']') : std::string::npos;
    if (bracketed && bracket == std::string::npos) return false;
    bool has_port =
        colon != std::string::npos && (bracketed ? colon == bracket + 1 : address.find(':') == colon);
    if (has_port) settings->port = number(address.substr(colon + 1), MAX_PORT);
    settings->host =
        bracketed ? address.substr(1, bracket - 1) : address.substr(0, has_port ? colon : address.size());
    return settings->port != 0 && !settings->host.empty();
}

} // namespace

std::optional<LinkSettings> read_settings() {
    LinkSettings settings;
    settings.username = environment("TEBRA_SDK_USERNAME");
    settings.password = environment("TEBRA_SDK_PASSWORD");
    settings.ca_file = environment("TEBRA_SDK_CAFILE");
    settings.tls = !settings.ca_file.empty() || environment("TEBRA_SDK_TLS") == "1";
    settings.port = settings.tls ? TLS_PORT : PLAIN_PORT;

    std::string address = environment("TEBRA_SDK_BROKER");
    if (!address.empty() && !read_address(address, &settings)) {
        LOG("TEBRA_SDK_BROKER cannot be used: %s", address.c_str());
        return std::nullopt;
    }
    if (!read_seconds("TEBRA_SDK_REPORT_SECONDS", &settings.report_seconds) ||
        !read_seconds("TEBRA_SDK_CALL_SECONDS", &settings.call_seconds))
        return std::nullopt;
    return settings;
}
