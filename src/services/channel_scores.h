// SPDX-License-Identifier: Apache-2.0
// What a radio measures of its channels. A radio is numbered as the cloud does: 1 is 2.4 GHz, 2 is 5 GHz. Any
// thread; each function asks the daemon.
#pragma once

#include <vector>

struct ChannelScore {
    int channel;
    int score; // 0 worst, 100 best; 0 also where the daemon gives none
};

// The scores that the daemon gives, in its order. False when it gives no list.
bool read_channel_scores(int cloud_radio, std::vector<ChannelScore> *scores);

// The channel that the radio is on. 0; -1, which leaves it alone, when the daemon does not say.
int get_currentchannel(int cloud_radio, int *channel);

// The score of the channel that the radio is on; 0 when there is none, and for a radio that is neither 1 nor
// 2.
int get_currentchannel_score(int cloud_radio);
