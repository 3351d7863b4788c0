// SPDX-License-Identifier: Apache-2.0
// "channelQuality" and "tuningWifi": what the radios measure of their channels, and the move to a better one.
#pragma once

#include <cstdint>

// Request {"radio"}: 1 (2.4 GHz), 2 (5 GHz), or absent for both. Answers 200
// {"radios":[{"radio","current","channels":[{"channel","score"}]}]}; 400 "{}" for another radio, or when the
// daemon tells nothing of a radio that is meant.
int channelQuality_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);

// The same request. Moves each radio to its best channel where that beats the present one by 10 points or
// more, and answers 200 {"radios":[{"radio","from","to","score","changed"}]}, "to" and "score" being where
// the radio is then. The restart event comes before a move; set_flag is up meanwhile.
int tuningWifi_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters);
