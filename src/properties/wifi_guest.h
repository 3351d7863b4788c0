// SPDX-License-Identifier: Apache-2.0
// The guest networks, and how those whose name was made from the main network's follow it when that is
// renamed. Any thread.
#pragma once

#include <cstddef>

#include <json-c/json.h>

#include "core/handles.h"

// The daemon's record of a radio's guest network, borrowed from root; null for another radio or no answer.
json_object *get_guest_network(int radio, JsonRoot *root);

// Writes a radio's guest network, hidden while it is off. The daemon's result; -1 for another radio.
struct GuestNetwork {
    int enable;
    const char *ssid;
    const char *authmode;
    const char *key; // null: not written
};
int set_guest_network(int radio, const GuestNetwork &guest);

struct GuestAccess {
    int enable;
    char authmode[128];
    char key[128];
};
// 0, or -1 for another radio or no answer.
int get_wifi_vistor_enable(int radio, GuestAccess *access);

// Gives a radio's guest network a new name. The daemon's result; -1 when the network cannot be read.
int set_wifi2g_vistor_config(const char *ssid);
int set_wifi5g_vistor_config(const char *ssid);

// Length at which `name` is cut for a guest name: 6 bytes are left for "_Guest" within 32, and no UTF-8
// character is split. The whole length below 26 bytes; -1 for null.
int get_vistor_cut_ssid(const char *name);

// The guest network's name for a main network of that name. 0, or -1 when there is none.
int make_guest_name(const char *main_name, char *guest_name, size_t size);
