// SPDX-License-Identifier: Apache-2.0
// The property "visitorsWifi": the guest networks of both radios, their names and passwords, and how long
// they stay open.
#pragma once

#include <atomic>
#include <cstdint>

struct VisitorWifi {
    int32_t main_open;
    int32_t open_2g;
    char name_2g[128];
    char pwd_2g[128];
    int32_t open_pwd_2g; // 0: no password
    int32_t open_5g;
    char name_5g[128];
    char pwd_5g[128];
    int32_t open_pwd_5g;
    int32_t open_duration; // in the daemon's unit, passed through
    int32_t open_time;     // of the last change, seconds since the epoch
};

// When the guest control was last written, seconds since the epoch; 0 before the first time.
extern std::atomic<int32_t> visitor_setTime;

// Slots of the property table.
int visitorWifi_init();
int visitorWifi_set(const char *context, const char *value, char *reply, int reply_length);
int visitorWifi_get(const char *context, char *output, int length);

// Posts a changed document; in no table.
int visitorWifi_report();

// Refreshes a record from the daemon; what the daemon does not give stays. 0, or -1 for a null record.
int get_visitorWifi_config(VisitorWifi *visitor);
int get_dual();                                // the daemon's main switch; 0 when it does not answer
int get_visitor_control(VisitorWifi *visitor); // open duration and main switch; -1 when it does not answer
// Applies a request, in which -1 is a switch that it does not name: a change of the main switch goes for both
// networks, and stands in the request afterwards. The guest control's result; -1, with nothing written, for
// null or without the switches that it needs. A network that the daemon refuses is logged and no failure.
int set_visitorwifi_config(VisitorWifi *request);
int set_wifi2g_vistor(const VisitorWifi &visitor); // one radio's guest network; the daemon's result
int set_wifi5g_vistor(const VisitorWifi &visitor);
int time_control(int open_duration, int main_open); // the guest control; the daemon's result
