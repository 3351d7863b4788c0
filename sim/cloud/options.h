// SPDX-License-Identifier: Apache-2.0
// The command line of cloudsim.
#pragma once
#include "cloud.h"

namespace cloudsim {

struct CommandLine {
    Options options;
    int port = 11443;
    Scheme scheme = Scheme::https;
    std::string control; // path of the control socket; empty: none
    std::string log;     // path of the log; empty: standard output
    std::optional<Firmware> firmware;
    std::optional<std::string> settings;
    std::vector<std::pair<std::string, std::string>> backups; // name, bytes
    std::vector<Fault> faults;
    bool help = false;
};

// Throws std::invalid_argument with a message for people.
CommandLine parse_command_line(const std::vector<std::string> &arguments);
std::string usage();

// The devices of a simulated router's state file: what the upgrade check signs with ("vrop.fota") and what
// the helper programs sign with ("vrop.qvtkconfig"). Throws std::invalid_argument when there is none.
std::vector<Device> read_devices(const std::string &path);

} // namespace cloudsim
