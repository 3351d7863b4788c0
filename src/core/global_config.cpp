// SPDX-License-Identifier: Apache-2.0
#include "core/global_config.h"

struct global_config global_config;
