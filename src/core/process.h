// SPDX-License-Identifier: Apache-2.0
// Programs run by a list of arguments: no shell reads them. Any thread.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "core/handles.h"

using Arguments = std::vector<std::string>; // the first is the program, looked for in PATH

// A program that runs; what still runs when this goes is killed and waited for.
class Process {
  public:
    // Starts it with the stream that is `piped` in a pipe and the others at /dev/null, with every signal as
    // the system has it. `error()` is the error number when it could not be started: ENOENT when there is no
    // such program.
    enum class Piped { output, error, nothing };
    explicit Process(const Arguments &arguments, Piped piped = Piped::output);
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    explicit operator bool() const { return pid_ > 0; }
    int error() const { return error_; }
    int output() const { return output_.get(); } // the pipe's end, non-blocking
    void signal(int number) const;
    bool has_ended(); // without waiting
    int wait();       // until it has ended; the exit status, -1 for one that a signal ended
    // Everything that it says until it ends, cut to `limit` bytes; then as wait(). When it says nothing for
    // that long, it is killed.
    int read_all(size_t limit, int silence_millis, std::string *text);
    // Whether it closes the pipe, as it does by ending, within that time of the system's clock.
    bool closes_within(int millis) const;

  private:
    bool take_status(int options);
    pid_t pid_ = -1;
    int status_ = -1;
    int error_ = 0;
    Descriptor output_;
};

// Runs a program to its end. The exit status, -1 when it could not be run or a signal ended it.
int run_program(const Arguments &arguments);
