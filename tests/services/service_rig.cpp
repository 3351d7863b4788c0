// SPDX-License-Identifier: Apache-2.0
#include "services/service_rig.h"

#include <fstream>
#include <numeric>

#include "binding/tables.h"
#include "core/report_gate.h"
#include "services/backup_read.h"
#include "services/restore.h"

ServiceRig::ServiceRig(const std::string &patch) : RouterRig(patch) {
    lower_set_flag();
}

ServiceRig::~ServiceRig() {
    moving_clock::on_pause({});
}

std::string ServiceRig::call(const std::string &service, const char *parameters) {
    router.clear_calls();
    recording_sdk::clear_calls();
    moving_clock::clear_pauses();
    clear_main_log();
    for (const service_row &row : service_map) {
        if (row.name == nullptr || service != row.name) continue;
        std::string said = std::to_string(row.handler(7, 0xfffffff9, nullptr, nullptr, parameters)) + ":";
        for (const recording_sdk::Call &answer : recording_sdk::calls_of("TEBRA_SDK_Handle_Response")) {
            const auto &words = answer.arguments;
            EXPECT_EQ(words[0] + " " + words[1], "7 4294967289");
            said += " " + words[2] + " " + words[4] + " " + words[3];
        }
        return said;
    }
    return "no such row";
}

double ServiceRig::slept() {
    const auto pauses = moving_clock::pauses();
    return static_cast<double>(std::accumulate(pauses.begin(), pauses.end(), moving_clock::Millis{})) / 1000;
}

std::string ServiceRig::backup() {
    char text[BACKUP_DOCUMENT_SIZE];
    return tunningBackupCfg_get(text, sizeof text) == 0 ? text : "";
}

int ServiceRig::restore(const std::string &document) {
    std::ofstream(BACKUP_FILE) << document;
    router.clear_calls();
    moving_clock::clear_pauses();
    clear_main_log();
    return tunningBackupCfg_set();
}

void check(const std::vector<ServiceRow> &rows) {
    std::string service;
    for (const ServiceRow &row : rows) {
        if (!row.answer) {
            service = row.parameters;
            continue;
        }
        SCOPED_TRACE(service + " " + (row.parameters ? row.parameters : "(null)"));
        ServiceRig rig(row.patch);
        if (!row.fault.object.empty()) rig.router.add_fault(row.fault);
        std::string said = rig.call(service, row.parameters);
        if (const size_t name = said.find(" " + service + " "); name != said.npos)
            said.erase(name, service.size() + 1);
        EXPECT_EQ(said, row.answer);
        const auto writes = rig.writes();
        EXPECT_TRUE(!row.write || (writes.empty() ? "" : writes.back()) == row.write)
            << testing::PrintToString(writes);
        EXPECT_TRUE(!row.logged || has_logged(row.logged)) << main_log();
    }
}
