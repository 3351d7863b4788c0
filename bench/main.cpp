// SPDX-License-Identifier: Apache-2.0
// The agent's functions against the bare work under them. Wants a routersim on the bus's socket and a
// cloudsim on 127.0.0.1:11443 (see bench/run.py), and runs in dev/sandbox: it writes the device's logs.
#include "benchmarks.h"
#include "binding/sdk_record.h"
#include "binding/tables.h"
#include "core/bus.h"
#include "core/log.h"
#include "core/registration.h"
#include "https/requests.h"

int main(int count, char **words) {
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words)) return 2;
    ubus_init(0);
    get_qvtkRegister_info(&register_config);
    set_log_filepath(nullptr);
    set_upgrade_log_filepath(nullptr);
    init_config();
    for (const property_row *row = property_map; row->name != nullptr; row++)
        if (row->init != nullptr) row->init();
    load_upgrade_request();

    bench::add_property_gets();
    bench::add_many_stations();
    bench::add_upgrade_check();
    bench::add_relay();
    bench::add_log();
    bench::add_digests();
    return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
