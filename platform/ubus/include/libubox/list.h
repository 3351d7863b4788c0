/* SPDX-License-Identifier: Apache-2.0 */
/* Doubly linked rings: a head that belongs to nobody, and nodes inside the listed structures. Not
 * thread-safe. */
#ifndef LIBUBOX_LIST_H
#define LIBUBOX_LIST_H

#include <stdbool.h>
#include <stddef.h>

#include "utils.h"

struct list_head {
    struct list_head *next;
    struct list_head *prev;
};

static inline void INIT_LIST_HEAD(struct list_head *list) {
    list->next = list->prev = list;
}

static inline bool list_empty(const struct list_head *head) {
    return head->next == head;
}

/* Puts the node before `head`: at the end of the list, or before a node when `head` is one. */
static inline void list_add_tail(struct list_head *node, struct list_head *head) {
    node->next = head;
    node->prev = head->prev;
    head->prev->next = node;
    head->prev = node;
}

static inline void list_del(struct list_head *node) {
    node->next->prev = node->prev;
    node->prev->next = node->next;
    node->next = node->prev = NULL; /* NOLINT(modernize-use-nullptr): C as well */
}

static inline void list_del_init(struct list_head *node) {
    list_del(node);
    INIT_LIST_HEAD(node);
}

#define list_entry(pointer, type, member) container_of(pointer, type, member)
#define list_first_entry(head, type, member) list_entry((head)->next, type, member)
#define list_for_each(pos, head) for ((pos) = (head)->next; (pos) != (head); (pos) = (pos)->next)

#endif
