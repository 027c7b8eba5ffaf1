// A plug-in for qemu: counts the instructions that a program executes, and says on standard error how many
// they were (qemu-aarch64 -plugin FILE PROGRAM). Debian does not have the header, so what is used of it is
// declared here: version 1 of what qemu's documentation calls TCG plug-ins.

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" {

struct qemu_plugin_tb; // some instructions in a row, translated together

using PluginId = std::uint64_t;

void qemu_plugin_register_vcpu_tb_trans_cb(PluginId plugin, void (*onTranslated)(PluginId, qemu_plugin_tb*));
std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* block, int operation, void* counter,
                                              std::uint64_t amount);
void qemu_plugin_register_atexit_cb(PluginId plugin, void (*onExit)(PluginId, void*), void* data);

__attribute__((visibility("default"))) extern const int qemu_plugin_version = 1;

} // extern "C"

namespace {

constexpr int addToCounter = 0;
std::uint64_t executed = 0;

void countWhenExecuted(PluginId, qemu_plugin_tb* block)
{
    qemu_plugin_register_vcpu_tb_exec_inline(block, addToCounter, &executed, qemu_plugin_tb_n_insns(block));
}

void sayCount(PluginId, void*)
{
    std::fprintf(stderr, "instructions: %llu\n", static_cast<unsigned long long>(executed));
}

} // namespace

extern "C" __attribute__((visibility("default"))) int qemu_plugin_install(PluginId plugin, const void*, int,
                                                                          char**)
{
    qemu_plugin_register_vcpu_tb_trans_cb(plugin, countWhenExecuted);
    qemu_plugin_register_atexit_cb(plugin, sayCount, nullptr);
    return 0;
}
