// SPDX-License-Identifier: Apache-2.0
// A week of the client status thread in a house whose clients come and go, beside a plain account of it.
#include <algorithm>
#include <random>

#include <gmock/gmock.h>

#include "core/clock.h"
#include "core/text.h"
#include "devices/runtime.h"
#include "support/event_catcher.h"
#include "support/helper_stub.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"

namespace {

constexpr long DAY = 86400;
constexpr time_t END = 1714608000 + 7 * DAY - 3600; // 2024-05-08 23:00:00 UTC
constexpr size_t MOST = 18;                         // clients whose list can be compared

struct Client {
    unsigned number;
    time_t since;
    long run_time = 0; // as the runtime file has it
    time_t taken = 0;
};

// Each client of a list in one form, as a JSON array.
template <typename Form>
std::string array_of(const std::vector<Client> &clients, Form form) {
    std::string all;
    for (const Client &client : clients)
        all += (all.empty() ? "" : ",") + std::string(form(client).text);
    return "[" + all + "]";
}

bool has(const std::vector<Client> &clients, unsigned number) {
    return std::any_of(clients.begin(), clients.end(), [&](const Client &c) { return c.number == number; });
}

long within_a_day(long seconds) {
    return seconds > DAY ? seconds - DAY : seconds;
}

struct House {
    std::vector<Client> home, polled, file; // who is there, was there at the last poll, has an entry
    bool first = true;                      // poll of the day
    std::mt19937 random{77};

    // At most one goes and one comes.
    void change() {
        const auto dice = static_cast<unsigned>(random() % 30);
        if (dice < 2 && !home.empty()) home.erase(home.begin() + static_cast<long>(random() % home.size()));
        if ((dice == 1 || dice == 2) && home.size() < MOST)
            home.push_back({static_cast<unsigned>(random() % 0x10000), now_seconds() - 40000 * (dice - 1)});
    }
    std::string as_listed() const {
        return array_of(home, [](const Client &c) {
            return format_text<96>(R"({"mac":"02a0c900%04x","devname":"%u","uptime":%ld})", c.number,
                                   c.number, static_cast<long>(now_seconds() - c.since));
        });
    }
    // What the poll makes of it. Returns who is announced, the last first.
    std::vector<std::string> poll() {
        std::vector<std::string> announced;
        for (auto client = home.rbegin(); client != home.rend(); ++client)
            if (!first && !has(polled, client->number))
                announced.push_back(
                    format_text<128>(
                        R"({"action": "deviceConnect", "mac": "02a0c900%04x", "devName": "%u", "time": %ld})",
                        client->number, client->number, static_cast<long>(now_seconds()))
                        .text);
        if (first || !announced.empty()) {
            file = home;
            for (Client &client : file) {
                client.run_time = within_a_day(now_seconds() - client.since);
                client.taken = now_seconds() + (first ? 2 : 4);
            }
        } else {
            for (const Client &gone : polled)
                for (Client &client : file) {
                    if (has(home, gone.number)) continue;
                    client.run_time = within_a_day(client.run_time);
                    if (client.number == gone.number) client.run_time += now_seconds() - client.taken;
                }
        }
        polled = home;
        first = false;
        return announced;
    }
    std::string today() const {
        return array_of(file, [](const Client &c) {
            return format_text<160>(
                R"({"mac":"02:A0:C9:00:%02X:%02X","name":"%u","runTime":%ld,"timestamp":%ld,)"
                R"("onlineNotice":1})",
                c.number >> 8, c.number & 255, c.number, c.run_time, static_cast<long>(c.taken));
        });
    }
    std::string whole_day() const {
        return array_of(file, [](const Client &c) {
            return format_text<160>(R"({"mac":"02:A0:C9:00:%02X:%02X","name":"%u","runTime":%ld})",
                                    c.number >> 8, c.number & 255, c.number,
                                    c.run_time + static_cast<long>(now_seconds() - c.taken));
        });
    }
};

TEST(Week, FilesEventsAndNightlyReportsAgreeWithAPlainAccount) {
    setenv("TZ", "UTC", 1);
    RouterRig rig;
    EventCatcher relay(256);
    HelperStub helper("post_data");
    House house;
    StaStatusState state = sta_status_start(5);
    for (unsigned round = 0; now_seconds() < END; round++, moving_clock::advance(1000)) {
        const long second = now_seconds() % DAY, since_report_point = second - state.report_point;
        const bool polls = round % 25 == 0, closes = second >= DAY - 4;
        std::vector<std::string> announced;
        if (polls) {
            // a change makes the round longer: none while the second matters
            if (second < DAY - 120 && (since_report_point < -120 || since_report_point > 4)) house.change();
            rig.router.set_state("/vrop.laninfo", house.as_listed());
            announced = house.poll();
        }
        const std::string day = closes ? house.whole_day() : "";
        house.first = house.first || closes;
        check_staStatus_round(&state);
        if (polls) {
            ASSERT_EQ(relay.take(), announced);
            ASSERT_EQ(text_of("/aptmp/client_runTime.log"), closes ? "" : house.today()) << "round " << round;
        }
        if (closes) {
            ASSERT_EQ(text_of("/aptmp/runTime_oneDay.log"), day);
        }
    }
    EXPECT_EQ(helper.take_runs(), "0\n0\n0\n0\n0\n0\n0\n");
}

} // namespace
