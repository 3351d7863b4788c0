// SPDX-License-Identifier: Apache-2.0
// Stand-ins in /usr/bin for the programs that the agent runs.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "support/text_file.h"

// Puts a shell script into /usr/bin.
inline void script(const std::string &program, const std::string &lines) {
    const std::string path = "/usr/bin/" + program;
    std::filesystem::remove(path);
    std::ofstream(path) << "#!/bin/sh\n" << lines << "\n";
    std::filesystem::permissions(path, std::filesystem::perms::all);
}

// A helper program that notes how it was called and exits as told.
struct HelperStub {
    explicit HelperStub(const std::string &program) {
        script(program, "echo \"$*\" >>/tmp/runs\nread first rest </tmp/statuses\n"
                        "[ -z \"$rest\" ] || echo $rest >/tmp/statuses\nexit $first");
        answer("0");
    }
    // Exit statuses of the runs to come; the last one stays.
    void answer(const std::string &statuses) { std::ofstream("/tmp/statuses") << statuses << "\n"; }
    // The arguments of each run since the last call, one run a line.
    std::string take_runs() {
        std::string runs = text_of("/tmp/runs");
        std::filesystem::remove("/tmp/runs");
        return runs;
    }
};
