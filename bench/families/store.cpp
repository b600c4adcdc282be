// Loading and saving the record store's file, against its bytes read and mapped by the kernel's calls alone, and
// against a database of the same records.
#include <benchmark/benchmark.h>
#include <devfacts/store.h>
#include <fcntl.h>
#include <gdbm.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

constexpr char path[] = "/var/cfg/.eeprom";
constexpr char database[] = "/var/cfg/records.db";
constexpr int most = 35;
constexpr size_t payload_size = 24;
constexpr size_t image_offset = 4096;

char payload[payload_size];
char image[16 + most * (4 + payload_size)];

void change_payload() {
  static unsigned char round = 0;
  std::memset(payload, ++round, sizeof payload);
}

void load_with_devfacts(int count) {
  eeprom_free();
  if ((eeprom_init() == 0) != (count > 0)) std::abort();
}

// One read of the whole store.
void load_with_read(int /*count*/) {
  static char store[65536];
  const int fd = open(path, O_RDONLY);
  if (read(fd, store, sizeof store) != sizeof store) std::abort();
  close(fd);
}

void load_with_gdbm(int count) {
  GDBM_FILE file = gdbm_open(database, 0, GDBM_READER, 0, nullptr);
  for (datum key = gdbm_firstkey(file); key.dptr != nullptr; --count) {
    const datum value = gdbm_fetch(file, key), next = gdbm_nextkey(file, key);
    std::free(value.dptr), std::free(key.dptr);
    key = next;
  }
  if (count != 0) std::abort();
  gdbm_close(file);
}

// One of the records is another one than before.
void save_with_devfacts(int count) {
  eeprom_update(count / 2, payload, sizeof payload);
  eeprom_write();
}

// As many bytes, in a file that is open at once.
void save_with_mmap(int count) {
  const size_t size = 16 + static_cast<size_t>(count) * (4 + payload_size);
  const int fd = open(path, O_RDWR | O_SYNC);
  void *mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, image_offset);
  close(fd);
  std::memset(image, payload[0], size);
  std::memcpy(mapping, image, size);
  msync(mapping, size, MS_SYNC);
  munmap(mapping, size);
}

void save_with_gdbm(int count) {
  GDBM_FILE file = gdbm_open(database, 0, GDBM_WRCREAT, 0644, nullptr);
  int id = count / 2;
  gdbm_store(file, {reinterpret_cast<char *>(&id), sizeof id}, {payload, sizeof payload}, GDBM_REPLACE);
  gdbm_sync(file);
  gdbm_close(file);
}

void make_store(int count) {
  mkdir("/var/cfg", 0755);
  eeprom_init();
  for (int id = 0; id < count; ++id) {
    eeprom_update(id, payload, sizeof payload);
    save_with_gdbm(2 * id);
  }
  eeprom_write();
}

void measure(benchmark::State &state, void (*work)(int)) {
  const int count = static_cast<int>(state.range(0));
  make_store(count);
  for (auto _ : state) {
    change_payload();
    work(count);
  }
  eeprom_free();
  umount2("/var", MNT_DETACH);
}

// Both in the mount namespace that all benchmarks run in: loading from memory, saving on the file system that we stand
// on.
void load(benchmark::State &state, void (*work)(int)) {
  if (mount("none", "/var", "tmpfs", 0, nullptr) != 0) std::abort();
  measure(state, work);
}

void save(benchmark::State &state, void (*work)(int)) {
  char folder[] = "store-XXXXXX";
  if (mkdtemp(folder) == nullptr || mount(folder, "/var", nullptr, MS_BIND, nullptr) != 0) std::abort();
  measure(state, work);
  std::filesystem::remove_all(folder);
}

}  // namespace

BENCHMARK_CAPTURE(load, devfacts, load_with_devfacts)->Arg(0)->Arg(most);
BENCHMARK_CAPTURE(load, limit, load_with_read)->Arg(0)->Arg(most);
BENCHMARK_CAPTURE(load, gdbm, load_with_gdbm)->Arg(most);
BENCHMARK_CAPTURE(save, devfacts, save_with_devfacts)->Arg(most);
BENCHMARK_CAPTURE(save, mmap, save_with_mmap)->Arg(most);
BENCHMARK_CAPTURE(save, gdbm, save_with_gdbm)->Arg(most);
