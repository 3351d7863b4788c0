// SPDX-License-Identifier: Apache-2.0
// Debian's unwinder asks the C library which object holds an address and where its frame tables are. musl
// does not know the question by that name; dl_iterate_phdr answers it. The record is the one of <dlfcn.h> for
// 64-bit Arm.
#define _GNU_SOURCE
#include <link.h>

struct dl_find_object {
    unsigned long long flags;
    void *map_start, *map_end;
    struct link_map *link_map;
    void *eh_frame;
    unsigned long long reserved[7];
};

struct search {
    unsigned long address;
    struct dl_find_object *found;
    int hit;
};

static int look(struct dl_phdr_info *object, size_t size, void *argument) {
    struct search *search = argument;
    unsigned long begin = -1UL, end = 0;
    void *frames = 0;
    (void)size;
    for (int i = 0; i < object->dlpi_phnum; i++) {
        const ElfW(Phdr) *part = &object->dlpi_phdr[i];
        unsigned long at = object->dlpi_addr + part->p_vaddr;
        if (part->p_type == PT_LOAD && at < begin) begin = at;
        if (part->p_type == PT_LOAD && at + part->p_memsz > end) end = at + part->p_memsz;
        if (part->p_type == PT_GNU_EH_FRAME) frames = (void *)at;
    }
    if (!frames || search->address < begin || search->address >= end) return 0;
    search->found->map_start = (void *)begin;
    search->found->map_end = (void *)end;
    search->found->eh_frame = frames;
    search->hit = 1;
    return 1;
}

// 0 when `found` was filled, -1 when no object with frame tables holds the address. Any thread may ask.
int _dl_find_object(void *address, struct dl_find_object *found) {
    struct search search = {(unsigned long)address, found, 0};
    dl_iterate_phdr(look, &search);
    return search.hit ? 0 : -1;
}
