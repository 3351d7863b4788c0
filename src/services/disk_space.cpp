// SPDX-License-Identifier: Apache-2.0
#include "services/disk_space.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <sys/statvfs.h>

#include "core/thread.h"

namespace {

constexpr std::chrono::seconds PATIENCE{2};
constexpr unsigned long long KIB = 1024;

// Shared by those who ask and the thread that may hang; the last of them frees it.
struct Question {
    std::string path;
    bool answered = false;
    std::optional<DiskSpace> answer;
};

std::mutex questions_mutex;
std::condition_variable answered;
std::map<std::string, std::shared_ptr<Question>> open_questions;

void *ask_and_tell(void *argument) {
    const std::unique_ptr<std::shared_ptr<Question>> question(
        static_cast<std::shared_ptr<Question> *>(argument));
    const std::optional<DiskSpace> answer = own_disk_space((*question)->path.c_str());
    std::lock_guard lock(questions_mutex);
    (*question)->answer = answer;
    (*question)->answered = true;
    open_questions.erase((*question)->path);
    answered.notify_all();
    return nullptr;
}

// Null when nobody can be sent to ask.
std::shared_ptr<Question> new_question(const std::string &path) {
    auto question = std::make_shared<Question>();
    question->path = path;
    auto handed_over = std::make_unique<std::shared_ptr<Question>>(question);
    if (start_detached(ask_and_tell, handed_over.get()) != 0) return nullptr;
    (void)handed_over.release();
    return question;
}

} // namespace

std::optional<DiskSpace> own_disk_space(const char *path) {
    struct statvfs disk = {};
    if (statvfs(path, &disk) != 0) return {};
    const unsigned long long block = disk.f_frsize;
    return DiskSpace{static_cast<int64_t>(disk.f_blocks * block / KIB),
                     static_cast<int64_t>(disk.f_bavail * block / KIB)};
}

std::optional<DiskSpace> disk_space(const std::string &path) {
    std::unique_lock lock(questions_mutex);
    std::shared_ptr<Question> &open = open_questions[path];
    if (!open) open = new_question(path);
    const std::shared_ptr<Question> question = open;
    if (!question) {
        open_questions.erase(path);
        return {};
    }
    answered.wait_for(lock, PATIENCE, [&] { return question->answered; });
    return question->answer;
}
