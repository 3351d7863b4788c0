// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include "core/files.h"
#include "json.h"
#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <deque>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <unistd.h>

namespace cloudsim {
namespace {

constexpr std::size_t largest_file = 256u << 20;

// The arguments that are still to be read.
class Arguments {
  public:
    explicit Arguments(const std::vector<std::string> &all) : left_(all.begin(), all.end()) {}
    bool empty() const { return left_.empty(); }
    bool next_is_pair() const {
        return !left_.empty() && !left_[0].starts_with("-") && left_[0].find('=') != std::string::npos;
    }
    std::string take(const std::string &what) {
        if (left_.empty()) throw std::invalid_argument(what + " is missing");
        std::string first = left_.front();
        left_.pop_front();
        return first;
    }
    int take_number(const std::string &what, int least = 0, int most = std::numeric_limits<int>::max()) {
        std::string text = take(what);
        int value = -1;
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size() || value < least || value > most)
            throw std::invalid_argument(what + " must be a number from " + std::to_string(least) + " to " +
                                        std::to_string(most) + ", not \"" + text + "\"");
        return value;
    }

  private:
    std::deque<std::string> left_;
};

std::string content(const std::string &path) {
    std::string bytes;
    if (!read_file(path.c_str(), largest_file, &bytes)) throw std::invalid_argument("cannot read " + path);
    return bytes;
}

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string base_name(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

Device parse_device(const std::string &text) {
    std::size_t first = text.find(':'), second = text.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos)
        throw std::invalid_argument("a device is SERIAL:PRODUCT:SECRET");
    Device device{text.substr(0, first), text.substr(first + 1, second - first - 1), text.substr(second + 1)};
    if (device.serial.empty() || device.product.empty() || device.secret.empty())
        throw std::invalid_argument("a device is SERIAL:PRODUCT:SECRET, and none of them is empty");
    return device;
}

std::string take_address(Arguments &left) {
    std::string text = left.take("the address");
    in_addr address;
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        throw std::invalid_argument("\"" + text + "\" is no IPv4 address");
    return text;
}

std::string take_directory(Arguments &left) {
    std::string path = left.take("the directory");
    std::error_code error;
    if (!std::filesystem::is_directory(path, error) || access(path.c_str(), W_OK | X_OK) != 0)
        throw std::invalid_argument(path + " is no directory that files can be made in");
    return path;
}

void take_firmware(CommandLine &line, Arguments &left) {
    Firmware firmware;
    std::string path = left.take("the image");
    firmware.name = base_name(path);
    firmware.image = content(path);
    firmware.version = left.take("the version");
    firmware.strategy = left.take("the strategy");
    line.firmware = std::move(firmware);
}

Firmware &taken_firmware(CommandLine &line) {
    if (!line.firmware) throw std::invalid_argument("--firmware comes before what is wrong with it");
    return *line.firmware;
}

void take_fault(CommandLine &line, Arguments &left) {
    std::string endpoint = left.take("the endpoint");
    std::vector<std::pair<std::string, std::string>> values;
    while (left.next_is_pair()) {
        std::string pair = left.take("a key");
        std::size_t sign = pair.find('=');
        std::string key = pair.substr(0, sign), value = pair.substr(sign + 1);
        if (key == "body-file")
            values.emplace_back("body", content(value));
        else
            values.emplace_back(key, value);
    }
    line.faults.push_back(parse_fault(endpoint, values));
}

struct Option {
    const char *name, *parameters, *help;
    void (*take)(CommandLine &, Arguments &);
};
constexpr Option options[] = {
    {"--port", "N", "port to listen on (default 11443; 0: any free one)",
     [](CommandLine &line, Arguments &left) { line.port = left.take_number("the port", 0, 65535); }},
    {"--host", "ADDRESS", "IPv4 address to listen on (default 127.0.0.1)",
     [](CommandLine &line, Arguments &left) { line.options.host = take_address(left); }},
    {"--http", "", "without TLS", [](CommandLine &line, Arguments &) { line.scheme = Scheme::http; }},
    {"--cert-out", "FILE", "write the certificate, made at start, as PEM",
     [](CommandLine &line, Arguments &left) { line.options.certificate_out = left.take("the file"); }},
    {"--device", "SERIAL:PRODUCT:SECRET", "know this device; may be repeated",
     [](CommandLine &line, Arguments &left) {
         line.options.devices.push_back(parse_device(left.take("the device")));
     }},
    {"--any-device", "SECRET", "know every device and product by this secret",
     [](CommandLine &line, Arguments &left) {
         line.options.devices.push_back({"*", "*", left.take("the secret")});
     }},
    {"--home", "FILE", "know the device of this state file of routersim (default: of its built-in state)",
     [](CommandLine &line, Arguments &left) {
         line.options.devices.push_back(device_of_home(content(left.take("the state file"))));
     }},
    {"--timestamp-window", "SECONDS", "refuse timestamps further from now (default 0: accept any)",
     [](CommandLine &line, Arguments &left) {
         line.options.timestamp_window = std::chrono::seconds(left.take_number("the window"));
     }},
    {"--refusal-status", "N", "HTTP status of a refused request (default 200)",
     [](CommandLine &line, Arguments &left) {
         line.options.refusal_status = left.take_number("the status", 200, 599);
     }},
    {"--store", "DIR", "keep uploaded files there (default: in memory alone)",
     [](CommandLine &line, Arguments &left) { line.options.store = take_directory(left); }},
    {"--max-upload", "BYTES", "largest body accepted (default 16777216)",
     [](CommandLine &line, Arguments &left) {
         line.options.max_upload = static_cast<std::size_t>(left.take_number("the size"));
     }},
    {"--log", "FILE", "append one JSON line per request there (default: standard output)",
     [](CommandLine &line, Arguments &left) { line.log = left.take("the file"); }},
    {"--control", "SOCKET", "take commands on this unix socket; see sim/cloud/control",
     [](CommandLine &line, Arguments &left) { line.control = left.take("the socket"); }},
    {"--firmware", "FILE VERSION STRATEGY", "offer this image", take_firmware},
    {"--wrong-md5", "", "announce another digest than the image's",
     [](CommandLine &line, Arguments &) { taken_firmware(line).wrong_md5 = true; }},
    {"--upper-md5", "", "announce the digest in upper case",
     [](CommandLine &line, Arguments &) { taken_firmware(line).upper_md5 = true; }},
    {"--wrong-size", "", "announce one byte too many",
     [](CommandLine &line, Arguments &) { taken_firmware(line).wrong_size = true; }},
    {"--settings", "FILE", "JSON answered by get-settings",
     [](CommandLine &line, Arguments &left) { line.settings = content(left.take("the file")); }},
    {"--backup", "FILE", "serve this file as /backup/NAME; may be repeated",
     [](CommandLine &line, Arguments &left) {
         std::string path = left.take("the file");
         line.backups.emplace_back(base_name(path), content(path));
     }},
    {"--fault", "ENDPOINT KEY=VALUE...",
     "let the next requests fail; may be repeated; keys as in sim/cloud/control", take_fault},
    {"--help", "", "this text", [](CommandLine &line, Arguments &) { line.help = true; }},
};

} // namespace

CommandLine parse_command_line(const std::vector<std::string> &arguments) {
    CommandLine line;
    for (Arguments left(arguments); !left.empty();) {
        std::string name = left.take("an option");
        const Option *option = std::ranges::find(options, name, &Option::name);
        if (option == std::end(options)) throw std::invalid_argument("unknown option " + name);
        try {
            option->take(line, left);
        } catch (const std::invalid_argument &error) {
            throw std::invalid_argument(name + ": " + error.what());
        }
    }
    return line;
}

std::string usage() {
    std::string text = "cloudsim: a simulated device-management server\n\n  cloudsim [OPTION...]\n\n";
    for (const Option &option : options) {
        std::string left = std::string("  ") + option.name + " " + option.parameters;
        left.resize(std::max<std::size_t>(left.size() + 1, 36), ' ');
        text += left + option.help + "\n";
    }
    return text;
}

Device device_of_home(const std::string &state) {
    JsonRoot root = parse_json(state);
    auto text = [&](const char *object, const char *member) {
        json_object *members = nullptr;
        json_object_object_get_ex(root.get(), object, &members);
        return text_member(members, member);
    };
    std::string serial = text("vrop.ftinfo", "sn");
    Device device{serial.empty() ? lower(text("vrop.ftinfo", "mac")) : serial,
                  text("vrop.qvtkconfig", "productkey"), text("vrop.qvtkconfig", "devicesecret")};
    if (device.serial.empty() || device.product.empty() || device.secret.empty())
        throw std::invalid_argument("the state names no device with its product key and secret");
    return device;
}

} // namespace cloudsim
