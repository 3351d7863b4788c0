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

// The device of a simulated router by the JSON text of its state: the serial number of "vrop.ftinfo" (the MAC
// when that is empty) with product key and secret of "vrop.qvtkconfig". Throws std::invalid_argument when one
// is not there.
Device device_of_home(const std::string &state);

} // namespace cloudsim
