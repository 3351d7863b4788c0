// SPDX-License-Identifier: Apache-2.0
#include "services/channel_scores.h"

#include <cstdint>

#include "core/bus.h"
#include "core/json_path.h"
#include "properties/radio.h"

namespace {

ChannelScore score_of(json_object *entry) {
    int32_t channel = -1, score = 0;
    JsonReadInt(entry, "channel", &channel);
    JsonReadInt(entry, "score", &score);
    return {channel, score};
}

} // namespace

bool read_channel_scores(int cloud_radio, std::vector<ChannelScore> *scores) {
    JsonRoot root;
    json_object *list = get_dev_specInfo(radio_device(radio_of(cloud_radio)), "getchannelscore",
                                         "vrop.wifi.getchannelscore", &root);
    if (!json_object_is_type(list, json_type_array)) return false;
    scores->clear();
    for (size_t i = 0; i < json_object_array_length(list); i++)
        scores->push_back(score_of(json_object_array_get_idx(list, i)));
    return true;
}

int get_currentchannel(int cloud_radio, int *channel) {
    JsonRoot root;
    json_object *settings = get_dev_info(radio_settings(radio_of(cloud_radio)), "get", &root);
    int32_t current = -1;
    if (!JsonReadInt(settings, "currentchannel", &current)) return -1;
    *channel = current;
    return 0;
}

int get_currentchannel_score(int cloud_radio) {
    if (cloud_radio != CLOUD_RADIO_2G && cloud_radio != CLOUD_RADIO_5G) return 0;
    std::vector<ChannelScore> scores;
    int channel = -1;
    if (get_currentchannel(cloud_radio, &channel) != 0 || !read_channel_scores(cloud_radio, &scores))
        return 0;
    for (const ChannelScore &entry : scores)
        if (entry.channel == channel) return entry.score;
    return 0;
}
