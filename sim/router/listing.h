// SPDX-License-Identifier: Apache-2.0
// What routersim prints about itself.
#pragma once

#include <string>

namespace router {

// Every object and method, a line each, with its arguments.
std::string listing();

} // namespace router
