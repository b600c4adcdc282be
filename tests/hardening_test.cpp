// What strangers may try: files too large, keys too long, closed standard streams, small stacks.
#include <devfacts/store.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "platform/cfg_store.h"
#include "support/faults.h"
#include "support/process.h"

using namespace test;

constexpr char store_path[] = "/var/cfg/.eeprom";
constexpr size_t limit = 1 << 20;

TEST(hardening, configuration_files_and_keys_have_limits) {
  const struct {
    std::string text;
    uintmax_t size;
    int result;
  } cases[] = {
      {"a=" + std::string(limit - 2, 'x'), limit, 0},
      {"a=" + std::string(limit - 1, 'x'), limit + 1, -1},
      {"a=b\n", UINT32_MAX - 1, -1},  // sparse; in 32 bits two bytes more are none
      {std::string(511, 'k') + "=v", 513, 0},
      {std::string(512, 'k') + "=v", 514, -1},
  };
  for (const auto &row : cases) {
    for (const size_t read_size : {SIZE_MAX, size_t{65536}}) {
      on_device([&] {
        write_file("/f", row.text);
        std::filesystem::resize_file("/f", row.size);
        read_at_most(read_size);
        cfg_handle handle = cfg_create();
        EXPECT_EQ(cfg_read_file(handle, "/f"), row.result) << row.size;
        cfg_destroy(handle);
      });
    }
  }
}

TEST(hardening, no_message_goes_into_the_records) {
  for (const char *call : {"ftruncate", "fchmod"}) {
    on_device([&] {
      const std::string before(call[1] == 't' ? 100 : 65536, '-');
      write_file(store_path, before);
      chmod(store_path, 0600);
      fail(call, 1, EIO);
      const int kept = dup(STDERR_FILENO);
      close(STDERR_FILENO);
      eeprom_init();
      EXPECT_EQ(close(STDERR_FILENO), -1);
      dup2(kept, STDERR_FILENO);
      EXPECT_TRUE(read_file(store_path) == before) << call;
    });
  }
}

// A neighbour's memory lies in front of the guard page. The image goes onto the stack, which is smaller.
TEST(hardening, a_small_stack_ends_at_its_guard_page) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer has stacks of its own";
#endif
  constexpr size_t guard_end = 4 * 65536;
  constexpr size_t stack_size = 49152;
  auto *memory = static_cast<char *>(
      mmap(nullptr, guard_end + stack_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  mprotect(memory + guard_end - 4096, 4096, PROT_NONE);
  const ending end = run_on_device([=] {
    write_file(store_path, std::string("WXEE\0\0\xff\xff\0\1\0\0\0\0\0\0\xff\xef\0\5", 20) + std::string(65516, 'x'));
    ucontext_t small;
    getcontext(&small);
    small.uc_stack = {memory + guard_end, 0, stack_size};
    const auto run = [] {
      eeprom_init();
      leave();
    };
    makecontext(&small, run, 0);
    setcontext(&small);
  });
  EXPECT_EQ(end.status, 128 + SIGSEGV);
  EXPECT_EQ(std::count(memory, memory + guard_end - 4096, '\0'), guard_end - 4096);
}
