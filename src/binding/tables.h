// SPDX-License-Identifier: Apache-2.0
// The two tables that the SDK dispatches by. Their order is fixed.
#pragma once

#include "tebra_sdk.h"

extern const struct property_row property_map[17];
extern const struct service_row service_map[30];
