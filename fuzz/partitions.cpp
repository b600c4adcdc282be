// Lists of flash partitions: only a device of the list is opened, and it is given back open.
#include <devfacts/store.h>
#include <unistd.h>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t count) {
  fuzz::set_flash("flash");
  fuzz::set_files(fuzz::view(bytes, count));
  const int fd = mtd_block_find("Factory");
  const bool named = fuzz::view(bytes, count).find("Factory") != fuzz::string_view::npos;
  fuzz::require(fd == -1 || (named && lseek(fd, 0, SEEK_END) == 5));
  if (fd >= 0) close(fd);
  return 0;
}
