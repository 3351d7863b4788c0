// SPDX-License-Identifier: Apache-2.0
// A limit for library calls that have none of their own, for as long as the object lives. When the time is
// over, the socket is shut down, so that whoever waits for it finds it closed, and the calling thread's
// system call is interrupted, once a second until the object is gone. One at a time per thread, in a
// program that leaves SIGRTMIN to it. Where the system has no timer left there is no limit.
#pragma once

class TimeLimit {
  public:
    // A socket of -1 leaves it at the interruption, for a call that makes its socket itself.
    TimeLimit(int socket, unsigned millis);
    ~TimeLimit();
    TimeLimit(const TimeLimit &) = delete;
    TimeLimit &operator=(const TimeLimit &) = delete;

    // True once the time is over.
    static bool over();
};
