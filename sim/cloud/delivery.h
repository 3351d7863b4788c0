// SPDX-License-Identifier: Apache-2.0
// Sending an HTTP answer, to the byte as a fault wants it.
#pragma once
#include "cloud.h"
#include "connection.h"

namespace cloudsim {

// `answer` is head and body. False when the connection must not go on: the fault ended it or the peer is
// gone.
bool deliver(Connection &connection, const std::string &answer, const std::optional<Fault> &fault);

} // namespace cloudsim
