// SPDX-License-Identifier: Apache-2.0
// What start_sdk was given, checked: the identity as texts of its own, the agent's tables where they lie.
#pragma once

#include "tebra_sdk.h"

#include <optional>
#include <string>

struct Record {
    std::string product_key;
    std::string serial_number;
    std::string mac;
    std::string software_version;
    std::string hardware_version;
    std::string vendor;
    std::string area_code;
    std::string cache_file;
    std::string log_file;
    const property_row *properties; // never null
    const service_row *services;    // never null
    const other_handle_table *other;
    tebra_upgrade_callback upgrade;
};

// Nothing when the record cannot be used: no product key, no serial number, or one of them with a character
// that a topic level cannot hold. An unterminated text ends with its field.
std::optional<Record> read_record(const global_config *config);

// The row of that name, or null.
const property_row *find_property(const Record &record, const std::string &name);
const service_row *find_service(const Record &record, const std::string &name);

// Whether the text can stand between two slashes of a topic that is published to.
bool is_topic_level(const std::string &text);
