// SPDX-License-Identifier: Apache-2.0
// What the bus answers, as a JSON document. For core/bus.
#pragma once

#include "core/handles.h"

struct blob_attr;

namespace bus {

// The document that parsing the message's compact JSON text gives; null when that text is no JSON. Any
// thread.
JsonRoot reply_document(blob_attr *message);

} // namespace bus
