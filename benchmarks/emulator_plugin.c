// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A plugin of qemu-aarch64 (version 1 of its interface, of which the declarations are here, because
// Debian has no header of it). It counts the instructions that are executed. A system call that
// Linux doesn't have writes the count so far to the file that OX_COUNT_FILE names.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#define EXPORTED __attribute__((visibility("default")))

enum { markCall = 7777, addInline = 0 };

typedef uint64_t PluginId;
struct qemu_info;
struct qemu_plugin_tb;
typedef void BlockCallback(PluginId id, struct qemu_plugin_tb* block);
typedef void CallCallback(PluginId id, unsigned cpu, int64_t call, uint64_t a, uint64_t b,
                          uint64_t c, uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h);
void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, BlockCallback* callback);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, int operation,
                                              void* number, uint64_t amount);
size_t qemu_plugin_tb_n_insns(struct qemu_plugin_tb const* block);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id, CallCallback* callback);

EXPORTED int qemu_plugin_version = 1;

static uint64_t executed;
static FILE* output;

static void translated(PluginId id, struct qemu_plugin_tb* block) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, addInline, &executed,
                                             qemu_plugin_tb_n_insns(block));
}

static void called(PluginId id, unsigned cpu, int64_t call, uint64_t a, uint64_t b, uint64_t c,
                   uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h) {
    (void)id, (void)cpu, (void)a, (void)b, (void)c, (void)d, (void)e, (void)f, (void)g, (void)h;
    if (call == markCall) {
        rewind(output);
        fprintf(output, "%020llu\n", (unsigned long long)executed);
        fflush(output);
    }
}

EXPORTED int qemu_plugin_install(PluginId id, struct qemu_info const* info, int count,
                                 char** arguments) {
    (void)info, (void)count, (void)arguments;
    char const* const path = getenv("OX_COUNT_FILE");
    output = path == NULL ? NULL : fopen(path, "w");
    if (output == NULL) {
        fputs("OX_COUNT_FILE doesn't name a file that can be written\n", stderr);
        return 1;
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
    qemu_plugin_register_vcpu_syscall_cb(id, called);
    return 0;
}
