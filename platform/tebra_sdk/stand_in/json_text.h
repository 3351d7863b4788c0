// SPDX-License-Identifier: Apache-2.0
// JSON documents of the link, to and from text.
#pragma once

#include "core/handles.h"

#include <string>

// One whole strict JSON document of bounded depth; null when it is none, and for the document "null".
JsonRoot parse_json(const std::string &text);

std::string json_text(const JsonRoot &root);
