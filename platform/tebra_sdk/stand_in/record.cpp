// SPDX-License-Identifier: Apache-2.0
#include "record.h"

#include <algorithm>
#include <cstring>
#include <mosquitto.h>

namespace {

const property_row NO_PROPERTIES[] = {{}};
const service_row NO_SERVICES[] = {{}};

template <size_t N>
std::string field(const char (&text)[N]) {
    return {text, strnlen(text, N)};
}

template <typename Row>
const Row *find_row(const Row *rows, const std::string &name) {
    for (const Row *row = rows; row->name; row++)
        if (name == row->name) return row;
    return nullptr;
}

} // namespace

bool is_topic_level(const std::string &text) {
    bool plain = std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '/' || c == '+' || c == '#' || c == '\x7f';
    });
    return !text.empty() && plain &&
           mosquitto_validate_utf8(text.c_str(), static_cast<int>(text.size())) == MOSQ_ERR_SUCCESS;
}

std::optional<Record> read_record(const global_config *config) {
    if (!config) return std::nullopt;
    Record record = {
        .product_key = field(config->product_key),
        .serial_number = field(config->serial_number),
        .mac = field(config->mac),
        .software_version = field(config->software_version),
        .hardware_version = field(config->hardware_version),
        .vendor = field(config->vendor),
        .area_code = field(config->area_code),
        .cache_file = field(config->cache_file_path),
        .log_file = field(config->log_file_path),
        .properties = config->property_map ? config->property_map : NO_PROPERTIES,
        .services = config->service_map ? config->service_map : NO_SERVICES,
        .other = config->other_handle,
        .upgrade = config->upgrade,
    };
    if (!is_topic_level(record.product_key) || !is_topic_level(record.serial_number)) return std::nullopt;
    return record;
}

const property_row *find_property(const Record &record, const std::string &name) {
    return find_row(record.properties, name);
}

const service_row *find_service(const Record &record, const std::string &name) {
    return find_row(record.services, name);
}
