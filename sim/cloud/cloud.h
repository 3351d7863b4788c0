// SPDX-License-Identifier: Apache-2.0
// A simulated device-management server: the five signed endpoints, firmware images, backup files and uploads
// on one port, with every answer open to scripting. Runs on threads of its own; all of Cloud's functions may
// be called from any thread, at any time.
#pragma once
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cloudsim {

// Paths of the endpoints, as the device's registration record names them.
inline constexpr const char *check_upgrade_path = "/device-api/device/check-upgrade";
inline constexpr const char *upgrade_progress_path = "/device-api/device/upgrade-progress";
inline constexpr const char *report_runtime_path = "/device-api/device/report-runtime";
inline constexpr const char *get_settings_path = "/device-api/device/get-settings";
inline constexpr const char *upload_config_path = "/device-api/iot/device/upload-config-file";

// A device that the server knows. "*" as serial or product matches any.
struct Device {
    std::string serial;
    std::string product;
    std::string secret;
};

// The image on offer. check-upgrade answers it to a device whose "firmwareVersion" differs from `version`.
struct Firmware {
    std::string name;  // served as /firmware/NAME: letters, digits, ".", "_", "-", ":"
    std::string image; // the bytes
    std::string version;
    std::string strategy = "1";
    std::string description = "";
    std::int64_t id = 1;
    bool wrong_md5 = false;         // announce another digest than the image's
    bool upper_md5 = false;         // announce it in upper case
    bool wrong_size = false;        // announce one byte too many
    std::optional<std::string> md5; // announced as it stands (also when empty) instead of the image's
    std::optional<std::string> url; // likewise, instead of the address below the one the device asked
};

// What goes wrong with the next requests to one endpoint. All members may be combined.
struct Fault {
    // "check-upgrade", "upgrade-progress", "report-runtime", "get-settings", "upload-config-file", "firmware"
    // (image downloads), "backup" (backup downloads), "upload" (PUT), or "any"
    std::string endpoint = "any";
    int count = 1;                      // requests it applies to; 0: until cleared
    std::optional<int> status;          // HTTP status instead of 200; from 300 on, an upload is not stored
    std::optional<std::string> body;    // raw bytes instead of the regular answer, NUL included
    std::chrono::milliseconds delay{0}; // before the first byte of the answer
    std::size_t pieces = 0; // body in writes of this many bytes; over TLS each is a record of its own and
                            // so reaches a libcurl write callback alone (up to 16 KiB)
    std::chrono::milliseconds pause{0}; // between pieces
    std::optional<std::size_t>
        cut;             // after this many body bytes (with the whole Content-Length announced), close
    bool silent = false; // say nothing more, from the cut on or at all, until the peer goes away
    bool drop = false;   // close without a byte of answer
    bool reset = false;  // the same, by TCP reset
    // At once and apart from all requests: the port refuses connections for so long; 0: until the faults are
    // cleared.
    std::optional<std::chrono::milliseconds> refuse;
    bool wrong_md5 = false;  // check-upgrade: announce another digest; downloads: change a byte
    bool wrong_size = false; // check-upgrade: announce one byte more; downloads: send one byte more
};

// Reads one fault from its keys and values as texts: count, status, body, delay (ms), pieces, pause (ms),
// cut, refuse (ms), and silent, drop, reset, wrong-md5, wrong-size (value "" or "1" for yes, "0" for no).
// Throws std::invalid_argument with a message for people when a key, a value or the endpoint is unknown.
Fault parse_fault(const std::string &endpoint,
                  const std::vector<std::pair<std::string, std::string>> &values);

// A request as it arrived.
struct Request {
    std::chrono::system_clock::time_point time;
    std::string method;
    std::string path;
    std::multimap<std::string, std::string> headers; // names in lower case
    std::string body;
    std::map<std::string, std::string>
        fields;            // parts of a multipart body by name, the file's bytes as "file"
    std::string serial;    // of the device, when the request names one
    bool verified = false; // the signature and all that it rests on is right
    std::string verdict;   // "ok", "unsigned" (requests that need no signature), or why not
    int status = 0;        // HTTP status answered
    bool faulted = false;  // a fault applied to it
    std::string answer;    // the body of a POST's answer
};

enum class Scheme { https, http };

struct Options {
    std::string host = "127.0.0.1"; // address listened on
    std::vector<Device> devices;
    std::chrono::seconds timestamp_window{0}; // accepted distance of "timestamp" from now; 0: any
    int refusal_status = 200;                 // HTTP status of a refusal; its "code" is never 0
    std::string store;                  // directory for uploads, mode 0600 each; empty: kept in memory alone
    std::size_t max_upload = 16u << 20; // bytes; a larger body gets 413
    std::string certificate_out;        // PEM file for the certificate that start() makes; empty: none
    std::function<void(const std::string &line)> log; // one JSON text per request, without line end
};

class Cloud {
  public:
    explicit Cloud(const Options &options = {});
    ~Cloud(); // stops
    Cloud(const Cloud &) = delete;
    Cloud &operator=(const Cloud &) = delete;

    // Listens on `port` (0: any free one) and returns the port. Throws std::runtime_error when it cannot.
    // A process's SIGPIPE disposition is left alone.
    int start(int port = 0, Scheme scheme = Scheme::https);
    void stop(); // ends all connections and threads; start() may follow
    int port() const;
    std::string url(std::string_view path) const; // "https://127.0.0.1:PORT/path"

    // false: the port refuses connections from the return of this call on; true: it listens again.
    void set_listening(bool listening);

    void add_device(Device device);
    void offer(Firmware firmware); // replaces the offer before it; throws std::invalid_argument on a bad name
    void withdraw();
    // The "data" of get-settings' answer: any JSON text. Throws std::invalid_argument when it is not JSON.
    void set_settings(const std::string &json);
    // Serves `bytes` as /backup/NAME and returns the path. Throws std::invalid_argument on a bad name.
    std::string add_backup(const std::string &name, const std::string &bytes);

    // Faults of one endpoint apply in the order they were given, each until its count is used up; one of the
    // endpoint itself goes before one of "any".
    void fault(Fault fault);
    void clear_faults(); // and listens again

    std::vector<Request> requests() const;
    void clear_requests();
    // Bytes stored by PUT /upload/NAME or by upload-config-file.
    std::optional<std::string> uploaded(const std::string &name) const;

    // Serves the run-time control over HTTP on a unix socket (mode 0600) until stop(); see control.cpp.
    // Throws std::runtime_error when it cannot.
    void start_control(const std::string &socket_path);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace cloudsim
