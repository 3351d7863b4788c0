// SPDX-License-Identifier: Apache-2.0
#include "cloud/global_config.h"

struct global_config global_config;
