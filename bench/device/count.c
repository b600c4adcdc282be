/* A plugin for qemu that counts the instructions that the emulated processor executes, and prints their number on
 * standard error. What it takes of the emulator's interface is declared here, as Debian has no package of its header.
 */
#include <inttypes.h>
#include <stdio.h>

struct qemu_plugin_tb;
struct qemu_plugin_insn;
typedef uint64_t qemu_plugin_id_t;

extern size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);
extern struct qemu_plugin_insn *qemu_plugin_tb_get_insn(const struct qemu_plugin_tb *block, size_t index);
extern void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                                  void (*translated)(qemu_plugin_id_t, struct qemu_plugin_tb *));
extern void qemu_plugin_register_vcpu_insn_exec_inline(struct qemu_plugin_insn *instruction, int operation,
                                                       void *counter, uint64_t step);
extern void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*ended)(qemu_plugin_id_t, void *), void *data);

__attribute__((visibility("default"))) int qemu_plugin_version = 1;

static const int add = 0; /* the one operation on a counter that there is */
static uint64_t executed;

static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb *block) {
  (void)id;
  for (size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
    qemu_plugin_register_vcpu_insn_exec_inline(qemu_plugin_tb_get_insn(block, i), add, &executed, 1);
  }
}

static void print_count(qemu_plugin_id_t id, void *data) {
  (void)id;
  (void)data;
  fprintf(stderr, "%" PRIu64 "\n", executed);
}

__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id, const void *info, int argc,
                                                               char **argv) {
  (void)info;
  (void)argc;
  (void)argv;
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
  qemu_plugin_register_atexit_cb(id, print_count, NULL);
  return 0;
}
