// SPDX-License-Identifier: Apache-2.0
#include "services/log_upload.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <unistd.h>
#include <vector>

#include "core/files.h"
#include "core/process.h"
#include "core/registration.h"
#include "core/text.h"
#include "services/secrets.h"
#include "services/service.h"
#include "services/upload.h"

namespace {

constexpr char PACKAGE[] = "/aptmp/qvtk_logs.tar.gz";
constexpr char FOLDER_PATTERN[] = "/aptmp/qvtk_logs.XXXXXX";
constexpr size_t LONGEST_LINE = 64 * 1024;
constexpr long LONGEST_LOG = 4 * 1024 * 1024; // its end is what tells

std::mutex package_mutex;

struct LogFile {
    const char *path, *name;
};
std::vector<LogFile> log_files() {
    return {{register_config.log_path, "qvtk.log"},
            {register_config.upgrade_log_path, "qvtk_upgrade.log"},
            {register_config.sdk_log_path, "qvtk_tebra.log"}};
}

// A folder of mode 0700 that goes with the object, and the copies in it too.
class WorkFolder {
  public:
    WorkFolder() {
        char path[sizeof FOLDER_PATTERN];
        copy_text(path, FOLDER_PATTERN);
        if (mkdtemp(path)) path_ = path;
    }
    ~WorkFolder() {
        if (path_.empty()) return;
        for (const LogFile &log : log_files())
            unlink((path_ + "/" + log.name).c_str());
        rmdir(path_.c_str());
    }
    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;
    const std::string &path() const { return path_; }

  private:
    std::string path_;
};

// The next line with its end; "" behind the last. Of a longer one than a log should hold the rest is left
// out: in a piece of its own, nobody could tell what is secret.
std::string next_line(FILE *log) {
    std::string line;
    for (int character = 0; (character = getc(log)) != EOF && character != '\n';)
        if (line.size() < LONGEST_LINE) line += static_cast<char>(character);
    return feof(log) || ferror(log) ? line : line + '\n';
}

// Opens a log at the beginning of a line of its last part; nothing when there is none.
FileHandle open_log(const char *path) {
    FileHandle log = open_own_stream(path);
    if (log && fseek(log.get(), -LONGEST_LOG, SEEK_END) == 0) next_line(log.get());
    return log;
}

// A log that is not there has nothing to copy.
bool copy_masked(const LogFile &log, const std::string &folder, const std::vector<std::string> &secrets) {
    const FileHandle from = open_log(log.path);
    if (!from) return true;
    const Descriptor to = create_private_file((folder + "/" + log.name).c_str());
    if (!to) return false;
    for (std::string line = next_line(from.get()); !line.empty(); line = next_line(from.get())) {
        const std::string clean = masked(line, secrets);
        if (!write_all(to.get(), clean.data(), clean.size())) return false;
    }
    return true;
}

bool pack_logs() {
    const WorkFolder folder;
    if (folder.path().empty()) return false;
    const std::vector<std::string> secrets = present_secrets();
    for (const LogFile &log : log_files())
        if (!copy_masked(log, folder.path(), secrets)) return false;
    // tar writes into the file that we have made, so that nobody else can read or be it
    if (!create_private_file(PACKAGE)) return false;
    return run_program({"tar", "-czf", PACKAGE, "-C", folder.path(), "."}) == 0;
}

ServiceAnswer upload_logs(const ServiceRequest &request) {
    std::string url;
    ServiceAnswer answer = no_answer();
    if (!take_upload_url(request, &url, &answer)) return answer;
    std::lock_guard lock(package_mutex);
    if (pack_logs())
        answer = upload_file(request, url, [] { return PACKAGE; });
    else {
        LOG_AT(request.site, "pack logs fail");
        answer = answer_failed();
    }
    unlink(PACKAGE);
    return answer;
}

constexpr Service UPLOAD_LOG = {.name = "uploadLog",
                                .entry = "uploadlog_call ...\n",
                                .parameters = Parameters::needed,
                                .answers_bad_parameters = true};

} // namespace

int uploadlog_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(UPLOAD_LOG, {handle, id, parameters}, upload_logs);
}
