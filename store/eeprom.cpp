// The table and the store: loading and saving.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "store/backing.h"
#include "store/image.h"
#include "store/mapped_range.h"
#include "store/record_table.h"

using namespace devfacts;

namespace {

constexpr uint32_t initial_capacity = 35;
constexpr uint32_t image_offset = 4096;
constexpr size_t step = sizeof(image_header);
constexpr size_t block_steps = 1024;

bool load_at(int fd, off_t offset) { return lseek(fd, offset, SEEK_SET) == offset && eeprom_load_image(fd) == 0; }

// The first step at or after the offset that may begin an image; -1 if there is no such step. The store ends at the
// first step that cannot be read; after a short read the remaining steps are read one at a time. Not inlined, so that
// its block is off the stack before the image is on it.
[[gnu::noinline]] off_t next_candidate(int fd, off_t offset) {
  image_header block[block_steps];
  for (size_t wanted = step;;) {
    const ssize_t count = pread(fd, block, wanted, offset);
    if (count < static_cast<ssize_t>(step) && wanted == step) return -1;
    wanted = count == static_cast<ssize_t>(wanted) ? sizeof block : step;
    for (ssize_t i = 0; i < count / static_cast<ssize_t>(step); ++i, offset += step) {
      if (is_candidate(block[i])) return offset;
    }
  }
}

// Loads the image at the lowest offset at which one loads.
bool find_image(int fd) {
  off_t offset = next_candidate(fd, 0);
  while (offset >= 0 && !load_at(fd, offset)) offset = next_candidate(fd, offset + static_cast<off_t>(step));
  return offset >= 0;
}

}  // namespace

int eeprom_init() {
  eeprom_table = {0, nullptr};
  auto *slots = static_cast<eeprom_record **>(std::calloc(initial_capacity, sizeof(eeprom_record *)));
  if (slots == nullptr) return -1;
  eeprom_table = {initial_capacity, slots};
  const unique_fd store = open_store();
  return store && find_image(store.get()) ? 0 : -1;
}

void eeprom_read(const char *path) {
  const unique_fd file{open(path, O_RDONLY | O_CLOEXEC)};
  if (!file) {
    std::fprintf(stderr, "cannot open '%s' file, %s\n", path, std::strerror(errno));
    return;
  }
  eeprom_load_image(file.get());
}

void eeprom_write() {
  const size_t size = eeprom_image_size();
  if (size < min_image_size || size > max_image_size) return;
  unique_fd store = open_store();
  const auto count = static_cast<uint32_t>(size);
  if (!store || !reserve_range(store.get(), image_offset, count) || !is_readable(store.get(), image_offset, count))
    return;
  void *mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, store.get(), image_offset);
  store.reset();
  if (mapping == MAP_FAILED) return;
  write_image({static_cast<std::byte *>(mapping), size});
  msync(mapping, size, MS_SYNC);
  munmap(mapping, size);
}
