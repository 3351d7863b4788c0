/* SPDX-License-Identifier: Apache-2.0 */
/* The contract is C's: a vendor's library is compiled against it by a C compiler. */
#include "tebra_sdk.h"

_Static_assert(sizeof(struct property_row) == 56, "property_row");
_Static_assert(sizeof(struct service_row) == 24, "service_row");
_Static_assert(sizeof(struct other_handle_table) == 56, "other_handle_table");
_Static_assert(sizeof(struct global_config) == 1296, "global_config");
_Static_assert(offsetof(struct global_config, upgrade) == 1248, "upgrade");
_Static_assert(offsetof(struct global_config, area_code) == 1280, "area_code");
