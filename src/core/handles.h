// SPDX-License-Identifier: Apache-2.0
// Owners of C handles.
#pragma once

#include <cstdio>
#include <memory>
#include <unistd.h>

#include <json-c/json.h>

struct JsonPut {
    void operator()(json_object *root) const { json_object_put(root); }
};
// A parsed document or a bus reply; releases its reference.
using JsonRoot = std::unique_ptr<json_object, JsonPut>;

struct FileClose {
    void operator()(FILE *file) const { fclose(file); }
};
using FileHandle = std::unique_ptr<FILE, FileClose>;

// A descriptor; -1 is none.
class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        reset(other.release());
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { reset(); }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int release() {
        int fd = fd_;
        fd_ = -1;
        return fd;
    }
    void reset(int fd = -1) {
        if (fd_ >= 0) close(fd_);
        fd_ = fd;
    }

  private:
    int fd_;
};
