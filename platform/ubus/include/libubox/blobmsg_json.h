/* SPDX-License-Identifier: Apache-2.0 */
/* Messages from JSON and JSON text from messages. Any thread, on its own message. */
#ifndef LIBUBOX_BLOBMSG_JSON_H
#define LIBUBOX_BLOBMSG_JSON_H

#include "blobmsg.h"

struct json_object;

/* Each of these adds to the message and returns true, or returns false with the message as it was. */
bool blobmsg_add_object(struct blob_buf *b, struct json_object *obj);   /* the members of an object */
bool blobmsg_add_json_from_string(struct blob_buf *b, const char *str); /* only an object is taken */

/* The text, for free(); NULL only when memory ran out. `list`: the content in braces (in brackets for an
 * array), else the one attribute with its name. An indent below 0 is compact. Any bytes may be in the
 * message. */
char *blobmsg_format_json_indent(struct blob_attr *attr, bool list, int indent);

static inline char *blobmsg_format_json(struct blob_attr *attr, bool list) {
    return blobmsg_format_json_indent(attr, list, -1);
}

#endif
