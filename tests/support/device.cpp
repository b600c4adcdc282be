#include "device.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "process.h"

namespace test {

// The end is a hard one: the leak checker would look for /proc. Blocks of the library are counted in the cases.
void on_device(const std::function<void()> &body) {
  char root[] = "/tmp/devfacts-XXXXXX";
  ASSERT_NE(mkdtemp(root), nullptr);
  expect_clean([&] {
    ASSERT_EQ(chroot(root), 0);
    ASSERT_EQ(chdir("/"), 0);
    body();
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 99 : 0);
  });
  std::filesystem::remove_all(root);
}

void write_file(const std::string &path, const std::string &text) {
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace test
