// SPDX-License-Identifier: Apache-2.0
// The record handed to the SDK. Written by init_config during start-up, only read afterwards.
#pragma once

#include "tebra_sdk.h"

extern struct global_config global_config;
