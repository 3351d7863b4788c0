// SPDX-License-Identifier: Apache-2.0
// Lists the objects of the bus and calls their methods from a terminal.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>

#include <libubus.h>
extern "C" {
#include <libubox/blobmsg_json.h>
}

namespace {
constexpr char DEFAULT_SOCKET[] = "/apvar/run/ubus/ubus.sock";
constexpr int DEFAULT_SECONDS = 30;
constexpr int MAX_SECONDS = 86400;
constexpr int INDENT = 0;
enum Exit { EXIT_OK = 0, EXIT_REFUSED = 1, EXIT_USAGE = 2, EXIT_NO_BUS = 3 };

constexpr char USAGE[] =
    "usage: buscall [-s SOCKET] [-t SECONDS] list [PATH]\n"
    "       buscall [-s SOCKET] [-t SECONDS] call OBJECT METHOD [JSON]\n"
    "\n"
    "list shows objects (PATH may end in '*') with their methods and arguments; call prints the reply as "
    "JSON.\n"
    "  -s SOCKET   the bus (default /apvar/run/ubus/ubus.sock)\n"
    "  -t SECONDS  how long the bus may take to answer (default 30)\n"
    "Exit status: 0 done, 1 refused or no answer (the reason is on stderr), 2 wrong usage, 3 no bus.\n"
    "\n"
    "  buscall list 'vrop.wifi*'\n"
    "  buscall call vrop.ftinfo get\n"
    "  buscall call vrop.ledswitch set '{\"status\":\"off\"}'\n";

struct Options {
    const char *socket = DEFAULT_SOCKET;
    int seconds = DEFAULT_SECONDS;
};

// The bus library connects and looks up without a limit. Only what a signal handler may call.
void give_up(int) {
    constexpr char TEXT[] = "buscall: the bus does not answer\n";
    if (write(STDERR_FILENO, TEXT, sizeof(TEXT) - 1) < 0) {
        // The exit status says it too.
    }
    _exit(EXIT_NO_BUS);
}

struct FreeContext {
    void operator()(ubus_context *context) const { ubus_free(context); }
};
struct FreeText {
    void operator()(char *text) const { free(text); }
};
using Context = std::unique_ptr<ubus_context, FreeContext>;
using JsonText = std::unique_ptr<char, FreeText>;

int wrong(const char *what) {
    fprintf(stderr, "buscall: %s; see --help\n", what);
    return EXIT_USAGE;
}

int refused(const char *what, int status) {
    fprintf(stderr, "buscall: %s: %s\n", what, ubus_strerror(status));
    return status == UBUS_STATUS_CONNECTION_FAILED ? EXIT_NO_BUS : EXIT_REFUSED;
}

const char *type_name(uint32_t type) {
    static const char *const NAMES[] = {"any",   "array", "table", "string", "int64",
                                        "int32", "int16", "bool",  "double"};
    return type < ARRAY_SIZE(NAMES) ? NAMES[type] : "?";
}

void print_method(blob_attr *method) {
    printf("  %s(", blobmsg_name(method));
    const char *comma = "";
    blob_attr *argument;
    size_t rem;
    blobmsg_for_each_attr(argument, method, rem) {
        if (!blobmsg_check_attr_len(argument, true, rem) || blobmsg_type(argument) != BLOBMSG_TYPE_INT32)
            continue;
        printf("%s%s: %s", comma, blobmsg_name(argument), type_name(blobmsg_get_u32(argument)));
        comma = ", ";
    }
    puts(")");
}

void print_object(ubus_context *, ubus_object_data *object, void *) {
    printf("%s\n", object->path);
    blob_attr *method;
    size_t rem;
    blob_for_each_attr(method, object->signature, rem) {
        if (blobmsg_check_attr_len(method, true, rem) && blobmsg_type(method) == BLOBMSG_TYPE_TABLE)
            print_method(method);
    }
}

int list(ubus_context *context, const char *path) {
    int status = ubus_lookup(context, path, print_object, nullptr);
    return status == UBUS_STATUS_OK ? EXIT_OK : refused(path ? path : "list", status);
}

void print_reply(ubus_request *, int, blob_attr *message) {
    JsonText text(blobmsg_format_json_indent(message, true, INDENT));
    if (text) puts(text.get());
}

int call(ubus_context *context, const Options &options, const char *object, const char *method,
         const char *json) {
    blob_buf arguments{};
    std::unique_ptr<blob_buf, void (*)(blob_buf *)> owner(&arguments, blob_buf_free);
    if (blob_buf_init(&arguments, 0) != 0 || (json && !blobmsg_add_json_from_string(&arguments, json))) {
        fprintf(stderr, "buscall: the arguments are no JSON object: %s\n", json ? json : "");
        return EXIT_USAGE;
    }
    uint32_t id = 0;
    int status = ubus_lookup_id(context, object, &id);
    if (status != UBUS_STATUS_OK) return refused(object, status);
    status = ubus_invoke(context, id, method, arguments.head, print_reply, nullptr, options.seconds * 1000);
    return status == UBUS_STATUS_OK ? EXIT_OK : refused(method, status);
}

// Reads the options; false when they make no sense.
bool read_options(int argc, char **argv, Options *options) {
    int letter;
    opterr = 0; // one line says it
    while ((letter = getopt(argc, argv, "+s:t:")) != -1) {
        char *end = optarg;
        if (letter == 's') {
            options->socket = optarg;
        } else if (letter == 't') {
            long seconds = strtol(optarg, &end, 10);
            if (end == optarg || *end || seconds < 1 || seconds > MAX_SECONDS) return false;
            options->seconds = static_cast<int>(seconds);
        } else {
            return false;
        }
    }
    return true;
}
} // namespace

int main(int argc, char **argv) {
    Options options;
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        fputs(USAGE, stdout);
        return EXIT_OK;
    }
    if (!read_options(argc, argv, &options)) return wrong("unknown option, or no good value for one");
    int count = argc - optind;
    char **words = argv + optind;
    bool listing = count >= 1 && count <= 2 && strcmp(words[0], "list") == 0;
    bool calling = count >= 3 && count <= 4 && strcmp(words[0], "call") == 0;
    if (!listing && !calling) return wrong("unknown command, or not its arguments");
    signal(SIGALRM, give_up);
    alarm(static_cast<unsigned>(options.seconds + 1)); // behind the call's own end
    Context context(ubus_connect(options.socket));
    if (!context) {
        fprintf(stderr, "buscall: no bus at %s\n", options.socket);
        return EXIT_NO_BUS;
    }
    if (listing) return list(context.get(), count == 2 ? words[1] : nullptr);
    return call(context.get(), options, words[1], words[2], count == 4 ? words[3] : nullptr);
}
