// SPDX-License-Identifier: Apache-2.0
#include "services/hardware.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>
#include <utility>

#include "core/clock.h"
#include "core/files.h"
#include "core/folder.h"
#include "core/json_path.h"
#include "core/text.h"
#include "services/disk_space.h"
#include "services/service.h"

namespace {

constexpr unsigned USAGE_MILLIS = 250;
constexpr size_t PROC_MAX = 64 * 1024;
constexpr char ZONES[] = "/sys/class/thermal/";
constexpr const char *FLASH_FOLDERS[] = {"/overlay",
                                         "/apetc"}; // where settings are kept, the first that there is

std::string proc_text(const char *path) {
    std::string text;
    return read_file(path, PROC_MAX, &text) ? text : "";
}

// What is no number of JSON counts as 0.
JsonRoot decimal(double value) {
    if (!std::isfinite(value)) value = 0;
    return JsonRoot(json_object_new_double_s(value, format_text<32>("%.2f", value).text));
}

JsonRoot load_array() {
    double load[3] = {};
    sscanf(first_line("/proc/loadavg").c_str(), "%lf %lf %lf", &load[0], &load[1], &load[2]);
    JsonRoot array(json_object_new_array());
    for (double value : load)
        JsonAppend(array.get(), decimal(value));
    return array;
}

void add_cpu(json_object *document) {
    const CpuTimes before = cpu_times(proc_text("/proc/stat"));
    pause_millis(USAGE_MILLIS);
    const CpuTimes after = cpu_times(proc_text("/proc/stat"));
    JsonSetInt64(document, "cpu", "cores", std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
    JsonSetObj(document, "cpu", "load", load_array());
    JsonSetInt64(document, "cpu", "usage", cpu_usage(before, after));
}

void add_memory(json_object *document) {
    const std::string meminfo = proc_text("/proc/meminfo");
    JsonSetInt64(document, "memory", "total", meminfo_kib(meminfo, "MemTotal"));
    JsonSetInt64(document, "memory", "available", meminfo_kib(meminfo, "MemAvailable"));
}

void add_flash(json_object *document) {
    std::optional<DiskSpace> flash;
    for (const char *folder : FLASH_FOLDERS)
        if ((flash = own_disk_space(folder))) break;
    JsonSetInt64(document, "flash", "total", flash ? flash->total : 0);
    JsonSetInt64(document, "flash", "free", flash ? flash->free : 0);
}

void add_temperatures(json_object *document) {
    constexpr double MILLIS = 1000.0;
    JsonRoot list(json_object_new_array());
    for (const std::string &zone : folder_names(ZONES)) {
        const std::string reading = first_line(ZONES + zone + "/temp");
        if (zone.rfind("thermal_zone", 0) != 0 || reading.empty()) continue;
        JsonRoot entry(json_object_new_object());
        JsonSetStr(entry.get(), nullptr, "name", first_line(ZONES + zone + "/type").c_str());
        JsonSetObj(entry.get(), nullptr, "celsius",
                   decimal(static_cast<double>(line_number(reading, 0)) / MILLIS));
        JsonAppend(list.get(), std::move(entry));
    }
    JsonSetObj(document, nullptr, "temperatures", std::move(list));
}

ServiceAnswer describe(const ServiceRequest &) {
    JsonRoot document(json_object_new_object());
    add_cpu(document.get());
    add_memory(document.get());
    add_flash(document.get());
    add_temperatures(document.get());
    JsonSetInt64(document.get(), nullptr, "uptime", line_number(first_line("/proc/uptime"), 0));
    return answer_with(document);
}

constexpr Service PHYSICS_INFO = {.name = "physicsInfo", .entry = "physics_info_call ...\n"};

} // namespace

// "cpu  user nice system idle iowait irq softirq steal": a core is idle in the fourth and fifth.
CpuTimes cpu_times(const std::string &stat) {
    CpuTimes times = {};
    if (stat.rfind("cpu ", 0) != 0) return times;
    const char *text = stat.c_str() + strlen("cpu ");
    for (int column = 0; column < 8; column++) {
        char *end = nullptr;
        const unsigned long long ticks = strtoull(text, &end, 10);
        if (end == text) break;
        text = end;
        times.total += ticks;
        if (column != 3 && column != 4) times.busy += ticks;
    }
    return times;
}

int cpu_usage(const CpuTimes &before, const CpuTimes &after) {
    if (after.total <= before.total || after.busy < before.busy) return 0;
    const double share =
        static_cast<double>(after.busy - before.busy) / static_cast<double>(after.total - before.total);
    return static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * 100));
}

long meminfo_kib(const std::string &meminfo, const char *key) {
    const std::string label = std::string(key) + ":";
    for (size_t at = meminfo.find(label); at != std::string::npos; at = meminfo.find(label, at + 1))
        if (at == 0 || meminfo[at - 1] == '\n')
            return std::max(line_number(meminfo.substr(at + label.size(), 32), 0), 0L);
    return 0;
}

int physics_info_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(PHYSICS_INFO, {handle, id, parameters}, describe);
}
