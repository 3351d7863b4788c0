// SPDX-License-Identifier: Apache-2.0
#include "services/channels.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/report_gate.h"
#include "properties/radio.h"
#include "properties/restart.h"
#include "services/channel_scores.h"
#include "services/members.h"
#include "services/service.h"

namespace {

constexpr int WORTH_A_MOVE = 10; // points
constexpr char INTERFACE[] = "wifi";

struct RadioChannels {
    int radio; // as the cloud counts them
    int current;
    std::vector<ChannelScore> scores;
};

bool read_channels(int radio, RadioChannels *channels) {
    channels->radio = radio;
    return get_currentchannel(radio, &channels->current) == 0 &&
           read_channel_scores(radio, &channels->scores);
}

// The document of the radios that are meant, an object for each. All are read first: a failure when one of
// them cannot be, and none has been changed then.
ServiceAnswer for_each_radio(const ServiceRequest &request,
                             JsonRoot (*describe)(const RadioChannels &, LogSite)) {
    Radios radios = {};
    if (!take_radios(request.json, &radios)) return answer_failed();
    std::vector<RadioChannels> read;
    for (int radio = radios.first; radio <= radios.last; radio++)
        if (!read_channels(radio, &read.emplace_back())) {
            LOG_AT(request.site, "radio:%d is not to be read", radio);
            return answer_failed();
        }
    JsonRoot list(json_object_new_array());
    for (const RadioChannels &channels : read)
        JsonAppend(list.get(), describe(channels, request.site));
    return answer_with_list("radios", std::move(list));
}

JsonRoot describe_quality(const RadioChannels &channels, LogSite) {
    JsonRoot list(json_object_new_array());
    for (const ChannelScore &each : channels.scores) {
        JsonRoot entry(json_object_new_object());
        JsonSetInt64(entry.get(), nullptr, "channel", each.channel);
        JsonSetInt64(entry.get(), nullptr, "score", each.score);
        JsonAppend(list.get(), std::move(entry));
    }
    JsonRoot radio(json_object_new_object());
    JsonSetInt64(radio.get(), nullptr, "radio", channels.radio);
    JsonSetInt64(radio.get(), nullptr, "current", channels.current);
    JsonSetObj(radio.get(), nullptr, "channels", std::move(list));
    return radio;
}

ChannelScore score_of(const RadioChannels &channels, int channel) {
    for (const ChannelScore &each : channels.scores)
        if (each.channel == channel) return each;
    return {channel, 0};
}

// The best of the channels, the first of equals.
ChannelScore best_of(const RadioChannels &channels) {
    const auto best = std::max_element(
        channels.scores.begin(), channels.scores.end(),
        [](const ChannelScore &one, const ChannelScore &other) { return one.score < other.score; });
    return best == channels.scores.end() ? score_of(channels, channels.current) : *best;
}

bool move_to(int cloud_radio, int channel, LogSite site) {
    announce_restart(INTERFACE);
    BusMessage message;
    message.integer("channel", channel);
    const bool moved = set_dev_info(radio_settings(radio_of(cloud_radio)), "set", message) == 0;
    LOG_AT(site, "radio:%d channel:%d %s", cloud_radio, channel, moved ? "ok" : "fail");
    return moved;
}

JsonRoot tune(const RadioChannels &channels, LogSite site) {
    ChannelScore now = score_of(channels, channels.current);
    const ChannelScore best = best_of(channels);
    const bool worth_it =
        best.channel > 0 && best.channel != now.channel && best.score - now.score >= WORTH_A_MOVE;
    const bool changed = worth_it && move_to(channels.radio, best.channel, site);
    if (changed) now = best;
    JsonRoot radio(json_object_new_object());
    JsonSetInt64(radio.get(), nullptr, "radio", channels.radio);
    JsonSetInt64(radio.get(), nullptr, "from", channels.current);
    JsonSetInt64(radio.get(), nullptr, "to", now.channel);
    JsonSetInt64(radio.get(), nullptr, "score", now.score);
    JsonSetBool(radio.get(), nullptr, "changed", changed);
    return radio;
}

ServiceAnswer tune_radios(const ServiceRequest &request) {
    const ServiceHoldsReports held;
    return for_each_radio(request, tune);
}

constexpr Service CHANNEL_QUALITY = {.name = "channelQuality",
                                     .entry = "channelQuality_call ...\n",
                                     .parameters = Parameters::optional,
                                     .answers_bad_parameters = true};
constexpr Service TUNING_WIFI = {.name = "tuningWifi",
                                 .entry = "tuningWifi_call ...\n",
                                 .parameters = Parameters::optional,
                                 .answers_bad_parameters = true};

} // namespace

int channelQuality_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(CHANNEL_QUALITY, {handle, id, parameters},
                 [](const ServiceRequest &request) { return for_each_radio(request, describe_quality); });
}

int tuningWifi_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(TUNING_WIFI, {handle, id, parameters}, tune_radios);
}
