/* What the compiler's C++ language support expects of the big C library, for smaller ones. */
#define _GNU_SOURCE
#include <link.h>

char __libc_single_threaded;

int __cxa_thread_atexit_impl(void (*f)(void*), void* p, void* d) {
    (void)f;
    (void)p;
    (void)d;
    return -1;
}

/* Where a function's unwinding table lies. */
struct found {
    unsigned long long flags;
    void *start, *end, *map, *eh_frame;
    unsigned long long reserved[7];
};

struct wanted {
    unsigned long pc;
    struct found* out;
    int ok;
};

static int look(struct dl_phdr_info* object, size_t size, void* data) {
    struct wanted* const want = data;
    unsigned long eh_frame = 0;
    int hit = 0;
    (void)size;
    for (int k = 0; k < object->dlpi_phnum; ++k) {
        const ElfW(Phdr)* const header = &object->dlpi_phdr[k];
        const unsigned long start = object->dlpi_addr + header->p_vaddr;
        if (header->p_type == PT_GNU_EH_FRAME) eh_frame = start;
        if (header->p_type != PT_LOAD) continue;
        if (want->pc < start || want->pc >= start + header->p_memsz) continue;
        hit = 1;
        want->out->start = (void*)start;
        want->out->end = (void*)(start + header->p_memsz);
    }
    if (!hit || !eh_frame) return 0;
    want->out->flags = 0;
    want->out->map = 0;
    want->out->eh_frame = (void*)eh_frame;
    return want->ok = 1;
}

int _dl_find_object(void* pc, struct found* out) {
    struct wanted want = {(unsigned long)pc, out, 0};
    dl_iterate_phdr(look, &want);
    return want.ok ? 0 : -1;
}
