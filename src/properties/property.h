// SPDX-License-Identifier: Apache-2.0
// What every property module does; placeholder until the pattern stands.
#pragma once
