// SPDX-License-Identifier: Apache-2.0
// Stands in /usr/bin for the helper programs: notes how it was called and exits as told.
#pragma once

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

#include "support/text_file.h"

class HelperStub {
  public:
    // Exit statuses of the runs to come; the last one stays.
    explicit HelperStub(const std::string &program, const std::string &statuses = "0")
        : runs_("/tmp/" + program + ".runs"), statuses_("/tmp/" + program + ".statuses") {
        const std::string path = "/usr/bin/" + program;
        std::filesystem::remove(path);
        std::ofstream(path) << "#!/bin/sh\necho \"$*\" >> " << runs_ << "\nread first rest < " << statuses_
                            << "\n[ -z \"$rest\" ] || echo $rest > " << statuses_ << "\nexit $first\n";
        std::filesystem::permissions(path, std::filesystem::perms::all);
        answer(statuses);
    }
    void answer(const std::string &statuses) { std::ofstream(statuses_) << statuses << "\n"; }
    // The arguments of each run since the last call, one run a line.
    std::string take_runs() {
        std::string runs = text_of(runs_);
        std::filesystem::remove(runs_);
        return runs;
    }

  private:
    std::string runs_, statuses_;
};
