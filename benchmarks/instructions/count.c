/* A plugin for qemu's user emulation: at every getppid() of the program it writes down how many
   instructions the program has executed so far. The declarations are qemu's, whose header is not
   packaged. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>

typedef uint64_t PluginId;
typedef struct Block Block;

size_t qemu_plugin_tb_n_insns(const Block* block);
void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, void (*translated)(PluginId, Block*));
void qemu_plugin_register_vcpu_tb_exec_inline(Block* block, int operation, void* to, uint64_t add);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id,
                                          void (*called)(PluginId, unsigned int, int64_t number,
                                                         uint64_t, uint64_t, uint64_t, uint64_t,
                                                         uint64_t, uint64_t, uint64_t, uint64_t));

int qemu_plugin_version = 1;

static uint64_t executed;

static void onBlock(PluginId id, Block* block) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(block, 0, &executed, qemu_plugin_tb_n_insns(block));
}

static void onCall(PluginId id, unsigned int cpu, int64_t number, uint64_t a, uint64_t b,
                   uint64_t c, uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h) {
    (void)id, (void)cpu, (void)a, (void)b, (void)c, (void)d, (void)e, (void)f, (void)g, (void)h;
    /* getppid on x86-64 and on MIPS. */
    if (number == 110 || number == 4064) fprintf(stderr, "%" PRIu64 "\n", executed);
}

int qemu_plugin_install(PluginId id, const void* info, int count, char** arguments) {
    (void)info, (void)count, (void)arguments;
    qemu_plugin_register_vcpu_tb_trans_cb(id, onBlock);
    qemu_plugin_register_vcpu_syscall_cb(id, onCall);
    return 0;
}
