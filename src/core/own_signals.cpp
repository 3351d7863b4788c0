// SPDX-License-Identifier: Apache-2.0
#include "core/own_signals.h"

#include <csignal>
#include <initializer_list>

OwnSignals::OwnSignals(short more_flags) : error_(posix_spawnattr_init(&attributes_)) {
    const auto flags = static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | more_flags);
    sigset_t none, ours;
    sigemptyset(&none);
    sigemptyset(&ours);
    for (int number : {SIGPIPE, SIGINT, SIGQUIT, SIGTERM, SIGHUP})
        sigaddset(&ours, number);
    if (error_ == 0) error_ = posix_spawnattr_setsigmask(&attributes_, &none);
    if (error_ == 0) error_ = posix_spawnattr_setsigdefault(&attributes_, &ours);
    if (error_ == 0) error_ = posix_spawnattr_setflags(&attributes_, flags);
}

OwnSignals::~OwnSignals() {
    posix_spawnattr_destroy(&attributes_);
}
