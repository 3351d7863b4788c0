// SPDX-License-Identifier: Apache-2.0
// The file that keeps the enrolment, a JSON object with the member "secret".
#pragma once

#include <string>

// Writes the file, whole or not at all, with mode 0600; does nothing without a path or a secret. The log says
// when it cannot be written.
void write_enrolment(const std::string &path, const std::string &secret);
