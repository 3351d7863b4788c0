// SPDX-License-Identifier: Apache-2.0
// "meshTopology": the nodes of the mesh with the devices behind each.
#pragma once

// The slots of the property (see properties/property.h); the report is in no table.
int meshTopology_init();
int meshTopology_get(const char *context, char *output, int length);
int meshTopology_report();
