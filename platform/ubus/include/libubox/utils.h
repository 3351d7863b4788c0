/* SPDX-License-Identifier: Apache-2.0 */
/* Small macros of the bus headers. The original defines these common words too, so code that compiles with
 * this header does not trip over them there: include the bus headers last, or in one source file, and mind
 * [[fallthrough]]. */
#ifndef LIBUBOX_UTILS_H
#define LIBUBOX_UTILS_H

#include <endian.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#define ARRAY_SIZE(array) (sizeof(array) / sizeof((array)[0]))

#ifndef container_of
#define container_of(pointer, type, member) ((type *)((char *)(pointer)-offsetof(type, member)))
#endif

#ifndef __packed
#define __packed __attribute__((packed))
#endif
#ifndef __hidden
#define __hidden __attribute__((visibility("hidden")))
#endif
#ifndef __constructor
#define __constructor __attribute__((constructor))
#endif
#ifndef fallthrough
#define fallthrough __attribute__((__fallthrough__))
#endif

#define cpu_to_be64(x) htobe64(x)
#define cpu_to_be32(x) htobe32(x)
#define cpu_to_be16(x) htobe16(x)
#define be64_to_cpu(x) be64toh(x)
#define be32_to_cpu(x) be32toh(x)
#define be16_to_cpu(x) be16toh(x)

#endif
